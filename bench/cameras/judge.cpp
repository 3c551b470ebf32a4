#include "cameras/judge.hpp"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <utility>
#include <vector>

#include "biseam/panorama.hpp"
#include "camera/projector.hpp"
#include "driver/camera.hpp"

namespace biseam::bench {
namespace {

constexpr int kPlaces = 256;

Vec3 on_ring(int place, double across) {
  const double t = place * 2 * kPi / kPlaces;
  return {std::cos(across) * std::cos(t), std::cos(across) * std::sin(t), std::sin(across)};
}

// From directions by the true camera to those by the found one, as near as a rotation comes to it on the ring.
Matrix3 rotation_between(const Camera& truth, const Camera& found) {
  cv::Matx33d sum = cv::Matx33d::zeros();
  for (int k = 0; k < 2; ++k) {
    const Projector true_lens(truth, k), found_lens(found, k);
    for (int i = 0; i < kPlaces; ++i) {
      const Vec3 d = on_ring(i, 0);
      const ImagePoint at = true_lens.project(d);
      const Vec3 u = found_lens.unproject(at.x, at.y);
      sum += cv::Vec3d(u.x, u.y, u.z) * cv::Vec3d(d.x, d.y, d.z).t();
    }
  }
  cv::Matx33d left, right;
  cv::Matx31d values;
  cv::SVD::compute(sum, values, left, right);
  cv::Matx33d turn = left * cv::Matx33d::diag({1, 1, cv::determinant(left * right)}) * right;
  Matrix3 rotation;
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 3; ++x) rotation.m[y][x] = turn(y, x);
  }
  return rotation;
}

BiseamTurn turn_of(const Matrix3& matrix) {
  const Vec3 forward = matrix * Vec3{0, 0, 1};
  const double yaw = std::atan2(forward.x, forward.z) / kDegree, pitch = std::asin(-forward.y) / kDegree;
  const Matrix3 rest = transposed(rotation({yaw, pitch, 0})) * matrix;
  return {yaw, pitch, std::atan2(rest.m[1][0], rest.m[0][0]) / kDegree};
}

BiseamPicture picture_of(const cv::Mat1b& gray) {
  BiseamPicture picture = picture_defaults();
  picture.format = BISEAM_GRAY8;
  picture.width = gray.cols;
  picture.height = gray.rows;
  picture.planes[0] = gray.data;
  picture.strides[0] = std::ptrdiff_t(gray.step);
  return picture;
}

// The panorama as the shot's world is turned, or an empty picture.
cv::Mat1b stitch(const Shot& shot, const Camera& camera, const Matrix3& view, int width) {
  BiseamPanoramaOptions options = panorama_defaults();
  options.width = width;
  options.height = width / 2;
  options.format = BISEAM_GRAY8;
  Panorama panorama = Panorama::open(make_record(camera), options);
  cv::Mat1b made(width / 2, width);
  const BiseamPicture fisheyes[2] = {picture_of(shot.lens[0]), picture_of(shot.lens[1])};
  BiseamFrame frame = frame_defaults();
  frame.turn = turn_of(view);
  if (!panorama || panorama.stitch(fisheyes, picture_of(made), frame)) return {};
  return made;
}

double psnr(const cv::Mat1b& first, const cv::Mat1b& second, const cv::Mat1b& where) {
  return 10 * std::log10(255 * 255 * double(cv::countNonZero(where)) / cv::norm(first, second, cv::NORM_L2SQR, where));
}

}  // namespace

double straightness_of(const Camera& truth, const Camera& found) {
  constexpr int kSide = 48;
  double square = 0, count = 0;
  for (int k = 0; k < 2; ++k) {
    const Lens& lens = truth.lens[k];
    const Projector true_lens(truth, k), found_lens(found, k);
    cv::Matx33d sum = cv::Matx33d::zeros(), left, right;
    std::vector<std::pair<cv::Vec3d, cv::Vec3d>> all;
    for (int i = 0; i < kSide * kSide; ++i) {
      const double x = (i % kSide + 0.5) * lens.width / kSide, y = (i / kSide + 0.5) * lens.height / kSide;
      if (std::hypot(x - lens.cx, y - lens.cy) > radius(lens, lens.fov / 2 * kDegree)) continue;
      const Vec3 a = found_lens.unproject(x, y), b = true_lens.unproject(x, y);
      all.push_back({{a.x, a.y, a.z}, {b.x, b.y, b.z}});
      sum += all.back().second * all.back().first.t();
    }
    cv::Matx31d values;
    cv::SVD::compute(sum, values, left, right);
    for (const auto& [a, b] : all) {
      const cv::Vec3d off = left * right * a - b;
      square += off.dot(off);
    }
    count += double(all.size());
  }
  return std::sqrt(square / count) * 3840 / (2 * kPi);
}

Seams seams_of(const Camera& truth, const Camera& found) {
  const Projector true_lens[2] = {Projector(truth, 0), Projector(truth, 1)};
  const Projector found_lens[2] = {Projector(found, 0), Projector(found, 1)};
  const double width = overlap(truth);
  double sum = 0, octant[8] = {};
  for (int i = 0; i < kPlaces; ++i) {
    for (const double part : {-0.5, 0.0, 0.5}) {
      Vec3 u[2];
      for (int k = 0; k < 2; ++k) {
        const ImagePoint at = true_lens[k].project(on_ring(i, part * width));
        u[k] = found_lens[k].unproject(at.x, at.y);
      }
      const Vec3 off{u[0].x - u[1].x, u[0].y - u[1].y, u[0].z - u[1].z};
      const double square = (off.x * off.x + off.y * off.y + off.z * off.z) * std::pow(3840 / (2 * kPi), 2);
      sum += square / (3 * kPlaces);
      octant[i * 8 / kPlaces] += square / (3 * kPlaces / 8);
    }
  }
  return {std::sqrt(sum), std::sqrt(*std::max_element(octant, octant + 8))};
}

Likeness likeness_of(const cv::Mat1b& panorama, const Drawn& truth, const Camera& found, std::uint64_t seed) {
  constexpr int kWidth = 1920;
  Drawn far = truth;
  far.camera.baseline = 0;
  const Shot shot = film(panorama, far, 1, 0, seed + 1000000).front();
  const Matrix3 view = transposed(shot.pose);
  const cv::Mat1b by_truth = stitch(shot, far.camera, view, kWidth);
  const cv::Mat1b by_found = stitch(shot, found, rotation_between(far.camera, found) * view, kWidth);
  if (by_truth.empty() || by_found.empty()) return {0, 0};
  cv::Mat1b wanted, ring(by_truth.size());
  cv::resize(panorama, wanted, by_truth.size(), 0, 0, cv::INTER_AREA);
  const double reach = std::sin(overlap(far.camera));
  for (int y = 0; y < ring.rows; ++y) {
    for (int x = 0; x < ring.cols; ++x) {
      const double longitude = 2 * kPi * (x + 0.5) / ring.cols - kPi, latitude = kPi * (y + 0.5) / ring.rows - kPi / 2;
      const Vec3 d{std::cos(latitude) * std::sin(longitude), std::sin(latitude), std::cos(latitude) * std::cos(longitude)};
      ring(y, x) = std::abs((view * d).z) < reach ? 255 : 0;
    }
  }
  return {psnr(by_truth, wanted, ring), psnr(by_found, wanted, ring)};
}

}  // namespace biseam::bench
