// Every rule of the records that biseam/panorama.h opens with, broken alone, and the C++ face.
#include "biseam/panorama.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "panorama/door_fixture.hpp"

namespace biseam::test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN(), kInf = std::numeric_limits<double>::infinity();

// ---- Camera ------------------------------------------------------------------------------------------------------------

void expect_refused(const BiseamCamera& camera, const std::string& text) {
  const Door door;
  BiseamError error = unwritten();
  const Handle opened(biseam_panorama_open(&camera, &door.options, &error));
  EXPECT_EQ(opened.panorama, nullptr) << text;
  expect_error(error, BISEAM_INVALID_CAMERA, text);
}

TEST(PanoramaCamera, EveryRuleBrokenAloneIsNamed) {
  const Rule<BiseamLens> rules[] = {
      {"width is 1: must be between 2 and 16384", [](BiseamLens& l) { l.width = 1; }},
      {"width is 0: must be between 2 and 16384", [](BiseamLens& l) { l.width = 0; }},
      {"width is 16385: must be between 2 and 16384", [](BiseamLens& l) { l.width = 16385; }},
      {"height is -96: must be between 2 and 16384", [](BiseamLens& l) { l.height = -96; }},
      {"height is 20000: must be between 2 and 16384", [](BiseamLens& l) { l.height = 20000; }},
      {"cx is nan: must be between -100000 and 100000", [](BiseamLens& l) { l.cx = kNaN; }},
      {"cx is -100001: must be between -100000 and 100000", [](BiseamLens& l) { l.cx = -100001; }},
      {"cy is inf: must be between -100000 and 100000", [](BiseamLens& l) { l.cy = kInf; }},
      {"cy is 100001: must be between -100000 and 100000", [](BiseamLens& l) { l.cy = 100001; }},
      {"p is 0: must be between 1 and 16384", [](BiseamLens& l) { l.p = 0; }},
      {"p is nan: must be between 1 and 16384", [](BiseamLens& l) { l.p = kNaN; }},
      {"p is 16385: must be between 1 and 16384", [](BiseamLens& l) { l.p = 16385; }},
      {"k[0] is nan: must be between -10 and 10", [](BiseamLens& l) { l.k[0] = kNaN; }},
      {"k[1] is -inf: must be between -10 and 10", [](BiseamLens& l) { l.k[1] = -kInf; }},
      {"k[2] is 11: must be between -10 and 10", [](BiseamLens& l) { l.k[2] = 11; }},
      {"k is (-0.5, 0, 0): the radius must increase up to fov / 2 = 100 degrees, it does not at 46.9",
       [](BiseamLens& l) { l.k[0] = -0.5; }},
      {"fov is 119: must be between 120 and 300", [](BiseamLens& l) { l.fov = 119; }},
      {"fov is 301: must be between 120 and 300", [](BiseamLens& l) { l.fov = 301; }},
      {"fov is nan: must be between 120 and 300", [](BiseamLens& l) { l.fov = kNaN; }},
      {"turn.yaw is 46: must be between -45 and 45", [](BiseamLens& l) { l.turn.yaw = 46; }},
      {"turn.pitch is -46: must be between -45 and 45", [](BiseamLens& l) { l.turn.pitch = -46; }},
      {"turn.roll is inf: must be between -45 and 45", [](BiseamLens& l) { l.turn.roll = kInf; }},
      {"mount is 45: must be 0, 90, 180 or 270", [](BiseamLens& l) { l.mount = 45; }},
      {"mount is 360: must be 0, 90, 180 or 270", [](BiseamLens& l) { l.mount = 360; }},
      {"p is 16000: the radius at fov / 2 must be 16384 or less, it is 27925.3", [](BiseamLens& l) { l.p = 16000; }},
      {"vignette[0] is nan: must be between -10 and 10", [](BiseamLens& l) { l.vignette[0] = kNaN; }},
      {"vignette[1] is -11: must be between -10 and 10", [](BiseamLens& l) { l.vignette[1] = -11; }},
      {"vignette is (-0.3, 0): the light must stay between 0.25 and 4 up to fov / 2, with gain[0] it is 0.249 at 90.6 degrees",
       [](BiseamLens& l) { l.vignette[0] = -0.3; }},
      {"gain[0] is 0: must be between 0.25 and 4", [](BiseamLens& l) { l.gain[0] = 0; }},
      {"gain[1] is 4.5: must be between 0.25 and 4", [](BiseamLens& l) { l.gain[1] = 4.5; }},
      {"gain[2] is inf: must be between 0.25 and 4", [](BiseamLens& l) { l.gain[2] = kInf; }},
  };
  for (int k = 0; k < 2; ++k) {
    for (const Rule<BiseamLens>& rule : rules) {
      BiseamCamera camera = Door().camera;
      rule.break_it(camera.lens[k]);
      expect_refused(camera, "lens[" + std::to_string(k) + "]." + rule.text);
    }
  }
}

