#include "ring/state.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace biseam::test {
namespace {

using namespace ring;

constexpr StripShape kShape{48, 9};

// What an engine has that matches light and keeps its seams steady, with something in it.
struct Own {
  SceneWatch scene{};
  LightMemory light{};
  NearMemory near{};
  std::vector<char> block = std::vector<char>(seam_memory_bytes(kShape) + 64);
  SeamMemory seams =
      lay_out_seam_memory(kShape, block.data() + (64 - reinterpret_cast<std::uintptr_t>(block.data()) % 64) % 64);

  explicit Own(int span = 4) { light.span = near.span = span; }
  StateParts parts() { return {kShape, 2, &scene, &light, &near, &seams}; }
  void fill(int seed) {
    scene.any = 1;
    for (RingImage& image : scene.last) {
      for (int32_t& cell : image.cells) cell = seed++ % 1000;
    }
    const NearShape shape = near_shape(kShape);
    for (int i = 0; i < 2; ++i) {
      std::vector<int16_t> disparities(48, static_cast<int16_t>(seed++ % (most_disparity(shape) + 1)));
      remember(shape, disparities.data(), near);
    }
    for (int i = 0; i < 3; ++i) {
      LightFrame frame{};
      for (SectorLight& sector : frame.sectors) {
        sector.count = seed++ % 100;
        sector.logs[i] = -seed;
        sector.slope_xx = seed;
      }
      remember(light, frame);
      remember_costs(seams, std::vector<uint16_t>(48 * 9, static_cast<uint16_t>(seed % 900)).data());
      remember_path(seams, std::vector<int16_t>(48, static_cast<int16_t>(2 + seed % 5)).data());
    }
  }
  std::vector<char> saved() {
    std::vector<char> state(state_bytes(parts()));
    save_state(parts(), state.data());
    return state;
  }
};

TEST(State, ComesBackAsItWasSaved) {
  Own from, to;
  from.fill(1);
  to.fill(500);
  const std::vector<char> state = from.saved();
  uint32_t size = 0;
  std::memcpy(&size, state.data(), sizeof size);
  EXPECT_EQ(size, state.size());
  EXPECT_NE(to.saved(), state);
  ASSERT_TRUE(load_state(to.parts(), state.data()));
  EXPECT_EQ(to.saved(), state);
  EXPECT_EQ(to.light.filled, 3);
  EXPECT_EQ(to.near.filled, 2);
  // From any address.
  std::vector<char> odd(state.size() + 1);
  std::memcpy(odd.data() + 1, state.data(), state.size());
  EXPECT_TRUE(load_state(Own().parts(), odd.data() + 1));
}

TEST(State, OfNothingIsItsHeadAlone) {
  const StateParts parts{kShape, 2, nullptr, nullptr, nullptr, nullptr};
  std::vector<char> state(state_bytes(parts));
  EXPECT_LT(state.size(), 64u);
  save_state(parts, state.data());
  EXPECT_TRUE(load_state(parts, state.data()));
  EXPECT_EQ(history(parts), 0);
  forget(parts);
}

TEST(State, IsForgottenAltogether) {
  Own own;
  EXPECT_EQ(history(own.parts()), 4 + SeamMemory::kHistory);
  own.fill(1);
  forget(own.parts());
  EXPECT_EQ(own.scene.any, 0);
  EXPECT_EQ(own.light.filled, 0);
  EXPECT_EQ(own.seams.count->filled, 0);
  EXPECT_EQ(history(own.parts()), 4 + SeamMemory::kHistory);
}

TEST(State, OfOthersIsRefusedAndChangesNothing) {
  Own own, other(5);
  own.fill(1);
  other.fill(2);
  const std::vector<char> before = own.saved(), others = other.saved();
  ASSERT_EQ(others.size(), before.size());
  EXPECT_FALSE(load_state(own.parts(), others.data())) << "another span";
  StateParts parts = other.parts();
  parts.strip.width = 7;
  EXPECT_FALSE(load_state(parts, others.data())) << "another strip";
  EXPECT_EQ(own.saved(), before);
  StateParts without = other.parts();
  without.near = nullptr;
  EXPECT_LT(state_bytes(without), others.size());
  EXPECT_FALSE(load_state(without, others.data())) << "no near things";
  for (const bool light : {false, true}) {
    StateParts some = without;
    light ? void(some.seams = nullptr) : void(some.light = nullptr);
    EXPECT_LT(state_bytes(some), others.size());
    EXPECT_EQ(history(some), light ? 5 : SeamMemory::kHistory);
    EXPECT_FALSE(load_state(some, others.data())) << "other parts";
  }
}

TEST(State, ThatNoEngineSavedIsRefusedAndChangesNothing) {
  Own own;
  own.fill(1);
  const std::vector<char> good = own.saved();
  const auto refuse = [&](const char* what, auto&& spoil) {
    Own wrong;
    wrong.fill(1);
    spoil(wrong);
    const std::vector<char> bad = wrong.saved();
    EXPECT_FALSE(load_state(own.parts(), bad.data())) << what;
    EXPECT_EQ(own.saved(), good) << what;
  };
  refuse("a cell below black", [](Own& o) { o.scene.last[0].cells[0] = -1; });
  refuse("a cell above white", [](Own& o) { o.scene.last[1].cells[127] = kMaxFine + 1; });
  refuse("more frames than there are", [](Own& o) { o.light.filled = 5; });
  refuse("less than none", [](Own& o) { o.light.filled = -1; });
  refuse("the next beyond the last", [](Own& o) { o.light.next = 4; });
  refuse("samples below none", [](Own& o) { o.light.frames[2].sectors[kSectors - 1].count = -1; });
  refuse("light beyond measure", [](Own& o) { o.light.frames[0].sectors[0].logs[2] = 3 * kLogOne; });
  refuse("a seam at the edge", [](Own& o) { o.seams.paths[1][7] = 1; });
  refuse("a negative square", [](Own& o) { o.light.frames[1].sectors[3].slope_xx = -1; });
}

}  // namespace
}  // namespace biseam::test
