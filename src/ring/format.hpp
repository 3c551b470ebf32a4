// How the formats of pictures are laid out.
#pragma once

#include "ring/positions.hpp"
#include "ring/sample/sample_row.hpp"

namespace biseam::ring {

// Brightness, and two differences from it; or any three.
inline constexpr int kMostPlanes = 3;

struct PlaneFormat {
  SampleType type;
  PlaneGrid grid;
  int channels[2];  // of what lies in a sample or pair: 0 luma, 1 Cb, 2 Cr
};

struct PictureFormat {
  int planes;
  int bits, shift;  // see SampleSource
  bool rgb;         // three planes of anything, green first: none of them is chroma
  PlaneFormat plane[kMostPlanes];
};

// format, siting: codes of biseam/panorama.h.  False for what is none.
bool describe_format(int format, int siting, PictureFormat& described) noexcept;

// Samples, or pairs, of a plane that comes with so many luma samples.
constexpr int plane_size(int luma, int grid_bits) noexcept { return (luma + (1 << grid_bits) - 1) >> grid_bits; }

}  // namespace biseam::ring
