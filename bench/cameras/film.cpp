#include "cameras/film.hpp"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <opencv2/imgproc.hpp>
#include <random>

#include "camera/projector.hpp"

namespace biseam::bench {
namespace {

struct Pipe {
  std::FILE* file;
  Pipe(const std::string& command, const char* mode) : file(popen(command.c_str(), mode)) {}
  ~Pipe() { close(); }
  void close() {
    if (file != nullptr) pclose(file);
    file = nullptr;
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
};

bool read_all(std::FILE* file, cv::Mat1b& picture) {
  return file != nullptr && std::fread(picture.data, 1, picture.total(), file) == picture.total();
}

double uniform(std::mt19937_64& state) { return double(state() >> 11) * 0x1p-53; }

struct Normals {
  std::mt19937_64& state;
  double operator()() {
    const double u = 1 - uniform(state), v = uniform(state);
    return std::sqrt(-2 * std::log(u)) * std::cos(2 * kPi * v);
  }
};

// What falls on a lens's pixels: direction, and the part of the light that arrives; 0 beyond the rim.
struct Rays {
  cv::Mat_<cv::Vec3f> direction;
  cv::Mat1f light;
};

Rays rays_of(const Drawn& drawn, int index) {
  const Lens& lens = drawn.camera.lens[index];
  const Projector projector(drawn.camera, index);
  const double edge = radius(lens, lens.fov / 2 * kDegree);
  Rays rays{cv::Mat_<cv::Vec3f>(lens.height, lens.width), cv::Mat1f(lens.height, lens.width)};
  for (int y = 0; y < lens.height; ++y) {
    for (int x = 0; x < lens.width; ++x) {
      const Vec3 d = projector.unproject(x, y);
      rays.direction(y, x) = {float(d.x), float(d.y), float(d.z)};
      const double r = std::hypot(x - lens.cx, y - lens.cy);
      const double inside = std::clamp((edge - r) / 2 + 0.5, 0.0, 1.0), u = r / edge;
      rays.light(y, x) = float(inside * drawn.gain[index] * (1 - drawn.vignette[index] * u * u));
    }
  }
  return rays;
}

// walked: metres.
cv::Mat1b expose(const cv::Mat1b& wide, const Rays& rays, const Drawn& drawn, int index, const Matrix3& pose, double walked,
                 std::mt19937_64& state) {
  constexpr int kBorder = 8;
  const int width = wide.cols - 2 * kBorder, height = wide.rows - 2 * kBorder;
  const double side = (index == 0 ? -0.5 : 0.5) * drawn.camera.baseline;
  Vec3 from = pose * Vec3{0, 0, side};
  from.z += walked;
  cv::Mat2f map(rays.light.size());
  for (int y = 0; y < map.rows; ++y) {
    for (int x = 0; x < map.cols; ++x) {
      const cv::Vec3f& ray = rays.direction(y, x);
      Vec3 d = pose * Vec3{ray[0], ray[1], ray[2]};
      if (d.y > 1e-6) {  // on the ground, seen from the middle between the lenses
        const double s = (drawn.ground - from.y) / d.y;
        d = {from.x + s * d.x, from.y + s * d.y, from.z + s * d.z};
      }
      const double longitude = arctangent(d.x, d.z), latitude = arctangent(d.y, std::sqrt(d.x * d.x + d.z * d.z));
      map(y, x) = {float((longitude + kPi) / (2 * kPi) * width - 0.5 + kBorder),
                   float((latitude + kPi / 2) / kPi * height - 0.5 + kBorder)};
    }
  }
  cv::Mat1b seen, picture(map.size());
  cv::remap(wide, seen, map, cv::noArray(), cv::INTER_CUBIC);
  Normals normal{state};
  std::vector<float> noise(65521);
  for (float& value : noise) value = float(drawn.noise * normal());
  std::size_t next = std::size_t(uniform(state) * double(noise.size()));
  for (int y = 0; y < map.rows; ++y) {
    for (int x = 0; x < map.cols; ++x) {
      const float value = 16 + (float(seen(y, x)) * 219 / 255) * rays.light(y, x) + noise[next];
      picture(y, x) = cv::saturate_cast<unsigned char>((value - 16) * 255 / 219);
      if (++next == noise.size()) next = std::size_t(uniform(state) * 1000);
    }
  }
  return picture;
}

}  // namespace

cv::Mat1b read_gray(const std::string& path, int width, int height) {
  if (!std::filesystem::exists(path)) return {};
  cv::Mat1b picture(height, width);
  const std::string size = std::to_string(width) + ":" + std::to_string(height);
  Pipe pipe("ffmpeg -v error -i '" + path + "' -vf scale=" + size + ":out_range=full -pix_fmt gray -f rawvideo -", "r");
  if (!read_all(pipe.file, picture)) return {};
  return picture;
}

std::vector<Shot> film(const cv::Mat1b& panorama, const Drawn& drawn, int frames, double step, std::uint64_t seed) {
  std::mt19937_64 state(seed);
  cv::Mat1b wide;
  cv::copyMakeBorder(panorama, wide, 8, 8, 0, 0, cv::BORDER_REPLICATE);
  cv::copyMakeBorder(wide, wide, 0, 0, 8, 8, cv::BORDER_WRAP);
  const Rays rays[2] = {rays_of(drawn, 0), rays_of(drawn, 1)};
  std::vector<Shot> shots;
  double yaw = 360 * uniform(state);
  for (int i = 0; i < frames; ++i) {
    const Turn turn{yaw, 16 * uniform(state) - 8, 16 * uniform(state) - 8};
    yaw += 3 + 9 * uniform(state);
    Shot shot{{}, rotation(turn)};
    for (int k = 0; k < 2; ++k) shot.lens[k] = expose(wide, rays[k], drawn, k, shot.pose, i * step, state);
    shots.push_back(shot);
  }
  return shots;
}

void encode(std::vector<Shot>& shots, bool stacked, int crf) {
  const cv::Size size = shots.front().lens[0].size();
  const cv::Size both_size = stacked ? cv::Size(size.width, 2 * size.height) : cv::Size(2 * size.width, size.height);
  const std::string file = std::filesystem::temp_directory_path() / ("film" + std::to_string(getpid()) + ".mkv");
  {
    Pipe pipe("ffmpeg -v error -y -f rawvideo -pix_fmt gray -s " + std::to_string(both_size.width) + "x" +
                  std::to_string(both_size.height) + " -r 3 -i - -c:v libx264 -preset veryfast -threads 1 -crf " +
                  std::to_string(crf) + " -pix_fmt yuv420p '" + file + "'",
              "w");
    cv::Mat1b both;
    for (const Shot& shot : shots) {
      if (stacked) {
        cv::vconcat(shot.lens[0], shot.lens[1], both);
      } else {
        cv::hconcat(shot.lens[0], shot.lens[1], both);
      }
      std::fwrite(both.data, 1, both.total(), pipe.file);
    }
  }
  Pipe pipe("ffmpeg -v error -i '" + file + "' -pix_fmt gray -f rawvideo -", "r");
  for (Shot& shot : shots) {
    cv::Mat1b both(both_size);
    if (!read_all(pipe.file, both)) break;
    const cv::Point second = stacked ? cv::Point(0, size.height) : cv::Point(size.width, 0);
    shot.lens[0] = both(cv::Rect({0, 0}, size)).clone();
    shot.lens[1] = both(cv::Rect(second, size)).clone();
  }
  pipe.close();
  std::filesystem::remove(file);
}

}  // namespace biseam::bench
