#include "calibrate/strip.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/random_source.hpp"
#include "tool/calibrate/world.hpp"

namespace biseam::calibrate {
namespace {

constexpr int kSide = 400;
constexpr StripSize kSize{480, 73};

TEST(Strip, ColumnsGoRoundAndRowsAcross) {
  EXPECT_EQ(kSize.columns(), 480 + 2 * 96);
  EXPECT_NEAR(kSize.t(96), 0, 1e-12);
  EXPECT_NEAR(kSize.t(96 + 120), kPi / 2, 1e-12);
  EXPECT_NEAR(kSize.b(36), 0, 1e-12);
  EXPECT_NEAR(kSize.b(35), 2 * kPi / 480, 1e-12);  // lens 1's side comes first
}

// A plane of light comes through interpolation as it is, but for the places' fractions of 1/32 pixel and what cubics take from
// a slope: 0.048 of it at most with the usual coefficients.
TEST(Strip, SamplesAreThoseThatTheLensDrew) {
  constexpr double kMostOff = 1.0 / 64 + 0.0485;  // pixels
  const Camera camera = some_camera(kSide);
  cv::Mat2f picture(kSide, kSide);
  const auto light = [](double x, double y) { return cv::Vec2d(0.3 * x + 0.2 * y, 90 - 0.1 * x + 0.25 * y); };
  for (int y = 0; y < kSide; ++y) {
    for (int x = 0; x < kSide; ++x) picture(y, x) = light(x, y);
  }
  for (int k = 0; k < 2; ++k) {
    const Projector lens(camera, k);
    const cv::Mat2f samples = Unroller(camera, k, kSize).samples(picture);
    ASSERT_EQ(samples.size(), cv::Size(kSize.columns(), kSize.rows));
    for (int y = 0; y < kSize.rows; ++y) {
      for (int x = 0; x < kSize.columns(); ++x) {
        const double t = (x - 96) * 2 * kPi / 480, b = (36 - y) * 2 * kPi / 480;
        const ImagePoint at = lens.project({std::cos(b) * std::cos(t), std::cos(b) * std::sin(t), std::sin(b)});
        const cv::Vec2d wanted = light(at.x, at.y), got = samples(y, x);
        if (samples(y, x) == cv::Vec2f(0, 0)) continue;  // not seen, which the next test is about
        EXPECT_NEAR(got[0], wanted[0], 0.5 * kMostOff);
        EXPECT_NEAR(got[1], wanted[1], 0.35 * kMostOff);
      }
    }
  }
}

// All but the outermost pixels of the circle, and of a picture that cuts it off.
TEST(Strip, SeesWhatLiesInTheCircleAndInThePicture) {
  Camera camera = some_camera(kSize.around);
  camera.lens[1] = camera.lens[0];
  camera.lens[1].cx = 40;  // cut off at the left
  for (int k = 0; k < 2; ++k) {
    const Lens& lens = camera.lens[k];
    const Projector projector(camera, k);
    const Strip strip = Unroller(camera, k, kSize).unroll(cv::Mat1b(lens.height, lens.width, static_cast<unsigned char>(90)));
    const double edge = radius(lens, lens.fov / 2 * kDegree);
    int seen = 0, unseen = 0;
    for (int y = 0; y < kSize.rows; ++y) {
      for (int x = 0; x < kSize.columns(); ++x) {
        const ImagePoint at = projector.project(ring_direction(kSize.t(x), kSize.b(y)));
        const double left = edge - std::hypot(at.x - lens.cx, at.y - lens.cy);
        const double margin = std::min({at.x, at.y, lens.width - 1 - at.x, lens.height - 1 - at.y});
        const bool is_beyond = at.angle > lens.fov / 2 * kDegree || margin < 1;
        const bool is_inside = !is_beyond && left > 0.02 * edge && margin > 3;
        if (is_beyond) {
          ++unseen;
          EXPECT_EQ(strip.seen(y, x), 0) << x << " " << y;
        }
        if (is_inside) {
          ++seen;
          EXPECT_EQ(strip.seen(y, x), 255) << x << " " << y;
        }
      }
    }
    EXPECT_GT(seen, 1000);
    EXPECT_GT(unseen, 1000);
  }
}

TEST(Strip, BeginsAgainAtBothEnds) {
  const Camera camera = some_camera(kSide);
  const cv::Mat1b picture = photograph(camera).lens[0];
  const Unroller unroller(camera, 0, kSize);
  const cv::Mat1b samples = unroller.samples(picture);
  for (int y = 0; y < kSize.rows; ++y) {
    for (int x = 0; x < 2 * StripSize::kRepeated; ++x) EXPECT_NEAR(samples(y, x), samples(y, x + kSize.around), 2);
  }
}

// Mean and deviation of what is seen of the neighbourhood, one sample after the other.
class LocalLight {
 public:
  LocalLight(const cv::Mat1b& samples, const cv::Mat1b& seen)
      : seen_(seen), blurred_(samples.size(), 0.0), without_mean_(samples.size(), 0.0) {
    double weights[5], sum = 0;
    for (int i = 0; i < 5; ++i) sum += weights[i] = std::exp(-(i - 2) * (i - 2) / (2 * 0.8 * 0.8));
    for (int y = 2; y < samples.rows - 2; ++y) {
      for (int x = 2; x < samples.cols - 2; ++x) {
        if (!seen(y, x)) continue;
        double value = 0;
        for (int j = 0; j < 25; ++j) value += weights[j / 5] * weights[j % 5] * samples(y + j / 5 - 2, x + j % 5 - 2);
        blurred_(y, x) = value / (sum * sum);
      }
    }
    for (int y = 17; y < samples.rows - 17; ++y) {
      for (int x = 17; x < samples.cols - 17; ++x) {
        if (seen(y, x)) without_mean_(y, x) = blurred_(y, x) - mean_around(blurred_, x, y);
      }
    }
  }

