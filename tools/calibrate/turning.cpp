#include "calibrate/turning.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <optional>

#include "calibrate/correlate.hpp"
#include "calibrate/match.hpp"
#include "calibrate/positions.hpp"
#include "calibrate/vectors.hpp"

namespace biseam::calibrate {
namespace {

constexpr double kLeastTurn = 2 * kDegree;  // what moves less tells little
constexpr double kRimMargin = 2 * kDegree;

double angle_of(const Matrix3& r) { return std::acos(std::clamp((r.m[0][0] + r.m[1][1] + r.m[2][2] - 1) / 2, -1.0, 1.0)); }

// Where the same things lie in two worlds.
struct Seen {
  Vec3 first, second;
};

// The rotation that brings the first directions nearest to the second ones.
Matrix3 rotation_between(const std::vector<Seen>& all) {
  cv::Matx33d sum = cv::Matx33d::zeros();
  for (const Seen& seen : all) {
    sum += cv::Matx31d(seen.second.x, seen.second.y, seen.second.z) * cv::Matx13d(seen.first.x, seen.first.y, seen.first.z);
  }
  cv::Matx31d w;
  cv::Matx33d u, vt;
  cv::SVD::compute(sum, w, u, vt);
  const double handedness = cv::determinant(u * vt) < 0 ? -1 : 1;
  const cv::Matx33d r = u * cv::Matx33d::diag({1, 1, handedness}) * vt;
  Matrix3 rotation;
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 3; ++x) rotation.m[y][x] = r(y, x);
  }
  return rotation;
}

// Small pictures of a pair, and where they see things.
constexpr double kCoarse = 80;  // pixels per radian

cv::Mat1b reduced(const cv::Mat1b& picture, double scale) {
  cv::Mat1b small;
  cv::resize(picture, small, {}, scale, scale, cv::INTER_AREA);
  return small;
}

cv::Point2d enlarged(cv::Point2d at, double scale) { return {(at.x + 0.5) / scale - 0.5, (at.y + 0.5) / scale - 0.5}; }

// Off the lens's axis, in the picture's frame.
double angle_at(const Lens& lens, cv::Point2d at) {
  return angle_of_radius(lens, std::hypot(at.x - lens.cx, at.y - lens.cy), lens.fov / 2 * kDegree);
}

bool shows(const Lens& lens, const ImagePoint& at, double margin) {
  return at.angle < lens.fov / 2 * kDegree - kRimMargin - margin && at.x > 2 && at.y > 2 && at.x < lens.width - 3 &&
         at.y < lens.height - 3;
}

// The strongest corners of each part of a reduced picture, in pixels of the whole one.
std::vector<cv::Point2d> corners_of(const cv::Mat1b& small, double scale, const Lens& lens, int parts, int in_each) {
  std::vector<cv::Point2d> corners;
  std::vector<cv::Point2f> found;
  for (int i = 0; i < parts * parts; ++i) {
    const int x = i % parts * small.cols / parts, y = i / parts * small.rows / parts;
    const cv::Rect part(x, y, (i % parts + 1) * small.cols / parts - x, (i / parts + 1) * small.rows / parts - y);
    cv::goodFeaturesToTrack(small(part), found, in_each, 0.05, 5);
    for (const cv::Point2f& corner : found) {
      const cv::Point2d at = enlarged(cv::Point2d(corner) + cv::Point2d(part.tl()), scale);
      if (angle_at(lens, at) < lens.fov / 2 * kDegree - kRimMargin) corners.push_back(at);
    }
  }
  return corners;
}

