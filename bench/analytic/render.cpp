// Draws the scene that is known exactly: fisheye0_SIZE.nv12 and fisheye1_SIZE.nv12, rounded to 8 bits, and truth_WIDTH.f32, the
// panorama's luma, Cb and Cr as floats that are not rounded.  Chroma lies in the middle of its four luma samples.
//
//   --pictures FOLDER --width WIDTH --camera virtual|PROFILE
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <thread>
#include <vector>

#include "analytic/scene.hpp"
#include "camera/projector.hpp"
#include "camera/view.hpp"
#include "driver/camera.hpp"
#include "driver/pictures.hpp"

namespace biseam::bench {

namespace {

// Two threads take the rows in turn.
template <class DrawRow>
void for_rows(int rows, DrawRow draw) {
  const auto half = [&](int first) {
    for (int y = first; y < rows; y += 2) draw(y);
  };
  std::thread other(half, 1);
  half(0);
  other.join();
}

// A scene that leaves the codes would be another one.
uint8_t code_of(double value) {
  if (value < 0.5 || value > 254.5) {
    std::fprintf(stderr, "the scene leaves the codes: %.1f\n", value);
    std::exit(1);
  }
  return static_cast<uint8_t>(std::lround(value));
}

Nv12 draw_fisheye(const Scene& scene, const Projector& lens, int size) {
  Nv12 picture(size, size);
  for_rows(size, [&](int y) {
    for (int x = 0; x < size; ++x) {
      picture.luma[static_cast<std::size_t>(y) * size + x] = code_of(scene.luma(lens.unproject(x, y)));
    }
  });
  for_rows(size / 2, [&](int y) {
    for (int x = 0; x < size / 2; ++x) {
      uint8_t* const pair = &picture.chroma[static_cast<std::size_t>(y) * size + 2 * x];
      const Vec3 direction = lens.unproject(2 * x + 0.5, 2 * y + 0.5);
      pair[0] = code_of(scene.cb(direction));
      pair[1] = code_of(scene.cr(direction));
    }
  });
  return picture;
}

std::vector<float> draw_truth(const Scene& scene, int width) {
  const int height = width / 2;
  const View view{width, height, {}};
  const std::size_t luma = static_cast<std::size_t>(width) * height, chroma = luma / 4;
  std::vector<float> truth(luma + 2 * chroma);
  for_rows(height, [&](int y) {
    for (int x = 0; x < width; ++x) {
      truth[static_cast<std::size_t>(y) * width + x] = static_cast<float>(scene.luma(direction_at(view, x, y)));
    }
  });
  for_rows(height / 2, [&](int y) {
    for (int x = 0; x < width / 2; ++x) {
      const Vec3 direction = direction_at(view, 2 * x + 0.5, 2 * y + 0.5);
      const std::size_t at = luma + static_cast<std::size_t>(y) * (width / 2) + x;
      truth[at] = static_cast<float>(scene.cb(direction));
      truth[at + chroma] = static_cast<float>(scene.cr(direction));
    }
  });
  return truth;
}

int run(int argc, char** argv) {
  const Setup setup = read_setup(argc, argv);
  const Camera camera = make_camera(setup);
  const Scene scene(camera.lens[0].p);
  const std::string folder = setup.pictures + "/", size = std::to_string(setup.size());
  for (int i = 0; i < 2; ++i) {
    save(draw_fisheye(scene, Projector(camera, i), setup.size()),
         folder + "fisheye" + std::to_string(i) + "_" + size + ".nv12");
  }
  const std::vector<float> truth = draw_truth(scene, setup.width);
  std::ofstream file(folder + "truth_" + std::to_string(setup.width) + ".f32", std::ios::binary);
  file.write(reinterpret_cast<const char*>(truth.data()), static_cast<std::streamsize>(truth.size() * sizeof(float)));
  return file.flush() ? 0 : 1;
}

}  // namespace

}  // namespace biseam::bench

int main(int argc, char** argv) { return biseam::bench::run(argc, argv); }
