// Whether matches are displaced by a near ground.
#pragma once

#include <algorithm>
#include <optional>

#include "calibrate/calibrate.hpp"
#include "calibrate/solve.hpp"

namespace biseam::calibrate {

// Things are far away but for some that are near by chance, or near things lie on a ground.
struct Explanations {
  Solution still, ground;
  bool is_expected = false;  // the ground lies below, which is known
  double earlier = 1e9;      // evidence, by other matches of the same pictures
  // Things lie at all distances, as in a wood, whether there is a ground or not; only where that is clearly likelier than both.
  std::optional<Solution> scattered{};

  // How much likelier the ground makes the matches, as a logarithm.
  double gain() const {
    const double alike = std::min(still.scatter.alike, ground.scatter.alike);
    return cost_of(still, alike) - cost_of(ground, alike);
  }
  // By how many standard deviations that differs from nothing, if places of the ring vote independently: a few bad places look
  // like a ground, too.
  double votes() const;
  // Above 1: there is a ground, by any matches of it.  What strains what is known beforehand is no fault of bad places, so that
  // it counts twice.
  double evidence() const { return std::min(earlier, own_evidence()); }
  double own_evidence() const {
    if (is_expected) return gain() / kExpectedGain;
    return std::max((gain() + still.prior_cost - ground.prior_cost) / kSureGain,
                    std::min(gain() / kLeastGain, votes() / kLeastVotes));
  }
  bool is_ground() const { return evidence() > 1; }
  const Solution& better() const { return scattered ? *scattered : is_ground() ? ground : still; }

  // Solutions that take their matches for more or less alike don't compare as they are.
  static double cost_of(const Solution& solution, double alike) {
    return solution.prior_cost + (solution.cost - solution.prior_cost) * solution.scatter.alike / alike;
  }
  // Nearly every camera stands over a ground, so that little must speak for one that lies below, in however many pairs.  One
  // where there is none costs a tenth of a pixel at the seams; none where there is one, pixels.
  static constexpr double kExpectedGain = 2;
  // Cameras without a baseline reached 12, those with 3 mm over a ground 1.5 m below 20, and with 15 mm more than 100.
  static constexpr double kSureGain = 30, kLeastGain = 12, kLeastVotes = 2.5;
};

// Whether the ground is far and lens 1 turned, or near and lens 1 straight, is hard to tell from one pair, and the way from one
// to the other is long.  The turn is therefore found first from what parallax does not reach: places along t, and that nothing
// is beyond infinity, or from what is found without a ground.  Then the likeliest of several grounds, below or above: turned by
// its parallax, one looks much like the other opposite.  Puts places in doubt, as doubt_places().
Explanations explain(Problem& problem, const Values& guess, const ShareWork& share_work);

// Again with better matches, which explain() or this explained `before` as they were then.
Explanations explain_again(Problem& problem, const Explanations& before, const ShareWork& share_work);

// Whether things lie at all distances.  Lens 1 may then stand beside the axis of lens 0, which near things show.
bool explain_scattered(const Problem& problem, Explanations& found);

// The grounds of all pairs as one, in the direction of their sum, each counting as much as it is known; pixels.
struct GroundMean {
  double parallax = 0, deviation = 0;
};
GroundMean mean_ground(const Solution& solution);

// Of both explanations together, about the better one, each counting as far as it is not ruled out.
cv::Mat1d covariance_of(const Explanations& found);

}  // namespace biseam::calibrate
