#include "driver/camera.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "profile/read.hpp"

namespace biseam::bench {

namespace {

profile::CameraSettings read_profile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  if (!file) {
    std::fprintf(stderr, "can't read %s\n", name.c_str());
    std::exit(1);
  }
  return profile::read({std::istreambuf_iterator<char>(file), {}}, name);
}

// As far as the profile in bench/ goes.
Camera camera_of_profile(const std::string& name) {
  const profile::CameraSettings settings = read_profile(name);
  Camera camera;
  for (int i = 0; i < 2; ++i) {
    const profile::LensSettings& from = settings.lens[i];
    Lens& lens = camera.lens[i];
    lens.width = settings.picture.value().width;
    lens.height = settings.picture.value().height;
    lens.cx = from.cx.value();
    lens.cy = from.cy.value();
    lens.p = from.p.value();
    std::copy_n(from.k.value().begin(), 3, lens.k);
    lens.fov = from.fov.value();
    lens.turn = {from.yaw.value_or(0), from.pitch.value_or(0), from.roll.value_or(0)};
    if (from.vignette) std::copy(from.vignette->begin(), from.vignette->end(), lens.vignette);
    if (from.gain) std::copy(from.gain->begin(), from.gain->end(), lens.gain);
  }
  return camera;
}

}  // namespace

Camera make_camera(const Setup& setup) {
  const int size = setup.size();
  Camera camera;
  if (setup.camera != "virtual") {
    camera = camera_of_profile(setup.camera);
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
    to.mount = lens.mount;
    to.turn = {lens.turn.yaw, lens.turn.pitch, lens.turn.roll};
    std::copy(std::begin(lens.vignette), std::end(lens.vignette), to.vignette);
    std::copy(std::begin(lens.gain), std::end(lens.gain), to.gain);
  }
  return record;
}

}  // namespace biseam::bench
