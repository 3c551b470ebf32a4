#include "ring/light.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "camera/trigonometry.hpp"
#include "ring/engine_fixture.hpp"
#include "ring/fine.hpp"

namespace biseam::test {
namespace {

using namespace ring;

PictureFormat format_of(int code) {
  PictureFormat format;
  describe_format(code, BISEAM_SITING_LEFT, format);
  return format;
}

// A pair whose lenses lose light, each in its way.
Camera dim_camera() {
  Camera camera = small_camera();
  const double vignettes[2][2] = {{-0.06, 0.005}, {-0.02, -0.015}}, gains[2][3] = {{1.15, 1, 0.95}, {0.75, 0.8, 0.9}};
  for (int k = 0; k < 2; ++k) {
    std::copy_n(vignettes[k], 2, camera.lens[k].vignette);
    std::copy_n(gains[k], 3, camera.lens[k].gain);
  }
  return camera;
}

TEST(Light, OfAPerfectLensNeedsNothing) { EXPECT_FALSE(make_light(small_camera().lens[0], format_of(BISEAM_NV12), false).any); }

TEST(Light, AnySingleValueCounts) {
  for (int field = 0; field < 5; ++field) {
    Lens lens = small_camera().lens[0];
    (field < 2 ? lens.vignette[field] : lens.gain[field - 2]) += 0.001;
    EXPECT_TRUE(make_light(lens, format_of(BISEAM_NV12), false).any) << field;
  }
}

// Every second pixel of the circle.
TEST(Light, IsDividedByWhatTheLensRecords) {
  const int of_channel[] = {1, 2, 0};  // green, blue, red
  for (const double size : {0.2, 1.0, 20.0}) {
    Lens lens = dim_camera().lens[1];
    lens.cx *= size, lens.cy *= size, lens.p *= size;
    const Light light = make_light(lens, format_of(BISEAM_GBR), true);
    for (int i = 0; i < 20000; ++i) {
      const double x = (i % 200 - 20) * size, y = (i / 200 * 2 - 20) * size;
      const int32_t at[] = {static_cast<int32_t>(x * 65536), static_cast<int32_t>(y * 65536)};
      const double distance = std::hypot(x - lens.cx, y - lens.cy), limit = lens.fov / 2 * kDegree;
      if (distance > radius(lens, limit)) continue;
      const double angle = angle_of_radius(lens, distance, limit);
      for (int c = 0; c < 3; ++c) {
        int32_t factor = 0;
        kFindLight.scalar(light, c, &at[0], &at[1], &factor, 1);
        ASSERT_NEAR(factor * recorded_light(lens, of_channel[c], angle) / kLightOne, 1, 6e-4) << x << ' ' << y << ' ' << c;
      }
    }
  }
}

TEST(Light, FactorsStayBelowFour) {
  Lens lens = dim_camera().lens[0];
  std::fill_n(lens.gain, 3, 0.25);
  const Light light = make_light(lens, format_of(BISEAM_GBR), true);
  for (const auto& channel : light.factors) EXPECT_EQ(*std::max_element(std::begin(channel), std::end(channel)), kMostLight);
}

TEST(LightRow, ScalesWhatLiesAboveThePivot) {
  std::mt19937 random(11);
  std::uniform_int_distribution<int> any_sample(-10240, 26624), any_factor(1, kMostLight);
  for (const int pivot : {0, 1024, 8192}) {
    std::vector<int16_t> samples;
    std::vector<int32_t> factors;
    for (int i = 0; i < 5000; ++i) {
      samples.push_back(static_cast<int16_t>(i == 0 ? -10240 : i == 1 ? 26624 : any_sample(random)));
      factors.push_back(i < 2 ? kMostLight : any_factor(random));
    }
    std::vector<int16_t> lit = samples;
    kLightRow.scalar(lit.data(), factors.data(), pivot, static_cast<int>(lit.size()));
    for (std::size_t i = 0; i < lit.size(); ++i) {
      const double exact = pivot + std::floor((samples[i] - pivot) * (factors[i] / 8192.0) + 0.5);
      ASSERT_EQ(lit[i], std::clamp(exact, -32768.0, 32767.0)) << samples[i] << ' ' << factors[i];
    }
  }
}

TEST(TintRow, AddsAShareOfLuma) {
  std::mt19937 random(12);
  std::uniform_int_distribution<int> any_sample(INT16_MIN, INT16_MAX), any_luma(0, 16380), any_share(-70000, 70000);
  for (int channels = 1; channels <= 2; ++channels) {
    for (int round = 0; round < 200; ++round) {
      std::array<int16_t, 40> samples, tinted;
      std::array<int16_t, 40> luma;
      for (int16_t& sample : samples) sample = static_cast<int16_t>(any_sample(random));
      for (int16_t& value : luma) value = static_cast<int16_t>(any_luma(random));
      const Tint tint{luma.data(), 1024, {any_share(random), any_share(random)}};
      tinted = samples;
      kTintRow.scalar(tinted.data(), tint, channels, 20);
      for (int i = 0; i < 20 * channels; ++i) {
        const std::size_t at = static_cast<std::size_t>(i);
        const double share = tint.share[i % channels] / 8192.0;
        const double exact = samples[at] + std::floor((luma[at] - 1024) * share + 0.5);
        ASSERT_EQ(tinted[at], std::clamp(exact, -32768.0, 32767.0));
      }
      for (std::size_t i = 20 * static_cast<std::size_t>(channels); i < 40; ++i) ASSERT_EQ(tinted[i], samples[i]);
    }
  }
}

// ---- Whole frames ------------------------------------------------------------------------------------------------------

// Code values of a colour, by the definition of a format and range.
std::array<double, 3> codes_of(const std::array<double, 3>& colour, bool rgb, bool full_range, int bits) {
  const double all = full_range ? (1 << bits) - 1 : 219 << (bits - 8), black = full_range ? 0 : 16 << (bits - 8);
  const auto [red, green, blue] = colour;
  if (rgb) return {black + all * green, black + all * blue, black + all * red};
  const double luma = 0.2126 * red + 0.7152 * green + 0.0722 * blue, middle = 1 << (bits - 1);
  const double chroma = full_range ? (1 << bits) - 1 : 224 << (bits - 8);
  return {black + all * luma, middle + chroma * (blue - luma) / 1.8556, middle + chroma * (red - luma) / 1.5748};
}

struct FlatCase {
  int format;
  bool full_range;
};

// A world of one colour, seen by lenses that lose light: rounding to codes is magnified by at most 1.7 where it is undone.
void expect_flat(const FlatCase& flat, const std::array<double, 3>& colour, double tolerance) {
  EngineConfig config = small_config(flat.format);
  config.full_range = flat.full_range;
  config.camera = dim_camera();
  const TestFormat& format = test_format(flat.format);
  const bool rgb = format_of(flat.format).rgb;
  Fisheyes fisheyes(config, [&](int k, int c, int x, int y) {
    const Lens& lens = config.camera.lens[k];
    const ReferencePlane grid = grid_of(format, c, BISEAM_SITING_LEFT);
    const double distance = std::hypot(grid.sub_x * x + grid.offset_x - lens.cx, grid.sub_y * y + grid.offset_y - lens.cy);
    const double angle = angle_of_radius(lens, distance, lens.fov / 2 * kDegree);
    std::array<double, 3> seen = colour;
    for (int i = 0; i < 3; ++i) seen[static_cast<std::size_t>(i)] *= recorded_light(lens, i, angle);
    const auto codes = codes_of(seen, rgb, flat.full_range, format.bits);
    return static_cast<int>(std::lround(codes[static_cast<std::size_t>(c)]));
  });
  OwnPicture panorama = stitch_once(config, fisheyes, {20, 10, 5});
  const auto wanted = codes_of(colour, rgb, flat.full_range, format.bits);
  for (int c = 0; c < format.channels(); ++c) {
    for (const int value : panorama.channel(c)) {
      ASSERT_NEAR(value, wanted[static_cast<std::size_t>(c)], tolerance) << format.name << " channel " << c;
    }
  }
}

TEST(LitFrame, AGrayWorldComesOutGray) {
  const std::array<double, 3> gray = {0.6, 0.6, 0.6};
  for (const int format : {BISEAM_NV12, BISEAM_NV21, BISEAM_NV16, BISEAM_I420, BISEAM_I444}) {
    for (const bool full : {false, true}) expect_flat({format, full}, gray, 1.6);
  }
  for (const int format : {BISEAM_P010, BISEAM_I422P10, BISEAM_I444P12}) expect_flat({format, false}, gray, 2.6);
}

TEST(LitFrame, AColouredWorldComesOutAsItIsInRedGreenAndBlue) {
  for (const bool full : {false, true}) {
    expect_flat({BISEAM_GBR, full}, {0.7, 0.5, 0.3}, 1.6);
    expect_flat({BISEAM_GBRP10, full}, {0.2, 0.5, 0.6}, 2.1);
  }
}

TEST(LitFrame, OfGrayPicturesTakesTheGainsOfLuma) {
  EngineConfig config = small_config(BISEAM_GRAY8);
  config.full_range = true;
  config.camera = small_camera();
  for (Lens& lens : config.camera.lens) lens.gain[0] = lens.gain[1] = lens.gain[2] = 0.5;
  Fisheyes fisheyes(config, [](int, int, int, int) { return 60; });
  OwnPicture panorama = stitch_once(config, fisheyes);
  for (const int value : panorama.channel(0)) ASSERT_EQ(value, 120);
}

}  // namespace
}  // namespace biseam::test
