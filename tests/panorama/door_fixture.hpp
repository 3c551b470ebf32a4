#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "biseam/panorama.h"
#include "support/own_picture.hpp"

namespace biseam::test {

// A small camera that breaks no rule, and frames for it.
class Door {
 public:
  BiseamCamera camera = biseam_camera_of(96, 96, 200);
  BiseamPanoramaOptions options = biseam_panorama_defaults();
  BiseamFrame frame = biseam_frame_defaults();

  Door() {
    options.width = 192;
    options.height = 96;
    options.threads = 1;
  }

  OwnPicture fisheye(int lens) const {
    OwnPicture picture(options.format, camera.lens[lens].width, camera.lens[lens].height);
    picture.fill(
        [&](int c, int x, int y) { return (40 + 30 * lens + (x * (3 + c) + y * 5) % 150) << (picture.format().bits - 8); });
    return picture;
  }
  OwnPicture panorama() const { return OwnPicture(options.format, options.width, options.height); }
};

// Closes what it owns.
struct Handle {
  BiseamPanorama* panorama = nullptr;

  explicit Handle(BiseamPanorama* opened) : panorama(opened) {}
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() { biseam_panorama_close(panorama); }
};

inline void expect_error(const BiseamError& error, BiseamErrorCode code, const std::string& text) {
  EXPECT_EQ(error.code, code);
  EXPECT_EQ(error.text, text);
}

inline BiseamError unwritten() { return {-1, "not written"}; }

// One field that breaks its rule, and what is said of it.
template <class Subject>
struct Rule {
  std::string text;
  std::function<void(Subject&)> break_it;
};

}  // namespace biseam::test
