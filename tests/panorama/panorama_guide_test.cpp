// Guides of whole clips, through the door.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "biseam/panorama.hpp"
#include "panorama/door_fixture.hpp"

namespace biseam::test {
namespace {

using Guide = std::vector<char>;

class PanoramaGuide : public testing::Test {
 protected:
  PanoramaGuide() {
    door_.options.light = BISEAM_LIGHT_MATCH;
    door_.options.seam = BISEAM_SEAM_STEADY;
    door_.options.rate = 8;
    for (int i = 0; i < kFrames; ++i) {
      for (int k = 0; k < 2; ++k) {
        lenses_.push_back(door_.fisheye(k));
        lenses_.back().fill([i, k](int c, int x, int y) { return c == 0 ? 60 + (x + y) / 4 + k * i : 120 + k; });
      }
    }
  }

  Panorama open() { return Panorama::open(door_.camera, door_.options); }
  Guide measure(Panorama& panorama, int frame) {
    Guide guide(panorama.guide_size());
    EXPECT_FALSE(panorama.measure({lens(frame, 0).record(), lens(frame, 1).record()}, guide.data()));
    return guide;
  }
  std::vector<Guide> measure_all(Panorama& panorama) {
    std::vector<Guide> guides;
    for (int i = 0; i < kFrames; ++i) guides.push_back(measure(panorama, i));
    return guides;
  }
  static std::vector<const void*> places(const std::vector<Guide>& guides) {
    std::vector<const void*> all;
    for (const Guide& guide : guides) all.push_back(guide.data());
    return all;
  }
  std::vector<uint8_t> stitch(Panorama& panorama, int frame, const Guide* guide) {
    OwnPicture to = door_.panorama();
    BiseamFrame choice = frame_defaults();
    if (guide != nullptr) choice.guide = guide->data(), choice.guide_size = guide->size();
    EXPECT_FALSE(panorama.stitch({lens(frame, 0).record(), lens(frame, 1).record()}, to.record(), choice));
    return to.bytes();
  }
  OwnPicture& lens(int frame, int k) { return lenses_[static_cast<std::size_t>(2 * frame + k)]; }

