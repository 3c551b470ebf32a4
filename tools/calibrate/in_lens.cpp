#include "calibrate/in_lens.hpp"

#include <algorithm>
#include <cmath>

#include "calibrate/vectors.hpp"

namespace biseam::calibrate {
namespace {

// What is within a lens: directions don't depend on the rim, and a turn of lens 1 is one of its rotations.
constexpr int kSought = kYaw;

// Directions beyond the rim count as well: there the guess may be wrong.
Camera widened(Values values, const Frame& frame) {
  values[kRim] += 10;
  return camera_of(values, frame);
}

// A camera, and cameras that are changed a little, one value at a time.
class Differences {
 public:
  Differences(const Values& values, const Frame& frame) {
    add(values, frame);
    for (int p = 0; p < kSought; ++p) {
      for (const double side : {-1.0, 1.0}) {
        Values moved = values;
        moved[std::size_t(p)] += side * step(p);
        add(moved, frame);
      }
    }
  }

  Vec3 direction(int lens, cv::Point2d at) const { return seen(0, lens, at); }
  Vec3 slope(int p, int lens, cv::Point2d at) const {
    return (0.5 / step(p)) * (seen(2 + 2 * p, lens, at) - seen(1 + 2 * p, lens, at));
  }

 private:
  static double step(int p) { return 0.1 * kSteps[std::size_t(p)]; }
  void add(const Values& values, const Frame& frame) {
    const Camera camera = widened(values, frame);
    for (int k = 0; k < 2; ++k) projectors_.emplace_back(camera, k);
  }
  Vec3 seen(int camera, int lens, cv::Point2d at) const {
    return projectors_[std::size_t(2 * camera + lens)].unproject(at.x, at.y);
  }