TEST(PanoramaCamera, LensesMustOverlapAllRound) {
  BiseamCamera camera = Door().camera;
  camera.lens[0].fov = camera.lens[1].fov = 181;
  expect_refused(camera,
                 "overlap is 0.49 degrees: each lens must see 1 or more beyond the plane between them, all round; "
                 "p is too large, fov too small, or the circle cut off");
  camera.lens[0].fov = camera.lens[1].fov = 181.998;  // which rounding to the nearest would call 1
  expect_refused(camera,
                 "overlap is 0.99 degrees: each lens must see 1 or more beyond the plane between them, all round; "
                 "p is too large, fov too small, or the circle cut off");
  camera = Door().camera;
  camera.lens[1].cx += 8;  // the circle is cut off by the picture's right edge
  BiseamError error = unwritten();
  const Door door;
  EXPECT_EQ(biseam_panorama_open(&camera, &door.options, &error), nullptr);
  EXPECT_EQ(std::string(error.text).find("overlap is "), 0u) << error.text;
}

TEST(PanoramaCamera, TheBaselineIsALength) {
  BiseamCamera camera = Door().camera;
  camera.baseline = -0.5;
  expect_refused(camera, "baseline is -0.5: must be between 0 and 10");
}

TEST(PanoramaCamera, MustHaveItsSize) {
  for (const uint32_t size : {0u, 4u, uint32_t(sizeof(BiseamCamera) - 1), uint32_t(sizeof(BiseamCamera) + 8), ~0u}) {
    BiseamCamera camera = Door().camera;
    camera.size = size;
    expect_refused(camera, "camera.size is " + std::to_string(size) + ": must be " + std::to_string(sizeof(BiseamCamera)) +
                               ", as biseam_camera_of gives it");
  }
  const Door door;
  BiseamError error = unwritten();
  EXPECT_EQ(biseam_panorama_open(nullptr, &door.options, &error), nullptr);
  expect_error(error, BISEAM_INVALID_CAMERA, "camera is NULL: must be a camera");
}

// ---- Options -----------------------------------------------------------------------------------------------------------

using Options = BiseamPanoramaOptions;

