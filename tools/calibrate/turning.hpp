// Things followed from one pair of pictures to the next, while the camera turns.
#pragma once

#include <vector>

#include "calibrate/align.hpp"

namespace biseam::calibrate {

// One thing, in a lens's picture and in its next one.
struct Track {
  cv::Point2d at[2];
};

// Two pictures of a lens between which the camera turned.  Each lens has its own, as they don't stand at one place.
struct Turning {
  int pair;  // the first picture is of this pair, the second one of the next
  int lens;
  Matrix3 rotation;        // of far things' directions, from the first world to the second
  Vec3 drift = {0, 0, 0};  // radians by which a ground straight below is displaced, as the lens moved as well
  std::vector<Track> tracks;
};

// Where pairs that follow each other show the same things, turned by a few degrees at least; those of both lenses, or of none.
std::vector<Turning> find_turnings(const std::vector<Pair>& pairs, const Values& values, const Frame& frame,
                                   const ShareWork& share_work);

// Tracks as the rotations predict them, to fractions of a pixel.  scale: pixels per radian of the windows that are compared; a
// few of them is how far off a prediction may be.
void track_turnings(const std::vector<Pair>& pairs, const Values& values, const Frame& frame, double scale,
                    std::vector<Turning>& turnings, const ShareWork& share_work);

}  // namespace biseam::calibrate
