// Where the seams of a panorama run, and how far they move.
#pragma once

#include <vector>

#include "biseam/stitcher.hpp"

namespace biseam::tool {

// Whether a pixel of a band lies on the side of the seam that the weights count for.
bool is_counted_side(const BandView& band, int x, int y);

// For every row of both bands, band 0 first: how many columns of the band lie left of its seam.
using SeamPath = std::vector<int>;
SeamPath seam_path(const Stitcher& stitcher);

// Mean difference of two paths, columns.
double seam_movement(const SeamPath& from, const SeamPath& to);

}  // namespace biseam::tool