TEST(PanoramaOptions, EveryRuleBrokenAloneIsNamed) {
  const Rule<Options> rules[] = {
      {"width is 62: must be even, from 64 to 16384", [](Options& o) { o.width = 62; }},
      {"width is 193: must be even, from 64 to 16384", [](Options& o) { o.width = 193; }},
      {"width is 16386: must be even, from 64 to 16384", [](Options& o) { o.width = 16386; }},
      {"width is -192: must be even, from 64 to 16384", [](Options& o) { o.width = -192; }},
      {"height is 30: must be even, from 32 to 8192", [](Options& o) { o.height = 30; }},
      {"height is 97: must be even, from 32 to 8192", [](Options& o) { o.height = 97; }},
      {"height is 8194: must be even, from 32 to 8192", [](Options& o) { o.height = 8194; }},
      {"format is 0: must be from 1 to 20", [](Options& o) { o.format = 0; }},
      {"format is 21: must be from 1 to 20", [](Options& o) { o.format = 21; }},
      {"quality is -1: must be from 0 to 2", [](Options& o) { o.quality = -1; }},
      {"quality is 3: must be from 0 to 2", [](Options& o) { o.quality = 3; }},
      {"seam is -1: must be from 0 to 2", [](Options& o) { o.seam = -1; }},
      {"seam is 3: must be from 0 to 2", [](Options& o) { o.seam = 3; }},
      {"threads is -1: must be from 0 to 64", [](Options& o) { o.threads = -1; }},
      {"threads is 65: must be from 0 to 64", [](Options& o) { o.threads = 65; }},
      {"range is -1: must be from 0 to 2", [](Options& o) { o.range = -1; }},
      {"range is 3: must be from 0 to 2", [](Options& o) { o.range = 3; }},
      {"light is -1: must be from 0 to 1", [](Options& o) { o.light = -1; }},
      {"light is 2: must be from 0 to 1", [](Options& o) { o.light = 2; }},
      {"transfer is -1: must be from 0 to 4", [](Options& o) { o.transfer = -1; }},
      {"transfer is 5: must be from 0 to 4", [](Options& o) { o.transfer = 5; }},
      {"near is -1: must be from 0 to 1", [](Options& o) { o.near = -1; }},
      {"near is 2: must be from 0 to 1", [](Options& o) { o.near = 2; }},
      {"rate is 0.5: must be from 1 to 1000 frames a second", [](Options& o) { o.rate = 0.5; }},
      {"rate is 1001: must be from 1 to 1000 frames a second", [](Options& o) { o.rate = 1001; }},
      {"rate is nan: must be from 1 to 1000 frames a second", [](Options& o) { o.rate = kNaN; }},
  };
  for (const Rule<Options>& rule : rules) {
    Door door;
    rule.break_it(door.options);
    BiseamError error = unwritten();
    EXPECT_EQ(biseam_panorama_open(&door.camera, &door.options, &error), nullptr);
    expect_error(error, BISEAM_INVALID_OPTIONS, rule.text);
  }
}

TEST(PanoramaOptions, MustHaveTheirSize) {
  Door door;
  BiseamError error = unwritten();
  for (const uint32_t size : {0u, uint32_t(sizeof(Options) - 1), uint32_t(sizeof(Options) + 4)}) {
    door.options.size = size;
    EXPECT_EQ(biseam_panorama_open(&door.camera, &door.options, &error), nullptr);
    expect_error(error, BISEAM_INVALID_OPTIONS,
                 "options.size is " + std::to_string(size) + ": must be " + std::to_string(sizeof(Options)) +
                     ", as biseam_panorama_defaults gives it");
  }
  EXPECT_EQ(biseam_panorama_open(&door.camera, nullptr, &error), nullptr);
  expect_error(error, BISEAM_INVALID_OPTIONS, "options is NULL: must be options");
}

TEST(PanoramaOptions, TheirLimitsAreAllowed) {
  const Rule<Options> limits[] = {
      {"smallest", [](Options& o) { o.width = 64, o.height = 32; }},
      {"one row of blocks, no even number of them", [](Options& o) { o.width = 16384, o.height = 32; }},
      {"tall", [](Options& o) { o.width = 64, o.height = 8192; }},
      {"all threads", [](Options& o) { o.threads = 64; }},
      {"a thread for each processor", [](Options& o) { o.threads = 0; }},
      {"the other seam", [](Options& o) { o.seam = BISEAM_SEAM_MIDDLE; }},
  };
  for (const Rule<Options>& limit : limits) {
    Door allowed;
    limit.break_it(allowed.options);
    BiseamError error = unwritten();
    const Handle opened(biseam_panorama_open(&allowed.camera, &allowed.options, &error));
    ASSERT_NE(opened.panorama, nullptr) << limit.text << ": " << error.text;
    expect_error(error, BISEAM_OK, "");
    OwnPicture lens0 = allowed.fisheye(0), lens1 = allowed.fisheye(1), to = allowed.panorama();
    const BiseamPicture fisheyes[] = {lens0.record(), lens1.record()}, picture = to.record();
    EXPECT_EQ(biseam_panorama_stitch(opened.panorama, fisheyes, &picture, nullptr, &error), BISEAM_OK) << limit.text;
    EXPECT_TRUE(to.surroundings_untouched());
  }
}

// ---- Open and close, C++ -----------------------------------------------------------------------------------------------

