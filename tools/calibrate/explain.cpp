#include "calibrate/explain.hpp"

#include <cmath>

#include "calibrate/doubt.hpp"

namespace biseam::calibrate {

double Explanations::votes() const {
  constexpr int kPlaces = 32;
  double sums[kPlaces] = {}, sum = 0, square = 0;
  for (std::size_t i = 0; i < still.likelihoods.size(); ++i) {
    const int place = std::clamp(int((still.remainders[i].at.t / (2 * kPi) + 0.5) * kPlaces), 0, kPlaces - 1);
    sums[place] += ground.likelihoods[i] - still.likelihoods[i];
  }
  for (const double part : sums) sum += part / kPlaces;
  for (const double part : sums) square += (part - sum) * (part - sum) / kPlaces;
  return sum * std::sqrt(kPlaces / std::max(1e-9, square));
}

Explanations explain(Problem& problem, const Values& guess, const ShareWork& share_work) {
  constexpr int kDirections = 4;
  Problem turn = problem;
  for (std::size_t p = 0; p < kParameters; ++p) {
    if (p < kCx0 || p > kRoll) turn.prior.deviations[p] = kHeld;
  }
  std::vector<Ground> grounds(1);
  for (const double parallax : {1.0, 6.0}) {  // pixels
    for (int i = 0; i < kDirections; ++i) {
      const SineCosine t = sine_cosine(i * 2 * kPi / kDirections);
      grounds.push_back({parallax * t.cosine, parallax * t.sine, 0});
    }
  }
  const std::size_t pairs = std::size_t(problem.pairs);
  const Values start = solve(turn, guess, std::vector<Ground>(pairs), {3, 0.1, 0.98, true}).values;
  doubt_places(problem.matches, solve(problem, start, std::vector<Ground>(pairs), {2, 0.1, 0.3}));
  std::vector<Solution> solutions(grounds.size());
  share_work(int(grounds.size()), [&](int i) {
    solutions[std::size_t(i)] = solve(problem, start, std::vector<Ground>(pairs, grounds[std::size_t(i)]), {2, 0.1, 0.3});
  });
  double alike = solutions.front().scatter.alike;
  for (const Solution& solution : solutions) alike = std::min(alike, solution.scatter.alike);
  const auto best = std::min_element(solutions.begin() + 1, solutions.end(), [&](const Solution& a, const Solution& b) {
    return Explanations::cost_of(a, alike) < Explanations::cost_of(b, alike);
  });
  return {solutions.front(), *best};
}

Explanations explain_again(Problem& problem, const Explanations& before) {
  constexpr Scatter kScatter{1, 0.1, 0.3};
  const Solution& better = before.better();
  doubt_places(problem.matches, solve(problem, better.values, better.grounds, kScatter));
  return {solve(problem, before.still.values, before.still.grounds, kScatter),
          solve(problem, before.ground.values, before.ground.grounds, kScatter), before.evidence()};
}

cv::Mat1d covariance_of(const Explanations& found) {
  const Solution &better = found.better(), &other = found.is_ground() ? found.still : found.ground;
  const double against = 5 * std::abs(found.evidence() - 1);
  const double share = 1 / (1 + std::exp(against));
  cv::Mat1d covariance = better.covariance.clone();
  for (int i = 0; i < kParameters; ++i) {
    for (int j = 0; j < kParameters; ++j) {
      const std::size_t p = std::size_t(i), q = std::size_t(j);
      covariance(i, j) += share * (other.values[p] - better.values[p]) * (other.values[q] - better.values[q]);
    }
  }
  return covariance;
}

}  // namespace biseam::calibrate
