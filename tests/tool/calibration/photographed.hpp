// One painted place as a camera sees it, and the tool run on its pictures.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "picture/picture.hpp"
#include "tool/calibrate/world.hpp"
#include "tool/support/places.hpp"
#include "tool/support/process.hpp"

namespace biseam::tool {

inline constexpr int kSide = 320;  // of a lens's picture

inline Nv12 gray(int width, int height) {
  Nv12 picture(width, height);
  std::fill(picture.chroma.begin(), picture.chroma.end(), 128);
  return picture;
}

inline Nv12 lens_picture(const cv::Mat1b& luma) {
  Nv12 picture = gray(luma.cols, luma.rows);
  std::copy(luma.begin(), luma.end(), picture.luma.begin());
  return picture;
}

inline Nv12 both_circles(const calibrate::Pair& pair) {
  cv::Mat both;
  cv::hconcat(pair.lens[0], pair.lens[1], both);
  return lens_picture(both);
}

inline const calibrate::Pair& photographed() {
  static const calibrate::Pair pair = calibrate::photograph(calibrate::some_camera(kSide));
  return pair;
}

// Lens 1 shows nothing.
inline calibrate::Pair covered() {
  calibrate::Pair pair = photographed();
  pair.lens[1] = cv::Mat1b(kSide, kSide, static_cast<unsigned char>(2));
  return pair;
}

inline test::Finished run_tool(const std::string& command, std::vector<std::string> arguments, const std::string& input = "") {
  arguments.insert(arguments.begin(), {test::kTool, command});
  return test::run(std::move(arguments), input);
}

inline void expect_refused(const test::Finished& finished, int exit_code, const std::string& output) {
  EXPECT_EQ(finished.exit_code, exit_code) << finished.err;
  EXPECT_EQ(finished.out, "");
  EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 1) << finished.err;
  EXPECT_FALSE(std::filesystem::exists(output));
}

inline bool tells(const test::Finished& finished, const std::string& what) {
  return finished.err.find(what) != std::string::npos;
}

}  // namespace biseam::tool
