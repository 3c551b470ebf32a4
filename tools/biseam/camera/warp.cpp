#include "camera/warp.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <thread>
#include <vector>

namespace biseam::tool {
namespace {

constexpr double kDegree = std::numbers::pi / 180;
constexpr int kLobes = 3;
constexpr int kPhases = 256;  // positions between two samples

double lanczos(double x) {
  if (std::abs(x) < 1e-9) return 1;
  if (std::abs(x) >= kLobes) return 0;
  const double a = std::numbers::pi * x;
  return kLobes * std::sin(a) * std::sin(a / kLobes) / (a * a);
}

// Weights of the samples around a position, for every phase; each set sums to 1.
class Filter {
 public:
  // step: source samples per target sample.
  explicit Filter(double step) : stretch_(std::max(step, 1.0)), taps_(2 * int(std::ceil(kLobes * stretch_))) {
    weights_.resize(std::size_t(kPhases + 1) * std::size_t(taps_));
    for (int phase = 0; phase <= kPhases; ++phase) {
      float* row = &weights_[std::size_t(phase) * std::size_t(taps_)];
      double sum = 0;
      for (int k = 0; k < taps_; ++k) sum += weight(phase, k);
      for (int k = 0; k < taps_; ++k) row[k] = float(weight(phase, k) / sum);
    }
  }

  struct Place {
    int first;
    const float* weights;
  };

  Place place(double position) const {
    const double floor = std::floor(position);
    const int phase = int((position - floor) * kPhases + 0.5);
    return {int(floor) - taps_ / 2 + 1, &weights_[std::size_t(phase) * std::size_t(taps_)]};
  }

  int taps() const { return taps_; }

 private:
  double weight(int phase, int tap) const {
    const int middle = taps_ / 2 - 1;
    return lanczos((tap - middle - double(phase) / kPhases) / stretch_);
  }

  double stretch_;
  int taps_;
  std::vector<float> weights_;
};

// Channels interleaved samples a pixel, rows without padding.
template <int Channels>
struct Plane {
  const std::uint8_t* samples;
  int width, height;

  const std::uint8_t* at(int x, int y) const {
    return samples + (std::ptrdiff_t(std::clamp(y, 0, height - 1)) * width + std::clamp(x, 0, width - 1)) * Channels;
  }
};

// Far outside, every position sees the same edge pixels; the clamp keeps indices inside an int.
template <int Channels>
void sample(const Plane<Channels>& plane, const Filter& filter, Point point, std::uint8_t* out) {
  const double margin = filter.taps();
  const auto column = filter.place(std::clamp(point.x, -margin, plane.width + margin));
  const auto row = filter.place(std::clamp(point.y, -margin, plane.height + margin));
  const bool inside = column.first >= 0 && column.first + filter.taps() <= plane.width;
  float sum[Channels] = {};
  for (int j = 0; j < filter.taps(); ++j) {
    float line[Channels] = {};
    const std::uint8_t* from = plane.at(inside ? column.first : 0, row.first + j);
    for (int i = 0; i < filter.taps(); ++i) {
      const std::uint8_t* pixel = inside ? from + i * Channels : plane.at(column.first + i, row.first + j);
      for (int c = 0; c < Channels; ++c) line[c] += column.weights[i] * float(pixel[c]);
    }
    for (int c = 0; c < Channels; ++c) sum[c] += row.weights[j] * line[c];
  }
  for (int c = 0; c < Channels; ++c) out[c] = std::uint8_t(std::clamp(std::floor(sum[c] + 0.5f), 0.0f, 255.0f));
}

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

// Runs work(row) for every row, rows shared out among the processors.
template <class Work>
void for_rows(int rows, Work work) {
  const int threads = std::clamp(int(std::thread::hardware_concurrency()), 1, 16);
  std::vector<std::jthread> pool;
  for (int t = 0; t < threads; ++t) {
    pool.emplace_back([=] {
      for (int y = t; y < rows; y += threads) work(y);
    });
  }
}

}  // namespace

Nv12 warp_fisheye(const Nv12& source, const Lens& lens, const WarpTarget& target) {
  Nv12 out(target.size.width, target.size.height);
  const Mapping mapping(lens, target);
  const Filter filter(lens.p / target.p);
  const Plane<1> luma{source.luma.data(), source.width, source.height};
  const Plane<2> chroma{source.chroma.data(), source.width / 2, source.height / 2};
  const int width = out.width;
  for_rows(out.height, [&, width](int y) {
    std::uint8_t* row = &out.luma[std::size_t(y) * std::size_t(width)];
    for (int x = 0; x < width; ++x) sample(luma, filter, mapping({double(x), double(y)}), row + x);
  });
  // A chroma sample stands in the middle of its 2 x 2 block.
  for_rows(out.height / 2, [&, width](int y) {
    std::uint8_t* row = &out.chroma[std::size_t(y) * std::size_t(width)];
    for (int x = 0; x < width; x += 2) {
      const Point at = mapping({x + 0.5, 2 * y + 0.5});
      sample(chroma, filter, {(at.x - 0.5) / 2, (at.y - 0.5) / 2}, row + x);
    }
  });
  return out;
}

}  // namespace biseam::tool
