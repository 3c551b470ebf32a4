#pragma once

#include <string>

#include "biseam/records.h"

namespace biseam::bench {

// What is stitched: the camera of `biseam scene`, whose image circles touch the edges of square pictures.
struct Setup {
  std::string pictures;  // folder of fisheye0_SIZE.nv12 and fisheye1_SIZE.nv12
  std::string isa = "best";
  std::string camera = "virtual";  // or a profile, for the ring engine
  std::string quality = "good";    // of the ring engine: fast, good, best
  std::string format = "nv12";     // likewise: nv12, p010
  std::string light = "off";       // likewise: off, match
  std::string near = "off";        // likewise: off, on
  std::string seams = "free";      // likewise: free, steady
  std::string interp = "linear";   // of v360
  int threads = 2;                 // of the ring engine and v360
  int width = 3840;                // of the panorama, twice that of a picture
  int feather = 32, trans_width = 64, findpath_width = 64, pyr_level = 5;
  float inv_scale = 4;

  int size() const { return width / 2; }
};

inline constexpr double kFieldOfView = 195;  // degrees

// From --NAME VALUE pairs; says what is wrong and ends the program otherwise.
Setup read_setup(int argc, char** argv);

StitchConfig make_config(const Setup& setup);

}  // namespace biseam::bench
