#include "stitch/ring_engine.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "tool/support/expect_failure.hpp"

namespace biseam::tool {
namespace {

constexpr int kWidth = 256;

tool::Setup small_setup() {
  tool::Setup setup;
  setup.camera = biseam_camera_of(96, 96, 195);
  setup.width = kWidth;
  return setup;
}

// Pictures in one gray, each lens its own.
struct Grays {
  std::vector<std::uint8_t> planes[2], out = std::vector<std::uint8_t>(kWidth * kWidth / 2);
  BiseamPicture fisheyes[2], panorama;

  Grays() {
    for (int k = 0; k < 2; ++k) {
      planes[k].assign(96 * 96, std::uint8_t(100 + 20 * k));
      fisheyes[k] = record(planes[k], 96, 96);
    }
    panorama = record(out, kWidth, kWidth / 2);
  }

  static BiseamPicture record(std::vector<std::uint8_t>& plane, int width, int height) {
    BiseamPicture picture = picture_defaults();
    picture.format = BISEAM_GRAY8;
    picture.width = width;
    picture.height = height;
    picture.planes[0] = plane.data();
    picture.strides[0] = width;
    return picture;
  }
};

RingEngine made(const EngineOptions& options, const tool::Setup& setup = small_setup()) {
  return {setup, options, {BISEAM_GRAY8, BISEAM_RANGE_FULL}};
}

TEST(RingEngine, TheMapOfAStraightSeamFollowsTheLenses) {
  tool::Setup setup = small_setup();
  setup.blend.search = false;
  RingEngine engine = made({}, setup);
  Grays grays;
  engine.stitch(grays.fisheyes, grays.panorama, Seams::fresh);
  for (const double place : engine.seam_path()) EXPECT_EQ(place, 0);
  const SeamMap map = engine.seam_map();
  EXPECT_EQ(map.size, (Size{kWidth, kWidth / 2}));
  int joined = 0;
  for (int y = 0; y < kWidth / 2; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const double longitude = (x + 0.5) * 2 * std::numbers::pi / kWidth - std::numbers::pi;
      const double latitude = (y + 0.5) * 2 * std::numbers::pi / kWidth - std::numbers::pi / 2;
      const double across = std::asin(std::cos(latitude) * std::cos(longitude)) * 180 / std::numbers::pi;
      const Zone zone = map.at(x, y);
      if (std::abs(across) > 7.5) {
        EXPECT_EQ(zone, Zone::one_lens);
      }
      if (zone == Zone::one_lens) continue;
      ++joined;
      EXPECT_EQ(zone, across < 0 ? Zone::lens0_side : Zone::lens1_side) << x << ", " << y;
    }
  }
  EXPECT_GT(joined, kWidth * kWidth / 2 / 15);  // 6 of 90 degrees and more
}

TEST(RingEngine, AMapTurnsWithTheView) {
  tool::Setup setup = small_setup();
  setup.blend.search = false;
  EngineOptions back;
  back.look = {180, 0, 0};
  RingEngine ahead = made({}, setup), behind = made(back, setup);
  Grays grays;
  ahead.stitch(grays.fisheyes, grays.panorama, Seams::fresh);
  behind.stitch(grays.fisheyes, grays.panorama, Seams::fresh);
  const SeamMap a = ahead.seam_map(), b = behind.seam_map();
  for (int x = 0; x < kWidth; ++x) EXPECT_EQ(a.at(x, 40), b.at((x + kWidth / 2) % kWidth, 40)) << x;
}

TEST(RingEngine, ACameraThatCantBeIsToldWithItsProfile) {
  tool::Setup setup = small_setup();
  setup.profile = "cam.toml";
  setup.camera.lens[1].k[0] = -2;
  const auto [code, line] = test::failure_of([&] { made({}, setup); });
  EXPECT_EQ(code, ExitCode::settings);
  EXPECT_EQ(line.rfind("cam.toml: lens[1].k is (-2, 0, 0): the radius must increase", 0), 0u) << line;
}

TEST(RingEngine, KeptSeamsAreThoseOfTheFrameBefore) {
  RingEngine engine = made({});
  Grays grays;
  for (std::size_t k = 0; k < grays.planes[0].size(); ++k) grays.planes[0][k] = std::uint8_t(k * 7919 % 251);
  engine.stitch(grays.fisheyes, grays.panorama, Seams::kept);  // there are none yet
  const SeamPath first = engine.seam_path();
  for (std::size_t k = 0; k < grays.planes[0].size(); ++k) grays.planes[0][k] = std::uint8_t(k * 104729 % 239);
  engine.stitch(grays.fisheyes, grays.panorama, Seams::kept);
  EXPECT_EQ(engine.seam_path(), first);
  engine.stitch(grays.fisheyes, grays.panorama, Seams::fresh);
  EXPECT_NE(engine.seam_path(), first);
}

}  // namespace
}  // namespace biseam::tool