std::vector<Seen> match_coarsely(const cv::Mat1b& first, const cv::Mat1b& second, double scale, const Lens& lens,
                                 const Projector& projector) {
  constexpr int kHalf = 7, kReach = 28;
  constexpr double kLeastScore = 0.75;
  const cv::Mat1f light[2] = {cv::Mat1f(first), cv::Mat1f(second)};
  std::vector<Seen> matches;
  for (const cv::Point2d& corner : corners_of(first, scale, lens, 6, 3)) {
    const cv::Point at(int(std::lround((corner.x + 0.5) * scale - 0.5)), int(std::lround((corner.y + 0.5) * scale - 0.5)));
    const cv::Rect whole(0, 0, first.cols, first.rows), window(at.x - kHalf, at.y - kHalf, 2 * kHalf + 1, 2 * kHalf + 1);
    if ((window & whole) != window) continue;
    const cv::Rect region =
        cv::Rect(window.x - kReach, window.y - kReach, window.width + 2 * kReach, window.height + 2 * kReach) & whole;
    const BestPlace best = best_place(light[0](window), light[1](region));
    if (best.score < kLeastScore) continue;
    const cv::Point2d to = enlarged(cv::Point2d(region.tl() + best.at + cv::Point(kHalf, kHalf)), scale);
    const cv::Point2d from = enlarged(cv::Point2d(at), scale);
    matches.push_back({projector.unproject(from.x, from.y), projector.unproject(to.x, to.y)});
  }
  return matches;
}

// The rotation that most agree with.
std::optional<Matrix3> agreed_rotation(const std::vector<Seen>& matches) {
  constexpr double kTolerance = 1.5 * kDegree;
  constexpr std::size_t kLeast = 24;
  constexpr int kAttempts = 300;
  if (matches.size() < kLeast) return std::nullopt;
  std::uint32_t state = 11;
  const auto draw = [&]() -> const Seen& {
    state = state * 1664525u + 1013904223u;
    return matches[(state >> 8) % matches.size()];
  };
  const auto agreeing = [&](const Matrix3& rotation) {
    std::vector<Seen> near;
    for (const Seen& seen : matches) {
      const Vec3 off = rotation * seen.first - seen.second;
      if (dot(off, off) < kTolerance * kTolerance) near.push_back(seen);
    }
    return near;
  };
  std::vector<Seen> best;
  for (int i = 0; i < kAttempts; ++i) {
    const Seen &a = draw(), &b = draw();
    const Vec3 across = cross(a.first, b.first);
    if (dot(across, across) < 0.05) continue;
    std::vector<Seen> near = agreeing(rotation_between({a, b, {across, cross(a.second, b.second)}}));
    if (near.size() > best.size()) best = std::move(near);
  }
  if (best.size() < kLeast || 3 * best.size() < matches.size()) return std::nullopt;
  const Matrix3 rotation = rotation_between(best);
  return angle_of(rotation) < kLeastTurn ? std::nullopt : std::optional(rotation);
}

// A plane that touches the sphere of directions.
struct Tangent {
  Vec3 middle, x, y;
  double pixel;  // radians

  Vec3 at(double column, double row) const { return middle + (column * pixel) * x + (row * pixel) * y; }
};

constexpr int kPatchHalf = 16, kWindowHalf = 10;

cv::Mat1f patch_of(const cv::Mat1b& picture, const Projector& projector, const Tangent& tangent) {
  constexpr int kSide = 2 * kPatchHalf + 1;
  cv::Mat2f map(kSide, kSide);
  const Positions positions(map.size(),
                            [&](int x, int y) { return projector.project(tangent.at(x - kPatchHalf, y - kPatchHalf)); });
  positions.each([&](int x, int y, const ImagePoint& at) { map(y, x) = {float(at.x), float(at.y)}; });
  cv::Mat1b bytes;
  cv::remap(picture, bytes, map, cv::noArray(), cv::INTER_LINEAR, cv::BORDER_REPLICATE);
  cv::Mat1f patch;
  bytes.convertTo(patch, CV_32F);
  return patch;
}

