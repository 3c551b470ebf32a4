#include "calibrate/panorama.hpp"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "tool/calibrate/world.hpp"

namespace biseam::calibrate {
namespace {

constexpr int kSide = 320;

LumaPair halves_of(const cv::Mat1b& left, const cv::Mat1b& right) {
  LumaPair pair;
  for (int k = 0; k < 2; ++k) {
    const cv::Mat1b& half = k == 0 ? left : right;
    pair.lens[k] = {half.data, half.cols, half.rows, std::ptrdiff_t(half.step)};
  }
  return pair;
}
LumaPair halves_of(const cv::Mat1b& whole) {
  return halves_of(whole.colRange(0, whole.cols / 2), whole.colRange(whole.cols / 2, whole.cols));
}

// The painted place as a panorama of so many degrees all round, with sensor noise.
cv::Mat1b panorama(double degrees = 360) {
  cv::Mat1b picture(kSide, 2 * kSide);
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      const double longitude = degrees * kDegree * (x + 0.5) / picture.cols, latitude = kPi * ((y + 0.5) / picture.rows - 0.5);
      const Vec3 d{std::cos(latitude) * std::sin(longitude), std::sin(latitude), std::cos(latitude) * std::cos(longitude)};
      picture(y, x) = cv::saturate_cast<unsigned char>(light_from(d) + 4 * (hashed(x, y, 1) - 0.5));
    }
  }
  return picture;
}

TEST(Panorama, IsKnownByItsSidesAndPoles) {
  const cv::Mat1b whole = panorama();
  EXPECT_TRUE(is_panorama(halves_of(whole)));
  EXPECT_FALSE(is_panorama(halves_of(panorama(300))));                                              // whose sides don't meet
  EXPECT_TRUE(is_panorama(halves_of(whole.colRange(kSide, 2 * kSide), whole.colRange(0, kSide))));  // turned by half
  cv::Mat1b cropped;  // its first and last row show many places
  cv::resize(whole.rowRange(kSide / 8, kSide * 7 / 8), cropped, whole.size());
  EXPECT_FALSE(is_panorama(halves_of(cropped)));
  EXPECT_FALSE(is_panorama(halves_of(cv::Mat1b(kSide, 2 * kSide, static_cast<unsigned char>(90)))));
  EXPECT_FALSE(is_panorama(halves_of(whole(cv::Rect(0, 0, 40, 20)))));
}

// Whole, cut off on all sides, and so large that nothing dark is left.
TEST(Panorama, FisheyesAreNone) {
  for (const double scale : {0.97, 1.05, 1.44}) {
    Camera camera = some_camera(kSide);
    for (Lens& lens : camera.lens) lens.p *= scale;
    const Pair pair = photograph(camera);
    EXPECT_FALSE(is_panorama(halves_of(pair.lens[0], pair.lens[1]))) << scale;
  }
}

TEST(Panorama, OneCoveredLensIsNone) {
  const Pair pair = photograph(some_camera(kSide));
  const cv::Mat1b covered(kSide, kSide, static_cast<unsigned char>(2));
  EXPECT_FALSE(is_panorama(halves_of(pair.lens[0], covered)));
  EXPECT_FALSE(is_panorama(halves_of(covered, pair.lens[1])));
}

// Pictures that are wider than their circles end in what both lenses see, and are dark above and below.
TEST(Panorama, FisheyesCutOffAtTheirSidesAreNone) {
  Camera camera = some_camera(kSide);
  for (Lens& lens : camera.lens) {
    lens.cx = lens.cy = (kSide - 1) / 2.0;
    lens.p *= 1.02;
  }
  Pair pair = photograph(camera, 1e9, 0);
  for (cv::Mat1b& picture : pair.lens) {
    cv::Mat1b higher(kSide, kSide, static_cast<unsigned char>(2));
    cv::resize(picture, higher.rowRange(kSide / 10, kSide * 9 / 10), {kSide, kSide * 9 / 10 - kSide / 10});
    picture = higher;
  }
  EXPECT_FALSE(is_panorama(halves_of(pair.lens[0], pair.lens[1])));
}

}  // namespace
}  // namespace biseam::calibrate
