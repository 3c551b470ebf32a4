// The camera that explains the matches best.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "calibrate/scatter.hpp"

namespace biseam::calibrate {

// What is known before any match.
struct Prior {
  Values values{}, deviations{};  // a deviation of 0 says nothing; a parameter that is held has kHeld
  double circle[2] = {0, 0};      // radii of the rims in pixels; 0: not found
  double circle_deviation = 0;    // of their logarithms
  Vec3 down{0, 0, 0};             // unit vector to where a ground is expected; 0: anywhere
  // Of the first values: half of it times the square of how far they are from others is added to the cost; or empty.
  cv::Mat1d stiffness;
  Values others{};
};
inline constexpr double kHeld = 1e-9;

// A flat ground, or wall, of one pair: direction * ground is the parallax there, in pixels, where it is positive.
using Ground = Vec3;
double parallax_of(const Ground& ground, const RingPoint& at);

struct Solution {
  Values values{};
  std::vector<Ground> grounds;  // of each pair
  Scatter scatter;
  double cost = 0, prior_cost = 0;  // all of it, and what the prior has of it
  cv::Mat1d covariance;             // of the values, then of the grounds
  std::vector<Remainder> remainders;
  std::vector<Share> shares;
  std::vector<double> likelihoods;  // logarithms, of the matches
  std::vector<double> along;        // what is left of each match along the ring, beyond what nearness explains
};

struct Problem {
  Frame frame;
  std::vector<Match> matches;
  int pairs = 1;
  Prior prior;
  double alike_error = 0;  // pixels of a 3840 panorama by which neighbours are off together, whatever their number
};

// From a guess; the scatter is narrowed from its noise to what is found.
Solution solve(const Problem& problem, const Values& guess, const std::vector<Ground>& grounds, Scatter scatter);

}  // namespace biseam::calibrate