  std::vector<Projector> projectors_;
};

// What is left of a track, in pixels of a 3840 panorama, and what a drift is multiplied by there.
struct Rest {
  Vec3 first, off;
  double below;
};
Rest rest_of(const Turning& turning, const Track& track, const Differences& camera, const Vec3& below) {
  const Vec3 d = camera.direction(turning.lens, track.at[0]), first = turning.rotation * d;
  const double share = std::max(0.0, dot(d, below));
  const Vec3 moved = turning.drift - dot(turning.drift, first) * first;
  return {first, kPixelsPerRadian * (first + share * moved - camera.direction(turning.lens, track.at[1])), share};
}

double noise_of(const std::vector<Turning>& turnings, const Differences& camera, const Vec3& below) {
  constexpr double kOfMedian = 1.1774;  // of the length of a normally distributed pair, in deviations
  std::vector<double> lengths;
  for (const Turning& turning : turnings) {
    for (const Track& track : turning.tracks) {
      const Vec3 off = rest_of(turning, track, camera, below).off;
      lengths.push_back(std::sqrt(dot(off, off)));
    }
  }
  const auto middle = lengths.begin() + std::ptrdiff_t(lengths.size() / 2);
  std::nth_element(lengths.begin(), middle, lengths.end());
  return std::max(0.02, *middle / kOfMedian);
}

// Turned by a small vector of radians.
Matrix3 turned_by(const cv::Matx31d& w, const Matrix3& rotation) {
  const double length = std::sqrt(w(0) * w(0) + w(1) * w(1) + w(2) * w(2));
  if (length < 1e-15) return rotation;
  const Vec3 axis{w(0) / length, w(1) / length, w(2) / length};
  const double c = std::cos(length), s = std::sin(length), v = 1 - c;
  const Matrix3 turn{{{c + v * axis.x * axis.x, v * axis.x * axis.y - s * axis.z, v * axis.x * axis.z + s * axis.y},
                      {v * axis.y * axis.x + s * axis.z, c + v * axis.y * axis.y, v * axis.y * axis.z - s * axis.x},
                      {v * axis.z * axis.x - s * axis.y, v * axis.z * axis.y + s * axis.x, c + v * axis.z * axis.z}}};
  return turn * rotation;
}

// Normal equations of the values, and of a rotation and a drift.
constexpr int kOwn = 6;
struct Block {
  cv::Mat1d values = cv::Mat1d::zeros(kSought, kSought), right = cv::Mat1d::zeros(kSought, 1);
  cv::Mat1d mixed = cv::Mat1d::zeros(kSought, kOwn), own = cv::Mat1d::zeros(kOwn, kOwn), own_right = cv::Mat1d::zeros(kOwn, 1);
};

// Weights fall like those of Student's distribution: what is near, or wrong, is off by any amount.
Block block_of(const Turning& turning, const Differences& camera, double noise, const Vec3& below) {
  constexpr double kFreedom = 4, kMostDrift = 0.02;
  Block block;
  for (int i = 3; i < kOwn; ++i) {
    const double* drift = i == 3 ? &turning.drift.x : i == 4 ? &turning.drift.y : &turning.drift.z;
    block.own(i, i) = 1 / (kMostDrift * kMostDrift);
    block.own_right(i, 0) = -*drift / (kMostDrift * kMostDrift);
  }
  Vec3 slopes[kSought], own[kOwn];
  for (const Track& track : turning.tracks) {
    const Rest rest = rest_of(turning, track, camera, below);
    const double weight = (kFreedom + 2) / (kFreedom + dot(rest.off, rest.off) / (noise * noise)) / (noise * noise);
    for (int p = 0; p < kSought; ++p) {
      slopes[p] = kPixelsPerRadian *
                  (turning.rotation * camera.slope(p, turning.lens, track.at[0]) - camera.slope(p, turning.lens, track.at[1]));
    }
    for (int i = 0; i < 3; ++i) {
      const Vec3 axis{i == 0 ? 1.0 : 0.0, i == 1 ? 1.0 : 0.0, i == 2 ? 1.0 : 0.0};
      own[i] = kPixelsPerRadian * cross(axis, rest.first);
      own[3 + i] = (kPixelsPerRadian * rest.below) * (axis - dot(axis, rest.first) * rest.first);
    }
    for (int p = 0; p < kSought; ++p) {
      block.right(p, 0) -= weight * dot(slopes[p], rest.off);
      for (int q = 0; q < kSought; ++q) block.values(p, q) += weight * dot(slopes[p], slopes[q]);
      for (int i = 0; i < kOwn; ++i) block.mixed(p, i) += weight * dot(slopes[p], own[i]);
    }
    for (int i = 0; i < kOwn; ++i) {
      block.own_right(i, 0) -= weight * dot(own[i], rest.off);
      for (int j = 0; j < kOwn; ++j) block.own(i, j) += weight * dot(own[i], own[j]);
    }
  }
  return block;
}

}  // namespace

InLens solve_turnings(std::vector<Turning>& turnings, const Values& guess, const Frame& frame, const Vec3& below) {
  constexpr int kMostSteps = 12;
  constexpr double kWide = 50;                  // steps by which values may change: what tracks don't tell stays as it is
  constexpr double kTracksThatErrTogether = 4;  // as they are of the same things, again and again
  InLens found;
  found.values = guess;
  for (const Turning& turning : turnings) found.tracks += turning.tracks.size();
  for (int step = 0; step < kMostSteps; ++step) {
    const Differences camera(found.values, frame);
    found.noise = noise_of(turnings, camera, below);
    cv::Mat1d stiffness = cv::Mat1d::zeros(kSought, kSought), right = cv::Mat1d::zeros(kSought, 1), change;
    std::vector<Block> blocks;
    for (const Turning& turning : turnings) {
      const Block block = block_of(turning, camera, found.noise, below);
      const cv::Mat1d inverse(block.own.inv(cv::DECOMP_SVD));
      stiffness += block.values - block.mixed * inverse * block.mixed.t();
      right += block.right - block.mixed * inverse * block.own_right;
      blocks.push_back(block);
    }
    found.stiffness = stiffness / kTracksThatErrTogether;
    cv::Mat1d held = stiffness.clone();
    for (int p = 0; p < kSought; ++p) {
      const double wide = kWide * kSteps[std::size_t(p)];
      held(p, p) += 1 / (wide * wide);
    }
    cv::solve(held, right, change, cv::DECOMP_CHOLESKY);
    double length = 0;
    for (int p = 0; p < kSought; ++p) {
      found.values[std::size_t(p)] += change(p, 0);
      length = std::max(length, std::abs(change(p, 0)) / kSteps[std::size_t(p)]);
    }
    for (std::size_t i = 0; i < turnings.size(); ++i) {
      cv::Mat1d own;
      cv::solve(blocks[i].own, cv::Mat1d(blocks[i].own_right - blocks[i].mixed.t() * change), own, cv::DECOMP_SVD);
      turnings[i].rotation = turned_by({own(0, 0), own(1, 0), own(2, 0)}, turnings[i].rotation);
      turnings[i].drift = turnings[i].drift + Vec3{own(3, 0), own(4, 0), own(5, 0)};
    }
    if (length < 1e-2) break;
  }
  return found;
}

std::optional<InLens> look_in_lenses(const std::vector<Pair>& pairs, Values values, const Frame& frame, const Vec3& below,
                                     const ShareWork& share_work) {
  constexpr std::size_t kLeastTurnings = 6, kLeastTracks = 40;
  constexpr double kMostNoise = 0.8;        // pixels of a 3840 panorama
  constexpr double kScales[] = {100, 300};  // pixels per radian
  if (pairs.size() < 2) return std::nullopt;
  std::vector<Turning> turnings = find_turnings(pairs, values, frame, share_work);
  InLens found;
  for (const double scale : kScales) {
    track_turnings(pairs, values, frame, std::min(scale, std::exp(values[kScale])), turnings, share_work);
    const auto is_poor = [](const Turning& turning) { return turning.tracks.size() < kLeastTracks; };
    turnings.erase(std::remove_if(turnings.begin(), turnings.end(), is_poor), turnings.end());
    if (turnings.size() < kLeastTurnings) return std::nullopt;
    found = solve_turnings(turnings, values, frame, below);
    values = found.values;
  }
  if (found.noise > kMostNoise) return std::nullopt;
  return found;
}

void take_in_lens(const InLens& found, const Frame& frame, Values& values) {
  constexpr double kFarthest = 130;  // degrees
  const Lens before = camera_of(values, frame).lens[0];
  const double rim = radius(before, values[kRim] * kDegree);
  std::copy_n(found.values.begin(), found.stiffness.rows, values.begin());
  values[kRim] = kFarthest;
  const Lens after = camera_of(values, frame).lens[0];  // up to where the radius increases
  values[kRim] = angle_of_radius(after, rim, after.fov / 2 * kDegree) / kDegree;
}

}  // namespace biseam::calibrate
