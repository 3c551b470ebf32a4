#include "calibrate/scatter.hpp"

#include <algorithm>
#include <cmath>
#include <span>

namespace biseam::calibrate {
namespace {

// Of the normal distribution.
double density(double z) { return std::exp(-0.5 * z * z) * 0.3989422804014327; }
double below(double z) { return 0.5 * std::erfc(-z * 0.7071067811865476); }

// From z - length to z.
double between(double z, double length) {
  return 2 * z > length ? below(length - z) - below(-z) : below(z) - below(z - length);
}

// Pixels up to which near things are equally likely: where nothing is known, anywhere; where they lie at any distance, as many
// up to each of these.
constexpr double kWidths[] = {kMostNear, 2, 9};
std::span<const double> widths_of(const Scatter& scatter) { return {kWidths, scatter.scattered ? 3u : 1u}; }

// How rarely something far is seen where the ground should be.  Half would make a ground where nothing is seen the likelier
// one.
constexpr double kFarOverGround = 0.03;

struct Densities {
  double far, ground, near, wrong;
  double sum() const { return far + ground + near + wrong; }
};

Densities densities_of(const Observed& observed, const Scatter& scatter) {
  const double s = observed.b_noise, b = observed.off.b;
  const auto along = [&](double displaced) {  // pixels across the ring, by nearness
    return (1 - scatter.wrong) * density((observed.off.t - observed.slant * displaced) / observed.t_noise) / observed.t_noise;
  };
  const double still = (1 - scatter.near) / s, ground = observed.parallax;
  const std::span<const double> widths = widths_of(scatter);
  double near = 0;
  for (const double width : widths) near += between(b / s, width / s) / (width * double(widths.size()));
  return {kFarOverGround * along(0) * still * density(b / s),
          (1 - kFarOverGround) * along(ground) * still * density((b - ground) / s), along(b) * scatter.near * near,
          scatter.wrong / kWrongArea};
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

Pull near_pull(double b, double noise, double share, const Scatter& scatter) {
  Pull sum{0, 0};
  double all = 0;
  for (const double width : widths_of(scatter)) {
    // What is as near as anything may be yet nearer.  Otherwise the end that is closer counts.
    const double length = width < kMostNear ? width / noise : 1e6, z = b / noise;
    const double near = std::min(z, length - z), side = 2 * z > length ? -1 : 1;
    const double inside = between(near, length);
    double ratio = -near, bend = 1;
    if (near > -8) {
      ratio = (density(near) - density(near - length)) / inside;
      bend = ratio * ratio + (near * density(near) - (near - length) * density(near - length)) / inside;
    }
    const double counts = std::max(inside / width, 1e-300);
    all += counts;
    sum.stiffness += counts * std::max(0.0, bend);
    sum.slope -= counts * side * ratio;
  }
  return {share * sum.stiffness / (all * noise * noise), share * sum.slope / (all * noise)};
}

}  // namespace biseam::calibrate
