#include "driver/camera.hpp"

#include <algorithm>
#include <iterator>

namespace biseam::bench {

namespace {

constexpr int kMeasuredSize = 960;

Camera real_camera() {
  Camera camera;
  Lens &a = camera.lens[0], &b = camera.lens[1];
  a.width = a.height = kMeasuredSize;
  a.fov = 206;
  b = a;
  a.cx = 475;
  a.cy = 471;
  a.p = 281.5;
  a.k[0] = -0.004;
  a.k[1] = 0.001;
  b.cx = 476;
  b.cy = 479.8;
  b.p = 278.5;
  b.k[0] = -0.006;
  b.k[1] = 0.0012;
  b.turn = {-0.1, 1.48, -0.43};
  return camera;
}

}  // namespace

Camera make_camera(const Setup& setup) {
  const int size = setup.size();
  Camera camera;
  if (setup.camera == "real") {
    camera = real_camera();
    for (Lens& lens : camera.lens) lens = scaled(lens, size, size);
  } else {
    for (Lens& lens : camera.lens) lens = usual_lens(size, size, kFieldOfView);
  }
  return camera;
}

BiseamCamera make_record(const Camera& camera) {
  BiseamCamera record = biseam_camera_of(camera.lens[0].width, camera.lens[0].height, camera.lens[0].fov);
  for (int i = 0; i < 2; ++i) {
    const Lens& lens = camera.lens[i];
    BiseamLens& to = record.lens[i];
    to.cx = lens.cx;
    to.cy = lens.cy;
    to.p = lens.p;
    std::copy(std::begin(lens.k), std::end(lens.k), to.k);
    to.fov = lens.fov;
    to.turn = {lens.turn.yaw, lens.turn.pitch, lens.turn.roll};
  }
  return record;
}

}  // namespace biseam::bench
