// What goes on from frame to frame, through the door.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "biseam/panorama.hpp"
#include "panorama/door_fixture.hpp"

namespace biseam::test {
namespace {

class PanoramaState : public testing::Test {
 protected:
  PanoramaState() { door_.options.light = BISEAM_LIGHT_MATCH; }

  // Frames that grow brighter in lens 1.
  std::vector<uint8_t> stitch(Panorama& panorama, int frame) {
    OwnPicture lens0 = door_.fisheye(0), lens1 = door_.fisheye(1), to = door_.panorama();
    lens0.fill([](int c, int x, int y) { return c == 0 ? 60 + (x + y) / 4 : 120; });
    lens1.fill([frame](int c, int x, int y) { return c == 0 ? 62 + (x + y) / 4 + frame : 120; });
    EXPECT_FALSE(panorama.stitch({lens0.record(), lens1.record()}, to.record()));
    return to.bytes();
  }
  Panorama open() { return Panorama::open(door_.camera, door_.options); }
  std::vector<char> saved(const Panorama& panorama) {
    std::vector<char> state(panorama.state_size());
    panorama.save(state.data());
    return state;
  }

  Door door_;
};

TEST_F(PanoramaState, IsAllThatFramesLeaveBehind) {
  Panorama panorama = open(), other = open(), fresh = open();
  for (int i = 0; i < 4; ++i) stitch(panorama, i);
  const std::vector<char> state = saved(panorama);
  uint32_t size = 0;
  std::memcpy(&size, state.data(), sizeof size);
  EXPECT_EQ(size, state.size());
  ASSERT_FALSE(other.load(state.data(), state.size()));
  const std::vector<uint8_t> wanted = stitch(panorama, 4);
  EXPECT_EQ(stitch(other, 4), wanted);
  EXPECT_NE(stitch(fresh, 4), wanted);
  panorama.reset();
  Panorama again = open();
  EXPECT_EQ(stitch(panorama, 7), stitch(again, 7));
}

TEST_F(PanoramaState, OfOtherEnginesIsRefusedAndChangesNothing) {
  Panorama panorama = open(), undisturbed = open();
  for (int i = 0; i < 2; ++i) stitch(panorama, i), stitch(undisturbed, i);
  const std::vector<char> good = saved(panorama);
  const auto refuse = [&](const std::vector<char>& state, std::size_t size, const std::string& text) {
    const PanoramaError error = panorama.load(state.data(), size);
    EXPECT_EQ(error.code, BISEAM_INVALID_OPTIONS);
    EXPECT_EQ(error.text, text);
  };
  const std::string wanted = std::to_string(good.size());
  refuse(good, good.size() - 1, "state has " + std::to_string(good.size() - 1) + " bytes: must be " + wanted);
  refuse(good, 0, "state has 0 bytes: must be " + wanted);
  for (const std::size_t at : {0, 4, 8, 12, 16, 20}) {  // size, version, the strip's shape, the span, whether seams are steady
    std::vector<char> bad = good;
    bad[at] = static_cast<char>(bad[at] ^ 1);
    refuse(bad, bad.size(), "state is of another version, camera or choice of options");
  }
  const std::vector<char> wild(good.size(), '\x7f');
  std::vector<char> headed = wild;
  std::memcpy(headed.data(), good.data(), 24);
  refuse(headed, headed.size(), "state is of another version, camera or choice of options");
  BiseamError error;
  EXPECT_EQ(biseam_panorama_load(panorama.get(), nullptr, good.size(), &error), BISEAM_INVALID_OPTIONS);
  EXPECT_STREQ(error.text, "state is NULL: must be what biseam_panorama_save gave");
  EXPECT_EQ(biseam_panorama_load(nullptr, good.data(), good.size(), &error), BISEAM_INVALID_OPTIONS);
  EXPECT_STREQ(error.text, "panorama is NULL: must be what biseam_panorama_open gave");
  EXPECT_EQ(stitch(panorama, 5), stitch(undisturbed, 5));
}

TEST_F(PanoramaState, OfNoHandleIsNothing) {
  char byte = 'x';
  EXPECT_EQ(biseam_panorama_state_size(nullptr), 0u);
  biseam_panorama_save(nullptr, &byte);
  biseam_panorama_reset(nullptr);
  EXPECT_EQ(biseam_panorama_history(nullptr), 0);
  EXPECT_EQ(byte, 'x');
}

TEST_F(PanoramaState, ReachesBackHalfASecondForLightAndAnEighthForNearThings) {
  EXPECT_EQ(open().history(), 15);
  door_.options.near = BISEAM_NEAR_MATCH;
  EXPECT_EQ(open().history(), 15);
  door_.options.rate = 24;
  EXPECT_EQ(open().history(), 12);
  door_.options.light = BISEAM_LIGHT_OFF;
  EXPECT_EQ(open().history(), 3);
  door_.options.near = BISEAM_NEAR_OFF;
  EXPECT_EQ(open().history(), 0);
  door_.options.seam = BISEAM_SEAM_STEADY;
  EXPECT_EQ(open().history(), 14);
}

}  // namespace
}  // namespace biseam::test