std::optional<Track> track_one(const cv::Mat1b& first, const cv::Mat1b& second, const Lens& lens, const Projector& projector,
                               const Matrix3& rotation, cv::Point2d from, double scale) {
  constexpr double kLeastScore = 0.85;
  const double margin = kPatchHalf / scale;
  const Vec3 d = projector.unproject(from.x, from.y), there = rotation * d;
  if (!shows(lens, projector.project(d), margin) || !shows(lens, projector.project(there), margin)) return std::nullopt;
  Tangent tangent{d, unit(cross(std::abs(d.y) < 0.9 ? Vec3{0, 1, 0} : Vec3{1, 0, 0}, d)), {}, 1 / scale};
  tangent.y = cross(d, tangent.x);
  const Tangent turned{there, rotation * tangent.x, rotation * tangent.y, tangent.pixel};
  const cv::Point2d middle(kPatchHalf, kPatchHalf);
  cv::Point2d found = middle;
  const cv::Mat1f here_patch = patch_of(first, projector, tangent), there_patch = patch_of(second, projector, turned);
  if (track(here_patch, middle, there_patch, found, kWindowHalf).score < kLeastScore) return std::nullopt;
  const ImagePoint best = projector.project(turned.at(found.x - kPatchHalf, found.y - kPatchHalf));
  return Track{{from, {best.x, best.y}}};
}

}  // namespace

std::vector<Turning> find_turnings(const std::vector<Pair>& pairs, const Values& values, const Frame& frame,
                                   const ShareWork& share_work) {
  const Camera camera = camera_of(values, frame);
  const Projector projector[2] = {Projector(camera, 0), Projector(camera, 1)};
  const double scale = std::min(1.0, kCoarse / std::exp(values[kScale]));
  std::vector<Pair> small(pairs.size());
  share_work(int(pairs.size()), [&](int i) {
    for (int k = 0; k < 2; ++k) small[std::size_t(i)].lens[k] = reduced(pairs[std::size_t(i)].lens[k], scale);
  });
  std::vector<std::optional<Matrix3>> rotations(pairs.size() - 1);
  share_work(int(rotations.size()), [&](int i) {
    std::vector<Seen> matches;
    for (int k = 0; k < 2; ++k) {
      const std::vector<Seen> more =
          match_coarsely(small[std::size_t(i)].lens[k], small[std::size_t(i) + 1].lens[k], scale, camera.lens[k], projector[k]);
      matches.insert(matches.end(), more.begin(), more.end());
    }
    rotations[std::size_t(i)] = agreed_rotation(matches);
  });
  std::vector<Turning> turnings;
  for (std::size_t i = 0; i < rotations.size(); ++i) {
    for (int k = 0; k < 2 && rotations[i]; ++k) turnings.push_back({int(i), k, *rotations[i], {0, 0, 0}, {}});
  }
  return turnings;
}

void track_turnings(const std::vector<Pair>& pairs, const Values& values, const Frame& frame, double scale,
                    std::vector<Turning>& turnings, const ShareWork& share_work) {
  constexpr int kParts = 12, kInEach = 2;
  const Camera camera = camera_of(values, frame);
  const Projector projector[2] = {Projector(camera, 0), Projector(camera, 1)};
  const double small = std::min(1.0, 0.5 * scale / std::exp(values[kScale]));
  share_work(int(turnings.size()), [&](int i) {
    Turning& turning = turnings[std::size_t(i)];
    const Lens& lens = camera.lens[turning.lens];
    const cv::Mat1b& first = pairs[std::size_t(turning.pair)].lens[turning.lens];
    const cv::Mat1b& second = pairs[std::size_t(turning.pair) + 1].lens[turning.lens];
    turning.tracks.clear();
    for (const cv::Point2d& corner : corners_of(reduced(first, small), small, lens, kParts, kInEach)) {
      const auto track = track_one(first, second, lens, projector[turning.lens], turning.rotation, corner, scale);
      if (track) turning.tracks.push_back(*track);
    }
  });
}

}  // namespace biseam::calibrate
