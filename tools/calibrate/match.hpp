// The same things in the strips of both lenses.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "calibrate/strip.hpp"

namespace biseam::calibrate {

// Pixels of a strip.
struct StripMatch {
  cv::Point2d at[2];
  double score;           // correlation of both windows, at most 1
  cv::Point2d deviation;  // of at[1] - at[0], but for a factor that all matches share
};

struct Search {
  int around;       // columns to either side
  int up, down;     // rows; near things lie further down in the strip of lens 1
  int half_window;  // of the correlated windows
  int wanted;       // matches all round
  double least_score;
  bool fine;  // to fractions of a pixel, checked from lens 1 back to lens 0
};

// Spread round the ring: each of its sectors gives its share of corners, as far as it has so many.
std::vector<StripMatch> find_matches(const Strip& first, const Strip& second, const StripSize& size, const Search& search);

// Where the things of a match lie in the recorded pictures.
Match recorded(const StripMatch& match, const StripSize& size, const Projector (&lens)[2], int pair);

struct Tracked {
  double score = -1;      // correlation of the windows; below 0 where one left the strip, or did not come to rest
  cv::Point2d deviation;  // by what differs between the windows, and how sharp their edges are
};
// Moves `to` to where the window of `second` shows what that of `first` shows at `from`.
Tracked track(const cv::Mat1f& first, cv::Point2d from, const cv::Mat1f& second, cv::Point2d& to, int half_window);

}  // namespace biseam::calibrate
