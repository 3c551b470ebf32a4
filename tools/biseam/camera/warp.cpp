#include "camera/warp.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "base/angle.hpp"
#include "base/share_work.hpp"
#include "base/thread_count.hpp"

namespace biseam::tool {
namespace {

constexpr int kLobes = 3;
constexpr int kPhaseBits = 8, kPhaseMask = WarpFilter::kPhases - 1;
static_assert(WarpFilter::kPhases == 1 << kPhaseBits);

double lanczos(double x) {
  if (std::abs(x) < 1e-9) return 1;
  if (std::abs(x) >= kLobes) return 0;
  const double a = std::numbers::pi * x;
  return kLobes * std::sin(a) * std::sin(a / kLobes) / (a * a);
}

// Channels interleaved samples a pixel.
template <int Channels>
struct Plane {
  const std::uint8_t* samples;
  std::ptrdiff_t stride;
  int width, height;

  const std::uint8_t* at(int x, int y) const {
    return samples + std::clamp(y, 0, height - 1) * stride + std::clamp(x, 0, width - 1) * Channels;
  }
};

// Taps: of the filter, when they are known beforehand, or 0.
template <int Channels, int Taps>
void sample(const Plane<Channels>& plane, const WarpFilter& filter, Warp::Place place, std::uint8_t* out) {
  const int taps = Taps != 0 ? Taps : filter.taps();
  const int x = (place.x >> kPhaseBits) - taps / 2 + 1, y = (place.y >> kPhaseBits) - taps / 2 + 1;
  const float *across = filter.weights(place.x & kPhaseMask), *down = filter.weights(place.y & kPhaseMask);
  const bool inside = x >= 0 && x + taps <= plane.width;
  float sum[Channels] = {};
  for (int j = 0; j < taps; ++j) {
    float line[Channels] = {};
    const std::uint8_t* from = plane.at(inside ? x : 0, y + j);
    for (int i = 0; i < taps; ++i) {
      const std::uint8_t* pixel = inside ? from + i * Channels : plane.at(x + i, y + j);
      for (int c = 0; c < Channels; ++c) line[c] += across[i] * float(pixel[c]);
    }
    for (int c = 0; c < Channels; ++c) sum[c] += down[j] * line[c];
  }
  for (int c = 0; c < Channels; ++c) out[c] = std::uint8_t(std::clamp(std::floor(sum[c] + 0.5f), 0.0f, 255.0f));
}

template <int Channels>
void sample_row(const Plane<Channels>& plane, const WarpFilter& filter, const Warp::Place* places, int count,
                std::uint8_t* out) {
  constexpr int kUsualTaps = 2 * kLobes;
  if (filter.taps() == kUsualTaps) {
    for (int x = 0; x < count; ++x) sample<Channels, kUsualTaps>(plane, filter, places[x], out + x * Channels);
  } else {
    for (int x = 0; x < count; ++x) sample<Channels, 0>(plane, filter, places[x], out + x * Channels);
  }
}

// Far outside, every position sees the same edge pixels.
std::int32_t in_phases(double position) {
  constexpr double kFar = 1e6;
  return std::int32_t(std::lround(std::clamp(position, -kFar, kFar) * WarpFilter::kPhases));
}

Warp::Place place_of(Point point) { return {in_phases(point.x), in_phases(point.y)}; }

struct Direction {
  double x, y, z;  // right, down, forward
};

Direction turn_about_z(Direction d, double angle) {
  const double c = std::cos(angle), s = std::sin(angle);
  return {c * d.x - s * d.y, s * d.x + c * d.y, d.z};
}

Direction turn_about_x(Direction d, double angle) {
  const double c = std::cos(angle), s = std::sin(angle);
  return {d.x, c * d.y - s * d.z, s * d.y + c * d.z};
}

Direction turn_about_y(Direction d, double angle) {
  const double c = std::cos(angle), s = std::sin(angle);
  return {c * d.x + s * d.z, d.y, -s * d.x + c * d.z};
}

// From target pixels to source pixels.
class Mapping {
 public:
  Mapping(const Lens& lens, const WarpTarget& target)
      : lens_(lens), target_(target), turned_(lens.turn.yaw != 0 || lens.turn.pitch != 0) {}

