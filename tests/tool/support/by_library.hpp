// Clips stitched with the library's own hands.
#pragma once

#include <gtest/gtest.h>

#include "biseam/panorama.hpp"
#include "media/pixel_format.hpp"
#include "tool/support/walk.hpp"

namespace biseam::test {

inline BiseamPicture record_of(tool::Nv12& picture, AVChromaLocation siting) {
  BiseamPicture record = picture_defaults();
  record.width = picture.width;
  record.height = picture.height;
  record.siting = tool::engine_siting(siting);
  record.planes[0] = picture.luma.data();
  record.planes[1] = picture.chroma.data();
  record.strides[0] = record.strides[1] = picture.width;
  return record;
}

// Lens 1's half of a picture that holds both.
inline BiseamPicture right_half(BiseamPicture half) {
  for (int plane = 0; plane < 2; ++plane) half.planes[plane] = static_cast<std::uint8_t*>(half.planes[plane]) + half.width;
  return half;
}

struct ByLibrary {
  AVChromaLocation siting = AVCHROMA_LOC_LEFT;
  int hold = 1;  // frames with one seam
  bool search = true, steady = true;
  BiseamLight light = BISEAM_LIGHT_OFF;
  BiseamNear near = BISEAM_NEAR_MATCH;
  double rate = 25;  // pictures a second, as clips of a walk have
};

// Frame by frame, raw and one after the other: panoramas of kWalkWidth from pairs side by side.
inline std::string stitch_by_library(std::vector<tool::Nv12> pairs, const ByLibrary& how) {
  BiseamCamera camera = camera_of(kWalkWidth / 2, kWalkWidth / 2, 195);
  for (BiseamLens& lens : camera.lens) lens.p = std::stod(known_lenses()[1]);
  BiseamPanoramaOptions options = panorama_defaults();
  options.width = kWalkWidth;
  options.height = kWalkWidth / 2;
  options.seam = !how.search ? BISEAM_SEAM_MIDDLE : how.steady && how.hold == 1 ? BISEAM_SEAM_STEADY : BISEAM_SEAM_SEARCH;
  options.light = how.light;
  options.near = how.near;
  options.rate = how.rate;
  Panorama panorama = Panorama::open(camera, options);
  EXPECT_TRUE(panorama);
  std::vector<double> seam(std::size_t(panorama.seam_length()));
  std::string all;
  for (std::size_t k = 0; k < pairs.size(); ++k) {
    tool::Nv12 out(kWalkWidth, kWalkWidth / 2);
    BiseamPicture left = record_of(pairs[k], how.siting);
    left.width /= 2;
    BiseamFrame frame = frame_defaults();
    if (k % std::size_t(how.hold) != 0) frame.seam = seam.data();
    EXPECT_FALSE(panorama.stitch({left, right_half(left)}, record_of(out, how.siting), frame));
    panorama.seam(seam.data());
    all += raw_bytes(out);
  }
  return all;
}

}  // namespace biseam::test