  static constexpr int kFrames = 12;
  Door door_;
  std::vector<OwnPicture> lenses_;
};

TEST_F(PanoramaGuide, OfAClipMakesItsFramesTheSameInAnyOrder) {
  Panorama measures = open(), whole = open(), backwards = open();
  const std::vector<Guide> guides = measure_all(measures);
  std::vector<Guide> smoothed(kFrames, Guide(measures.guide_size()));
  for (int i = 0; i < kFrames; ++i) {
    ASSERT_FALSE(measures.smooth(places(guides).data(), kFrames, i, smoothed[std::size_t(i)].data()));
  }
  EXPECT_NE(smoothed, guides);
  std::vector<std::vector<uint8_t>> wanted;
  for (int i = 0; i < kFrames; ++i) wanted.push_back(stitch(whole, i, &smoothed[std::size_t(i)]));
  for (int i = kFrames; i-- > 0;) EXPECT_EQ(stitch(backwards, i, &smoothed[std::size_t(i)]), wanted[std::size_t(i)]) << i;
  Panorama fresh = open();
  EXPECT_EQ(stitch(backwards, 3, nullptr), stitch(fresh, 3, nullptr)) << "and nothing is left of them";
}

TEST_F(PanoramaGuide, BeginsWithItsSizeAndGoesOnlyWithItsOptions) {
  Panorama panorama = open();
  const Guide guide = measure(panorama, 0);
  uint8_t bytes[4];
  std::memcpy(bytes, guide.data(), sizeof bytes);
  EXPECT_EQ(bytes[0] + bytes[1] * 256u, guide.size());
  EXPECT_EQ(panorama.guide_reach(), 7);
  const auto expect = [&](const Panorama& other, bool alike) {
    OwnPicture to = door_.panorama();
    BiseamFrame frame = frame_defaults();
    frame.guide = guide.data();
    frame.guide_size = guide.size();
    const BiseamPicture fisheyes[] = {lens(0, 0).record(), lens(0, 1).record()}, picture = to.record();
    EXPECT_EQ(biseam_panorama_stitch(other.get(), fisheyes, &picture, &frame, nullptr) == BISEAM_OK, alike);
    EXPECT_EQ(to.untouched(), !alike);
  };
  door_.options.quality = BISEAM_QUALITY_BEST;
  door_.options.threads = 2;
  door_.options.rate = 60;
  expect(open(), true);
  door_.options.seam = BISEAM_SEAM_SEARCH;
  expect(open(), false);
  door_.options.seam = BISEAM_SEAM_STEADY;
  door_.options.light = BISEAM_LIGHT_OFF;
  expect(open(), false);
}

TEST_F(PanoramaGuide, ASeamThatIsGivenTooIsTaken) {
  Panorama panorama = open();
  const Guide guide = measure(panorama, 2);
  const std::vector<double> middle(std::size_t(panorama.seam_length()), 0.0);
  BiseamFrame frame = frame_defaults();
  frame.guide = guide.data();
  frame.guide_size = guide.size();
  frame.seam = middle.data();
  OwnPicture to = door_.panorama();
  ASSERT_FALSE(panorama.stitch({lens(2, 0).record(), lens(2, 1).record()}, to.record(), frame));
  std::vector<double> taken(middle.size(), 1.0);
  panorama.seam(taken.data());
  EXPECT_EQ(taken, middle);
}

TEST_F(PanoramaGuide, EveryRuleBrokenAloneIsNamed) {
  Panorama panorama = open();
  const Guide good = measure(panorama, 0);
  const std::string size = std::to_string(good.size());
  OwnPicture to = door_.panorama();
  const BiseamPicture fisheyes[] = {lens(0, 0).record(), lens(0, 1).record()};
  const auto refuse = [&](const Guide& guide, std::size_t bytes, const std::string& text) {
    BiseamFrame frame = frame_defaults();
    frame.guide = guide.data();
    frame.guide_size = bytes;
    const PanoramaError error = panorama.stitch(fisheyes, to.record(), frame);
    EXPECT_EQ(error.code, BISEAM_INVALID_OPTIONS);
    EXPECT_EQ(std::string(error.text), text);
    EXPECT_TRUE(to.untouched());
  };
  refuse(good, 0, "guide_size is 0: must be " + size);
  refuse(good, good.size() - 1, "guide_size is " + std::to_string(good.size() - 1) + ": must be " + size);
  for (std::size_t at = 0; at < good.size(); ++at) {
    Guide bad = good;
    bad[at] = static_cast<char>(bad[at] ^ 0x10);
    refuse(bad, bad.size(), at < 14 ? "guide is of another version, camera or choice of options" : "guide is damaged");
  }
}

TEST_F(PanoramaGuide, MeasureAndSmoothNameWhatIsWrong) {
  Panorama panorama = open();
  const Guide good = measure(panorama, 0);
  Guide bad = good, room(good.size(), 'x');
  const Guide before = room;
  bad[good.size() / 2] = static_cast<char>(~bad[good.size() / 2]);
  BiseamError error;
  const auto expect = [&](int32_t code, BiseamErrorCode wanted, const char* text) {
    EXPECT_EQ(code, wanted);
    EXPECT_STREQ(error.text, text);
    EXPECT_EQ(room, before);
  };
  BiseamPanorama* const handle = panorama.get();
  const BiseamPicture fisheyes[] = {lens(0, 0).record(), lens(0, 1).record()};
  expect(biseam_panorama_measure(nullptr, fisheyes, room.data(), &error), BISEAM_INVALID_OPTIONS,
         "panorama is NULL: must be what biseam_panorama_open gave");
  expect(biseam_panorama_measure(handle, nullptr, room.data(), &error), BISEAM_INVALID_PICTURE,
         "fisheyes[0] is NULL: must be a picture");
  expect(biseam_panorama_measure(handle, fisheyes, nullptr, &error), BISEAM_INVALID_OPTIONS,
         "guide is NULL: must be room for a guide");
  const void* guides[] = {good.data(), bad.data(), nullptr};
  const auto smooth = [&](int count, int index) {
    return biseam_panorama_smooth(handle, guides, count, index, room.data(), &error);
  };
  expect(biseam_panorama_smooth(nullptr, guides, 1, 0, room.data(), &error), BISEAM_INVALID_OPTIONS,
         "panorama is NULL: must be what biseam_panorama_open gave");
  expect(biseam_panorama_smooth(handle, nullptr, 1, 0, room.data(), &error), BISEAM_INVALID_OPTIONS,
         "guides is NULL: must be guides");
  expect(biseam_panorama_smooth(handle, guides, 1, 0, nullptr, &error), BISEAM_INVALID_OPTIONS,
         "smoothed is NULL: must be room for a guide");
  expect(smooth(0, 0), BISEAM_INVALID_OPTIONS, "index is 0: must be one of 0 guides");
  expect(smooth(1, 1), BISEAM_INVALID_OPTIONS, "index is 1: must be one of 1 guides");
  expect(smooth(1, -1), BISEAM_INVALID_OPTIONS, "index is -1: must be one of 1 guides");
  expect(smooth(2, 0), BISEAM_INVALID_OPTIONS, "guides[1] is damaged");
  guides[1] = good.data();
  expect(smooth(3, 0), BISEAM_INVALID_OPTIONS, "guides[2] is NULL: must be a guide");
  EXPECT_EQ(smooth(2, 0), BISEAM_OK);
  EXPECT_EQ(biseam_panorama_guide_size(nullptr), 0u);
  EXPECT_EQ(biseam_panorama_guide_reach(nullptr), 0);
}

TEST_F(PanoramaGuide, WhatIsOutOfReachIsNotLookedAt) {
  Panorama panorama = open();
  const Guide guide = measure(panorama, 0);
  std::vector<const void*> guides(30, nullptr);
  for (std::size_t i = 10; i <= 24; ++i) guides[i] = guide.data();
  Guide smoothed(guide.size());
  EXPECT_FALSE(panorama.smooth(guides.data(), 30, 17, smoothed.data()));
  EXPECT_TRUE(panorama.smooth(guides.data(), 30, 18, smoothed.data()));
}

// Programs built before there were guides.
TEST_F(PanoramaGuide, FramesOfOlderProgramsHaveNone) {
  Panorama panorama = open(), other = open();
  BiseamFrame frame;
  std::memset(&frame, 0x5a, sizeof frame);
  frame.size = offsetof(BiseamFrame, guide_size);
  frame.turn = {0, 0, 0};
  frame.seam = nullptr;
  OwnPicture to = door_.panorama();
  ASSERT_FALSE(panorama.stitch({lens(0, 0).record(), lens(0, 1).record()}, to.record(), frame));
  EXPECT_EQ(to.bytes(), stitch(other, 0, nullptr));
}

}  // namespace
}  // namespace biseam::test