  Point operator()(Point pixel) const {
    Point angle = {(pixel.x - target_.centre.x) / target_.p, (pixel.y - target_.centre.y) / target_.p};
    if (turned_) angle = turn(angle);
    return {lens_.centre.x + lens_.p * angle.x, lens_.centre.y + lens_.p * angle.y};
  }

 private:
  // The target's rays are rolled like the source's, so the roll is undone before yaw and pitch and done again after.
  Point turn(Point angle) const {
    const double radius = std::hypot(angle.x, angle.y), scale = radius < 1e-12 ? 1 : std::sin(radius) / radius;
    Direction ray = {angle.x * scale, angle.y * scale, std::cos(radius)};
    ray = turn_about_z(ray, lens_.turn.roll * kDegree);
    ray = turn_about_y(ray, -lens_.turn.yaw * kDegree);
    ray = turn_about_x(ray, -lens_.turn.pitch * kDegree);
    ray = turn_about_z(ray, -lens_.turn.roll * kDegree);
    const double across = std::hypot(ray.x, ray.y), factor = across < 1e-12 ? 1 : std::atan2(across, ray.z) / across;
    return {ray.x * factor, ray.y * factor};
  }

  const Lens& lens_;
  const WarpTarget& target_;
  bool turned_;
};

}  // namespace

WarpFilter::WarpFilter(double step) : stretch_(std::max(step, 1.0)), taps_(2 * int(std::ceil(kLobes * stretch_))) {
  weights_.resize(std::size_t(kPhases) * std::size_t(taps_));
  for (int phase = 0; phase < kPhases; ++phase) {
    float* row = &weights_[std::size_t(phase) * std::size_t(taps_)];
    double sum = 0;
    for (int k = 0; k < taps_; ++k) sum += weight(phase, k);
    for (int k = 0; k < taps_; ++k) row[k] = float(weight(phase, k) / sum);
  }
}

double WarpFilter::weight(int phase, int tap) const {
  const int middle = taps_ / 2 - 1;
  return lanczos((tap - middle - double(phase) / kPhases) / stretch_);
}

Warp::Warp(const Lens& lens, const WarpTarget& target, int threads) : size_(target.size), filter_(lens.p / target.p) {
  const std::size_t width = std::size_t(size_.width), half = width / 2;
  luma_.resize(width * std::size_t(size_.height));
  chroma_.resize(luma_.size() / 4);
  const Mapping mapping(lens, target);
  share_work(size_.height, threads, [&, width](int y) {
    Place* row = &luma_[std::size_t(y) * width];
    for (std::size_t x = 0; x < width; ++x) row[x] = place_of(mapping({double(x), double(y)}));
  });
  // A chroma sample stands in the middle of its 2 x 2 block.
  share_work(size_.height / 2, threads, [&, half](int y) {
    Place* row = &chroma_[std::size_t(y) * half];
    for (std::size_t x = 0; x < half; ++x) {
      const Point at = mapping({2 * double(x) + 0.5, 2 * y + 0.5});
      row[x] = place_of({(at.x - 0.5) / 2, (at.y - 0.5) / 2});
    }
  });
}

void Warp::apply(const Nv12View& source, Nv12& out, int threads) const {
  out.resize(size_.width, size_.height);
  const Plane<1> luma{source.luma, source.luma_stride, source.width, source.height};
  const Plane<2> chroma{source.chroma, source.chroma_stride, source.width / 2, source.height / 2};
  const std::size_t width = std::size_t(size_.width), half = width / 2;
  share_work(size_.height, threads, [&, width](int y) {
    sample_row(luma, filter_, &luma_[std::size_t(y) * width], int(width), &out.luma[std::size_t(y) * width]);
  });
  share_work(size_.height / 2, threads, [&, width, half](int y) {
    sample_row(chroma, filter_, &chroma_[std::size_t(y) * half], int(half), &out.chroma[std::size_t(y) * width]);
  });
}

Nv12 warp_fisheye(const Nv12View& source, const Lens& lens, const WarpTarget& target) {
  const int threads = usual_threads();
  Nv12 out;
  Warp(lens, target, threads).apply(source, out, threads);
  return out;
}

}  // namespace biseam::tool
