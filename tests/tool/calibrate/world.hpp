// Something to see in every direction, as cameras record it.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <opencv2/core.hpp>
#include <random>

#include "calibrate/align.hpp"
#include "camera/projector.hpp"

namespace biseam::calibrate {

inline double hashed(int x, int y, int z) {
  std::uint32_t h = std::uint32_t(x) * 73856093u ^ std::uint32_t(y) * 19349663u ^ std::uint32_t(z) * 83492791u;
  h = (h ^ (h >> 13)) * 1274126177u;
  return double((h ^ (h >> 16)) & 0xffff) / 65535;
}

// Smooth noise, 0 to 1, that changes over distances of 1.
inline double noise_at(double x, double y, double z) {
  const int ix = int(std::floor(x)), iy = int(std::floor(y)), iz = int(std::floor(z));
  const auto ease = [](double f) { return f * f * (3 - 2 * f); };
  const double f[3] = {ease(x - ix), ease(y - iy), ease(z - iz)};
  double sum = 0;
  for (int corner = 0; corner < 8; ++corner) {
    const int a = corner & 1, b = corner >> 1 & 1, c = corner >> 2;
    sum += (a ? f[0] : 1 - f[0]) * (b ? f[1] : 1 - f[1]) * (c ? f[2] : 1 - f[2]) * hashed(ix + a, iy + b, iz + c);
  }
  return sum;
}

// Code values; brighter above.
inline double light_from(const Vec3& d) {
  return 90 - 40 * d.y + 60 * noise_at(20 * d.x, 20 * d.y, 20 * d.z) + 50 * noise_at(50 * d.x + 9, 50 * d.y, 50 * d.z);
}

// A camera's pair of pictures of it, with a ground `ground` metres below; noise: standard deviation; turned: from directions of
// the camera's world to those of the place.
inline Pair photograph(
    const Camera& camera, double ground = 1e9, double noise = 1,
    const std::function<Vec3(const Vec3&)>& turned = [](const Vec3& d) { return d; }) {
  std::mt19937 state(5);
  Pair pair;
  for (int k = 0; k < 2; ++k) {
    const Lens& lens = camera.lens[k];
    const Projector projector(camera, k);
    const double edge = radius(lens, lens.fov / 2 * kDegree), side = (k == 0 ? -0.5 : 0.5) * camera.baseline;
    pair.lens[k] = cv::Mat1b(lens.height, lens.width);
    for (int y = 0; y < lens.height; ++y) {
      for (int x = 0; x < lens.width; ++x) {
        Vec3 d = projector.unproject(x, y);
        if (d.y > 1e-6 && ground < 1e8) {
          const double s = ground / d.y;
          d = {s * d.x, ground, side + s * d.z};
          const double length = std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
          d = {d.x / length, d.y / length, d.z / length};
        }
        const double inside = std::clamp((edge - std::hypot(x - lens.cx, y - lens.cy)) / 2 + 0.5, 0.0, 1.0);
        double grain = 0;
        for (int i = 0; i < 4; ++i) grain += double(state()) / 4294967296.0 - 0.5;
        pair.lens[k](y, x) = cv::saturate_cast<unsigned char>(inside * light_from(turned(d)) + 2 + noise * 1.73 * grain);
      }
    }
  }
  return pair;
}

inline Camera some_camera(int size) {
  Camera camera;
  for (int k = 0; k < 2; ++k) {
    Lens& lens = camera.lens[k] = usual_lens(size, size, 200);
    lens.cx += k == 0 ? 2.3 : -1.7;
    lens.cy += k == 0 ? -1.1 : 2.9;
    lens.k[0] = -0.012;
    lens.p *= 1.01;
  }
  camera.lens[1].turn = {1.2, -0.8, 0.6};
  return camera;
}

// Root mean square over the ring of the difference between both lenses' directions, in pixels of a 3840 panorama.
inline double seam_error(const Camera& truth, const Camera& found) {
  double sum = 0;
  constexpr int kPlaces = 128;
  const Projector true_lens[2] = {Projector(truth, 0), Projector(truth, 1)};
  const Projector found_lens[2] = {Projector(found, 0), Projector(found, 1)};
  for (int i = 0; i < kPlaces; ++i) {
    Vec3 d[2];
    for (int k = 0; k < 2; ++k) {
      const ImagePoint at = true_lens[k].project(ring_direction(i * 2 * kPi / kPlaces, 0));
      d[k] = found_lens[k].unproject(at.x, at.y);
    }
    const double x = d[0].x - d[1].x, y = d[0].y - d[1].y, z = d[0].z - d[1].z;
    sum += (x * x + y * y + z * z) / kPlaces;
  }
  return std::sqrt(sum) * kPixelsPerRadian;
}

// One after the other, or the last first.
inline void in_turn(int pieces, const std::function<void(int)>& work) {
  for (int i = 0; i < pieces; ++i) work(i);
}
inline void backwards(int pieces, const std::function<void(int)>& work) {
  for (int i = pieces - 1; i >= 0; --i) work(i);
}

}  // namespace biseam::calibrate
