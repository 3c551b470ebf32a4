// How far a camera that was found is from the true one.
#pragma once

#include <opencv2/core.hpp>

#include "cameras/film.hpp"

namespace biseam::bench {

struct Seams {
  double all, worst;  // root mean squares, pixels of a panorama 3840 wide: over the ring, in the worst eighth of it
};

// Where both lenses put far things on the ring, by the camera that was found.
Seams seams_of(const Camera& truth, const Camera& found);

// Root mean square over both lenses' whole fields, as near as a rotation of each lens comes to it; pixels of a panorama 3840
// wide.
double straightness_of(const Camera& truth, const Camera& found);

// Decibels, in the overlap, between a panorama of far things and one that is stitched of a shot of it.
struct Likeness {
  double by_truth, by_found;
};

// The found camera is turned as a whole to where the true one sees the ring.
Likeness likeness_of(const cv::Mat1b& panorama, const Drawn& truth, const Camera& found, std::uint64_t seed);

}  // namespace biseam::bench
