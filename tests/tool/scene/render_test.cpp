#include "scene/render.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <numbers>

namespace biseam::scene {
namespace {

using std::numbers::pi;

constexpr double kWide = 195 * pi / 180;

const Place& place() {
  static const Place only;
  return only;
}

const std::vector<std::uint8_t>& small_panorama() {
  static const std::vector<std::uint8_t> codes = develop(render(place(), view_of(PanoramaView{256, 128})), {});
  return codes;
}

constexpr int kSmallFisheye = 160;

std::vector<std::uint8_t> small_fisheye(int index, double baseline) {
  return develop(render(place(), view_of(Fisheye::fitting(index, kSmallFisheye, kWide), baseline)), {});
}

// Mean difference of the green codes of a fisheye and of the panorama in the same directions; mirrored: of the picture
// turned left to right.
double difference_to_panorama(int index, bool mirrored) {
  const Fisheye lens = Fisheye::fitting(index, kSmallFisheye, kWide);
  const PanoramaView view{256, 128};
  const std::vector<std::uint8_t> picture = small_fisheye(index, 0);
  double sum = 0, count = 0;
  for (int v = 0; v < kSmallFisheye; ++v) {
    for (int u = 0; u < kSmallFisheye; ++u) {
      if (!lens.sees({double(u), double(v)})) continue;
      const Position at = view.project(lens.direction({double(u), double(v)}));
      const int x = int(std::lround(at.u + 256)) % 256, y = std::clamp(int(std::lround(at.v)), 0, 127);
      const int column = mirrored ? kSmallFisheye - 1 - u : u;
      sum += std::abs(picture[std::size_t(v * kSmallFisheye + column) * 3 + 1] -
                      small_panorama()[std::size_t(y * 256 + x) * 3 + 1]);
      ++count;
    }
  }
  return sum / count;
}

TEST(Render, BothFisheyesShowWhatThePanoramaShowsInTheSameDirection) {
  for (const int index : {0, 1}) {
    EXPECT_LT(difference_to_panorama(index, false), 10);
    EXPECT_GT(difference_to_panorama(index, true), 20) << "the check would not notice a mirrored picture";
  }
}

TEST(Render, SunStandsWhereItShouldInThePanorama) {
  std::size_t brightest = 0;
  const std::vector<std::uint8_t>& codes = small_panorama();
  const auto sum = [&](std::size_t i) { return codes[3 * i] + codes[3 * i + 1] + codes[3 * i + 2]; };
  for (std::size_t i = 0; i < codes.size() / 3; ++i) {
    if (sum(i) > sum(brightest)) brightest = i;
  }
  EXPECT_NEAR(double(brightest % 256), 52.0 / 360 * 256 - 0.5, 1.5);
  EXPECT_NEAR(double(brightest / 256), (90.0 - 33) / 180 * 128 - 0.5, 1.5);
}

TEST(Render, IsTheSameEveryTime) { EXPECT_EQ(develop(render(place(), view_of(PanoramaView{256, 128})), {}), small_panorama()); }

TEST(Render, IsBlackOutsideTheImageCircle) {
  const std::vector<std::uint8_t> picture = small_fisheye(1, 0);
  EXPECT_EQ(picture[0] + picture[1] + picture[2], 0);
}

TEST(Render, BaselineMovesNearThingsAndLeavesTheSky) {
  const std::vector<std::uint8_t> without = small_fisheye(0, 0), with = small_fisheye(0, 0.2);
  const auto changed = [&](int v) {
    int count = 0;
    for (int u = 0; u < kSmallFisheye; ++u)
      count += without[std::size_t(v * kSmallFisheye + u) * 3] != with[std::size_t(v * kSmallFisheye + u) * 3];
    return count;
  };
  EXPECT_EQ(changed(20), 0);
  EXPECT_GT(changed(kSmallFisheye * 3 / 4), kSmallFisheye / 4);
}

double brightness(Vec3 light) { return std::sqrt(0.25 * light.x + 0.65 * light.y + 0.1 * light.z); }

// Light of a pixel's sixteen spots, one in each of 4 x 4 squares; more than 4 is cut off.
std::vector<Vec3> sixteen_spots(const View& view, int x, int y) {
  std::vector<Vec3> all;
  for (int n = 0; n < 16; ++n) {
    const auto ray = view.ray({x + (n % 4 - 1.5) / 4, y + (n / 4 - 1.5) / 4});
    const Vec3 light = ray ? place().look(*ray, view.pixel_angle / 2).light : Vec3{};
    all.push_back({std::min(light.x, 4.0), std::min(light.y, 4.0), std::min(light.z, 4.0)});
  }
  return all;
}

Vec3 mean(const std::vector<Vec3>& lights) {
  Vec3 sum;
  for (const Vec3 light : lights) sum = sum + light;
  return sum * (1.0 / double(lights.size()));
}

// Sixteen spots, or four of them, of different rows and columns, where these are nearly equal.
TEST(Render, APixelIsTheMeanOfSpotsSpreadOverIt) {
  const View views[2] = {view_of(PanoramaView{48, 24}), view_of(Fisheye::fitting(1, 24, kWide), 0.1)};
  int plain = 0, others = 0;
  for (const View& view : views) {
    for (int y = 0; y < view.height; ++y) {
      for (int x = 0; x < view.width; ++x) {
        const std::vector<Vec3> all = sixteen_spots(view, x, y), four = {all[1], all[7], all[8], all[14]};
        const auto darker = [](Vec3 a, Vec3 b) { return brightness(a) < brightness(b); };
        const auto [least, greatest] = std::minmax_element(four.begin(), four.end(), darker);
        const bool is_plain = brightness(*greatest) - brightness(*least) < 0.06;
        (is_plain ? plain : others)++;
        const Pixel pixel = render_pixel(place(), view, x, y);
        ASSERT_NEAR(length(pixel.light - mean(is_plain ? four : all)), 0, 1e-12) << x << " " << y;
      }
    }
  }
  EXPECT_GT(plain, 100);
  EXPECT_GT(others, 100);
}

TEST(Render, APixelKnowsHowFarAwayThePlaceIsInIt) {
  const View view = view_of(PanoramaView{48, 24});
  const Pixel zenith = render_pixel(place(), view, 10, 0), nadir = render_pixel(place(), view, 10, 23);
  EXPECT_EQ(zenith.nearest, 1e30);
  EXPECT_EQ(zenith.farthest, 0);
  EXPECT_NEAR(nadir.nearest, 1.5, 0.02);
  EXPECT_LE(nadir.nearest, nadir.farthest);
  const Pixel outside = render_pixel(place(), view_of(Fisheye::fitting(0, 24, kWide), 0), 0, 0);
  EXPECT_EQ(length(outside.light), 0);
  EXPECT_EQ(outside.farthest, 0);
}

TEST(ForEachRow, TakesEveryRowOnce) {
  std::vector<std::atomic<int>> taken(133);
  for_each_row(133, [&](int row) { ++taken[std::size_t(row)]; });
  for (const auto& count : taken) EXPECT_EQ(count, 1);
  for_each_row(0, [](int) { ADD_FAILURE() << "a row of none"; });
}

TEST(Develop, OneStopIsTwiceTheLight) {
  const Frame once{2, 1, {{0.1, 0.2, 0.05}, {0.3, 0.4, 0.01}}}, twice{2, 1, {{0.2, 0.4, 0.1}, {0.6, 0.8, 0.02}}};
  EXPECT_EQ(develop(once, {{2, 2, 2}, 0, 0}), develop(twice, {}));
  EXPECT_NE(develop(once, {}), develop(twice, {}));
}

TEST(Develop, KnowsBlackMiddleGreyAndWhite) {
  const std::vector<std::uint8_t> codes = develop({3, 1, {{0, 0, 0}, {0.2158605, 0.2158605, 0.2158605}, {100, 100, 100}}}, {});
  EXPECT_EQ(codes[0], 0);
  EXPECT_EQ(codes[3], 128) << "sRGB: (0.055 + 128 / 255) / 1.055 to the power of 2.4";
  EXPECT_EQ(codes[6], 255);
}

// Straight sRGB up to three quarters; then a shoulder that goes on as steeply and never falls.
TEST(Develop, RisesWithTheLightAndHasNoStep) {
  Frame frame{20001, 1, {}};
  for (int n = 0; n <= 20000; ++n) frame.pixels.push_back({n / 5000.0 - 0.5, 0, 0});
  const std::vector<std::uint8_t> codes = develop(frame, {});
  for (std::size_t n = 0; n <= 20000; ++n) {
    const double linear = double(n) / 5000 - 0.5;
    const int code = codes[3 * n];
    if (n > 0) {
      ASSERT_GE(code, codes[3 * n - 3]) << linear;
      ASSERT_LE(code, codes[3 * n - 3] + 1) << linear;
    }
    if (linear <= 0) {
      ASSERT_EQ(code, 0);
    }
    if (linear > 0 && linear < 0.75) {
      const double wanted = linear > 0.0031308 ? 1.055 * std::pow(linear, 1 / 2.4) - 0.055 : 12.92 * linear;
      ASSERT_NEAR(code, 255 * wanted, 0.5 + 1e-9) << linear;
    }
    if (linear > 1) {
      ASSERT_GT(code, 240);
    }
  }
}

TEST(Develop, NoiseDependsOnItsSeedAlone) {
  const Frame grey{64, 64, std::vector<Vec3>(64 * 64, {0.2, 0.2, 0.2})};
  EXPECT_EQ(develop(grey, {{1, 1, 1}, 5, 7}), develop(grey, {{1, 1, 1}, 5, 7}));
  EXPECT_NE(develop(grey, {{1, 1, 1}, 5, 7}), develop(grey, {{1, 1, 1}, 5, 8}));
}

TEST(Develop, NoiseHasTheStandardDeviationAskedFor) {
  const Frame grey{200, 200, std::vector<Vec3>(200 * 200, {0.2, 0.2, 0.2})};
  const int quiet = develop(grey, {})[0];
  double sum = 0, squares = 0;
  const std::vector<std::uint8_t> noisy = develop(grey, {{1, 1, 1}, 4, 3});
  for (const std::uint8_t code : noisy) sum += code - quiet, squares += (code - quiet) * (code - quiet);
  const double n = double(noisy.size());
  EXPECT_NEAR(sum / n, 0, 0.5) << "the quiet code is rounded";
  EXPECT_NEAR(std::sqrt(squares / n - sum / n * sum / n), std::sqrt(16 + 1.0 / 12), 0.05);
}

}  // namespace
}  // namespace biseam::scene
