#pragma once

#include "camera/camera.hpp"

namespace biseam::test {

// Much like the pair of profiles/city_square.toml: pictures of 960 x 960 whose circles are cut off on all sides.
inline Camera city_square() {
  Camera camera;
  Lens& a = camera.lens[0];
  a.width = a.height = 960;
  a.cx = 475;
  a.cy = 471;
  a.p = 279.7;
  a.fov = 206;
  Lens& b = camera.lens[1];
  b = a;
  b.cx = 476;
  b.cy = 479.8;
  b.p = 276.1;
  b.turn = {-0.1, 1.48, -0.43};
  return camera;
}

// The same pictures under everything the model has.
inline Camera bent_pair() {
  Camera camera = city_square();
  Lens &a = camera.lens[0], &b = camera.lens[1];
  a.k[0] = 0.01;
  a.k[1] = -0.004;
  a.k[2] = 0.0008;
  a.mount = 90;
  a.turn = {0.3, -0.7, 0.2};
  b.k[0] = -0.02;
  b.k[1] = 0.003;
  b.k[2] = -0.0005;
  b.mount = 270;
  camera.baseline = 0.03;
  return camera;
}

// For pictures of another size.
inline Camera scaled_camera(Camera camera, int side) {
  for (Lens& lens : camera.lens) lens = scaled(lens, side, side);
  return camera;
}

}  // namespace biseam::test
