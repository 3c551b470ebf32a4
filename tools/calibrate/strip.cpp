#include "calibrate/strip.hpp"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "calibrate/positions.hpp"

namespace biseam::calibrate {
namespace {

constexpr double kRimMargin = 0.006;  // of the radius
constexpr int kLocal = 31;            // pixels of the neighbourhood whose light is made the same
constexpr float kLeastDeviation = 2;  // code values: what is flatter is noise

}  // namespace

Unroller::Unroller(const Camera& camera, int index, const StripSize& size) : seen_(size.rows, size.columns()) {
  const Projector projector(camera, index);
  const Lens& lens = camera.lens[index];
  const double limit = angle_of_radius(lens, (1 - kRimMargin) * radius(lens, lens.fov / 2 * kDegree), lens.fov / 2 * kDegree);
  cv::Mat2f map(size.rows, size.columns());
  const Positions positions(map.size(), [&](int x, int y) { return projector.project(ring_direction(size.t(x), size.b(y))); });
  positions.each([&](int x, int y, const ImagePoint& at) {
    map(y, x) = {float(at.x), float(at.y)};
    const bool inside = at.x >= 2 && at.y >= 2 && at.x <= lens.width - 3 && at.y <= lens.height - 3;
    seen_(y, x) = inside && at.angle < limit ? 255 : 0;
  });
  cv::convertMaps(map, cv::noArray(), map_, weights_, CV_16SC2);
  seen_.convertTo(share_, CV_32F, 1 / 255.0);
  cv::blur(share_, share_, {kLocal, kLocal}, {-1, -1}, cv::BORDER_REPLICATE);
  share_ = cv::max(share_, 1e-3f);
}

cv::Mat Unroller::samples(const cv::Mat& picture) const {
  cv::Mat samples;
  cv::remap(picture, samples, map_, weights_, cv::INTER_CUBIC, cv::BORDER_REPLICATE);
  samples.setTo(cv::Scalar::all(0), ~seen_);
  return samples;
}

Strip Unroller::unroll(const cv::Mat1b& picture) const {
  cv::Mat1b bytes;
  cv::remap(picture, bytes, map_, weights_, cv::INTER_CUBIC, cv::BORDER_REPLICATE);
  Strip strip;
  strip.seen = seen_;
  cv::Mat1f light, mean, square;
  bytes.convertTo(light, CV_32F);
  cv::GaussianBlur(light, light, {5, 5}, 0.8);
  light.setTo(0, ~seen_);
  cv::blur(light, mean, {kLocal, kLocal}, {-1, -1}, cv::BORDER_REPLICATE);
  mean /= share_;
  light -= mean;
  light.setTo(0, ~seen_);
  cv::blur(light.mul(light), square, {kLocal, kLocal}, {-1, -1}, cv::BORDER_REPLICATE);
  square /= share_;
  cv::sqrt(square, square);
  strip.light = light / cv::max(square, kLeastDeviation);
  return strip;
}

}  // namespace biseam::calibrate