  double at(int x, int y) const {
    return without_mean_(y, x) / std::max(2.0, std::sqrt(mean_around(without_mean_.mul(without_mean_), x, y)));
  }

 private:
  double mean_around(const cv::Mat1d& values, int x, int y) const {
    const cv::Rect around(x - 15, y - 15, 31, 31);
    return cv::sum(values(around))[0] / cv::countNonZero(seen_(around));
  }
  cv::Mat1b seen_;
  cv::Mat1d blurred_, without_mean_;
};

// A lens that sees 200 degrees, and one that draws the same but ends little beyond the plane between the lenses.
TEST(Strip, LightHasALocalMeanOf0AndADeviationOf1) {
  constexpr StripSize kFine{2400, 71};  // 5 degrees to either side
  const Camera camera = some_camera(kSide);
  Camera narrow = camera;
  narrow.lens[1].fov = 183;
  const cv::Mat1b picture = photograph(camera).lens[1];
  const Strip strip = Unroller(narrow, 1, kFine).unroll(picture);
  const LocalLight wanted(Unroller(camera, 1, kFine).samples(picture), strip.seen);
  test::RandomSource random;
  int in_part = 0;
  for (int i = 0; i < 300; ++i) {
    const int x = random.between(32, kFine.columns() - 33), y = random.between(32, kFine.rows - 33);
    if (!strip.seen(y, x)) continue;
    in_part += cv::countNonZero(strip.seen(cv::Rect(x - 15, y - 15, 31, 31))) < 31 * 31;
    EXPECT_NEAR(strip.light(y, x), wanted.at(x, y), 1e-3);
  }
  EXPECT_GT(in_part, 50);
}

TEST(Strip, FlatPicturesAndWhatIsNotSeenAre0) {
  const Camera camera = some_camera(kSide);
  const Unroller unroller(camera, 0, {480, 121});
  const Strip flat = unroller.unroll(cv::Mat1b(kSide, kSide, static_cast<unsigned char>(90)));
  EXPECT_LT(cv::norm(flat.light, cv::NORM_INF), 1e-3);
  const Strip strip = unroller.unroll(photograph(camera).lens[0]);
  ASSERT_GT(cv::countNonZero(~strip.seen), 100);
  EXPECT_EQ(cv::norm(strip.light, cv::NORM_INF, ~strip.seen), 0);
}

}  // namespace
}  // namespace biseam::calibrate
