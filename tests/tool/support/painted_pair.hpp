// Painted fisheye pictures through the tool, as raw NV12 on its standard streams.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "picture/encode.hpp"
#include "tool/support/nv12_picture.hpp"
#include "tool/support/places.hpp"
#include "tool/support/process.hpp"
#include "tool/support/scratch_folder.hpp"
#include "tool/support/sphere.hpp"

namespace biseam::test {

inline constexpr int kWidth = 640;  // of the panoramas

// Painted pictures show nothing to find a camera by: without a profile the usual one is what they are painted for.
inline Finished stitch(std::vector<std::string> arguments, const std::string& input = "", const std::string& out_path = "") {
  if (std::find(arguments.begin(), arguments.end(), "--camera") == arguments.end()) {
    arguments.insert(arguments.begin(), {"--camera", "none"});
  }
  arguments.insert(arguments.begin(), {kTool, "stitch"});
  return run(std::move(arguments), input, out_path);
}

inline void expect_refusal(const Finished& finished, int exit_code, const std::string& name) {
  EXPECT_EQ(finished.exit_code, exit_code) << finished.err;
  EXPECT_EQ(finished.out, "");
  EXPECT_EQ(finished.err.rfind("biseam: ", 0), 0u) << finished.err;
  EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 1) << finished.err;
  EXPECT_NE(finished.err.find(name), std::string::npos) << finished.err;
}

inline std::string bytes_of(const tool::Nv12& picture) {
  const auto bytes = tool::encode_raw(picture);
  return {bytes.begin(), bytes.end()};
}

inline tool::Nv12 side_by_side(const tool::Nv12& left, const tool::Nv12& right) {
  tool::Nv12 both(left.width * 2, left.height);
  const std::size_t half = std::size_t(left.width);
  for (std::size_t y = 0; y < std::size_t(left.height); ++y) {
    std::copy_n(&left.luma[y * half], half, &both.luma[y * 2 * half]);
    std::copy_n(&right.luma[y * half], half, &both.luma[y * 2 * half + half]);
  }
  for (std::size_t y = 0; y < std::size_t(left.height / 2); ++y) {
    std::copy_n(&left.chroma[y * half], half, &both.chroma[y * 2 * half]);
    std::copy_n(&right.chroma[y * half], half, &both.chroma[y * 2 * half + half]);
  }
  return both;
}

// A pair of 320 x 320 whose circles of 195 degrees just fit.
inline FisheyeView usual_view() { return {320, 320, 159.5, 159.5, 160 / radians(97.5)}; }

// The largest at which the exact engine finds all it reads within pictures of 320 x 320.
inline double fitting_scale() { return 93; }

inline std::string usual_pair() {
  return bytes_of(side_by_side(paint_fisheye(usual_view(), 0), paint_fisheye(usual_view(), 1)));
}

inline tool::Nv12 panorama_from(const std::string& raw) {
  const ScratchFolder folder;
  write_bytes(folder / "p.nv12", raw);
  return read_nv12(folder / "p.nv12", tool::Size{kWidth, kWidth / 2});
}

// Roots of mean squares and the worst single sample, in code values.
inline void expect_close(const std::string& raw, const tool::Nv12& truth, double mean, int worst) {
  ASSERT_EQ(raw.size(), tool::nv12_bytes({kWidth, kWidth / 2}));
  const tool::Nv12 got = panorama_from(raw);
  EXPECT_LE(difference(got.luma, truth.luma), mean);
  EXPECT_LE(difference(got.chroma, truth.chroma), mean);
  EXPECT_LE(worst_difference(got.luma, truth.luma), worst);
  EXPECT_LE(worst_difference(got.chroma, truth.chroma), worst);
}

// Rounding the fisheyes and the panorama alone makes 0.41.
inline void expect_painted_sphere(const std::string& raw) { expect_close(raw, paint_panorama(kWidth), 0.5, 3); }

// A view that keeps the exact engine's tables inside its picture.
inline FisheyeView fitting_view() { return {320, 320, 159.5, 159.5, fitting_scale()}; }

inline std::string fitting_pair() {
  return bytes_of(side_by_side(paint_fisheye(fitting_view(), 0), paint_fisheye(fitting_view(), 1)));
}

inline std::vector<std::string> fitting_options(std::vector<std::string> more) {
  const std::string p = std::to_string(fitting_scale());
  std::vector<std::string> all = {"-", "--size", "640x320", "-o", "-", "--p0", p, "--p1", p};
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

}  // namespace biseam::test
