#include "calibrate/scatter.hpp"

#include <algorithm>
#include <cmath>

namespace biseam::calibrate {
namespace {

// Of the normal distribution.
double density(double z) { return std::exp(-0.5 * z * z) * 0.3989422804014327; }
double below(double z) { return 0.5 * std::erfc(-z * 0.7071067811865476); }

// How rarely something far is seen where the ground should be.  Half would make a ground where nothing is seen the likelier
// one.
constexpr double kFarOverGround = 0.03;

struct Densities {
  double far, ground, near, wrong;
  double sum() const { return far + ground + near + wrong; }
};

Densities densities_of(const Observed& observed, const Scatter& scatter) {
  const double s = observed.b_noise, b = observed.off.b;
  const double t = (1 - scatter.wrong) * density(observed.off.t / observed.t_noise) / observed.t_noise;
  const double still = t * (1 - scatter.near) / s;
  const double near = below(b / s) * below((kMostNear - b) / s) / kMostNear;
  return {kFarOverGround * still * density(b / s), (1 - kFarOverGround) * still * density((b - observed.parallax) / s),
          t * scatter.near * near, scatter.wrong / kWrongArea};
}

}  // namespace

Share share_of(const Observed& observed, const Scatter& scatter) {
  const Densities densities = densities_of(observed, scatter);
  const double sum = densities.sum();
  return {densities.far / sum, densities.ground / sum, densities.near / sum};
}

double log_likelihood(const Observed& observed, const Scatter& scatter) {
  return std::log(densities_of(observed, scatter).sum());
}

Pull near_pull(double b, double noise, double share) {
  const double z = b / noise;
  const double ratio = z < -8 ? -z : density(z) / below(z);
  return {share * std::max(0.0, ratio * (ratio + z)) / (noise * noise), -share * ratio / noise};
}

}  // namespace biseam::calibrate