TEST(Panorama, ClosingNothingAndErrorsWithoutAPlaceAreAllowed) {
  biseam_panorama_close(nullptr);
  EXPECT_EQ(biseam_panorama_memory(nullptr), 0u);
  EXPECT_EQ(biseam_panorama_seam_length(nullptr), 0);
  EXPECT_EQ(biseam_panorama_ring(nullptr), 0);
  double seam = 0.5;
  biseam_panorama_seam(nullptr, &seam);
  EXPECT_EQ(seam, 0.5);
  Door door;
  BiseamError refused = unwritten();
  const BiseamPicture none[] = {picture_defaults(), picture_defaults()};
  EXPECT_EQ(biseam_panorama_stitch(nullptr, none, &none[0], nullptr, &refused), BISEAM_INVALID_OPTIONS);
  expect_error(refused, BISEAM_INVALID_OPTIONS, "panorama is NULL: must be what biseam_panorama_open gave");
  const Handle opened(biseam_panorama_open(&door.camera, &door.options, nullptr));
  EXPECT_NE(opened.panorama, nullptr);
  door.options.threads = -1;
  EXPECT_EQ(biseam_panorama_open(&door.camera, &door.options, nullptr), nullptr);
}

TEST(Panorama, DefaultsAreWhatTheHeaderSays) {
  const Options options = panorama_defaults();
  EXPECT_EQ(options.size, sizeof(Options));
  EXPECT_EQ(options.width, 3840);
  EXPECT_EQ(options.height, 1920);
  EXPECT_EQ(options.format, BISEAM_NV12);
  EXPECT_EQ(options.quality, BISEAM_QUALITY_GOOD);
  EXPECT_EQ(options.seam, BISEAM_SEAM_SEARCH);
  EXPECT_EQ(options.threads, 0);
  EXPECT_EQ(options.range, BISEAM_RANGE_USUAL);
  EXPECT_EQ(options.light, BISEAM_LIGHT_OFF);
  EXPECT_EQ(options.transfer, BISEAM_TRANSFER_USUAL);
  EXPECT_EQ(options.rate, 30);
  EXPECT_EQ(options.near, BISEAM_NEAR_OFF);
  const BiseamCamera camera = camera_of(1920, 1080, 195);
  EXPECT_EQ(camera.baseline, 0);
  for (const BiseamLens& lens : camera.lens) {
    EXPECT_EQ(lens.cx, 959.5);
    EXPECT_EQ(lens.cy, 539.5);
    EXPECT_NEAR(lens.p, 540 / (195.0 / 360 * M_PI), 1e-9);
    for (const double v : lens.vignette) EXPECT_EQ(v, 0);
    for (const double gain : lens.gain) EXPECT_EQ(gain, 1);
  }
}

TEST(Panorama, HasAnOwnerInCpp) {
  Door door;
  Panorama panorama = Panorama::open(door.camera, door.options);
  ASSERT_TRUE(panorama);
  EXPECT_FALSE(panorama.error());
  EXPECT_GT(panorama.memory(), 100000u);
  OwnPicture lens0 = door.fisheye(0), lens1 = door.fisheye(1), to = door.panorama(), again = door.panorama();
  const BiseamPicture fisheyes[] = {lens0.record(), lens1.record()};
  ASSERT_FALSE(panorama.stitch(fisheyes, to.record()));
  Panorama moved = std::move(panorama);
  EXPECT_FALSE(panorama);
  EXPECT_NE(moved.get(), nullptr);
  panorama = std::move(moved);
  ASSERT_FALSE(panorama.stitch(fisheyes, again.record()));
  EXPECT_EQ(to.bytes(), again.bytes());
  std::vector<double> seam(std::size_t(panorama.seam_length()), 99.0);
  panorama.seam(seam.data());
  for (const double angle : seam) EXPECT_LT(std::abs(angle), panorama.ring());
  BiseamFrame frame = frame_defaults();
  frame.turn.yaw = kNaN;
  const PanoramaError error = panorama.stitch(fisheyes, again.record(), frame);
  ASSERT_TRUE(error);
  expect_error(error, BISEAM_INVALID_OPTIONS, "turn.yaw is nan: must be from -1e+06 to 1e+06 degrees");
  door.options.width = 0;
  const Panorama none = Panorama::open(door.camera, door.options);
  EXPECT_FALSE(none);
  expect_error(none.error(), BISEAM_INVALID_OPTIONS, "width is 0: must be even, from 64 to 16384");
}

}  // namespace
}  // namespace biseam::test
