#include "calibrate/explain.hpp"

#include <cmath>
#include <utility>

#include "calibrate/doubt.hpp"
#include "calibrate/vectors.hpp"

namespace biseam::calibrate {
namespace {

// From where a ground is sought.
struct Start {
  Values values;
  Ground ground;
  Scatter scatter;
};

// down: where that is.
bool lies_below(const Solution& solution, const Vec3& down) {
  Vec3 sum{0, 0, 0};
  for (const Ground& ground : solution.grounds) sum = sum + ground;
  return dot(sum, down) > 0;
}

// A turn takes over half of what a ground displaces, and takes it away on the other side.  That is undone here, so that the
// ground alone displaces.
Values turned_for(const Ground& ground, Values values, const Problem& problem) {
  cv::Matx22d normal = cv::Matx22d::eye() * 1e-9;
  cv::Vec2d right(0, 0);
  const std::vector<Slopes> slopes = slopes_of(values, problem.frame, problem.matches);
  const std::vector<Remainder> remainders = remainders_of(values, problem.frame, problem.matches);
  for (std::size_t i = 0; i < slopes.size(); ++i) {
    const Vec3 d = ring_direction(remainders[i].at.t, remainders[i].at.b);
    const cv::Vec2d row(slopes[i].b[kYaw], slopes[i].b[kPitch]);
    normal += row * row.t();
    right += 0.5 * dot(d, ground) * row;
  }
  const cv::Vec2d turn = normal.solve(right, cv::DECOMP_CHOLESKY);
  values[kYaw] += turn[0];
  values[kPitch] += turn[1];
  return values;
}

// A ground that is too small to show displaces nevertheless.  What it gains is about half the square of its parallax over that
// one's deviation, so that any is missed for which this is less than must speak for a ground.  Their mean square, over the
// square of the parallax that was found; 1 at most.  The gain itself tells the deviation of one that is sought where it is
// expected; one that is sought anywhere gains by chance as well.
double hidden_share(const Explanations& found) {
  if (found.is_expected) return Explanations::kExpectedGain / std::max(3 * found.gain(), Explanations::kExpectedGain);
  const GroundMean mean = mean_ground(found.ground);
  const double square = 2 * Explanations::kLeastGain * mean.deviation * mean.deviation / 3;
  return square < mean.parallax * mean.parallax ? square / (mean.parallax * mean.parallax) : 1;
}

// From a solution, by other matches or otherwise explained.
Solution solve_again(const Problem& problem, const Solution& from, bool scattered) {
  constexpr double kUsuallyBeside = 0.3;
  Scatter scatter{2 * from.scatter.noise, 0.1, 0.3};
  scatter.scattered = scattered;
  if (!scattered) return solve(problem, from.values, from.grounds, scatter);
  Problem beside = problem;
  beside.prior.deviations[kBesideX] = beside.prior.deviations[kBesideY] = kUsuallyBeside;
  return solve(beside, from.values, from.grounds, scatter);
}

// Where infinity lies among things at all distances is a guess that they all share, so that the values are no better known than
// they would be if what is not far were noise.
cv::Mat1d covariance_of_scattered(const Explanations& found) {
  const Scatter &scatter = found.scattered->scatter, &otherwise = (found.is_ground() ? found.ground : found.still).scatter;
  const double noisier = otherwise.noise / scatter.noise, more_alike = otherwise.alike / scatter.alike;
  return std::max(1.0, noisier * noisier * more_alike) * found.scattered->covariance;
}

}  // namespace

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
  constexpr double kUnexpected = 5;  // of the cost's logarithms: so much must speak for a ground that is not below
  Problem turn = problem;
  for (std::size_t p = 0; p < kParameters; ++p) {
    if (p < kCx0 || p > kRoll) turn.prior.deviations[p] = kHeld;
  }
  const std::size_t pairs = std::size_t(problem.pairs);
  const std::vector<Ground> none(pairs);
  const Values start = solve(turn, guess, none, {3, 0.1, 0.98, true}).values;
  doubt_places(problem.matches, solve(problem, start, none, {2, 0.1, 0.3}));
  const Solution still = solve(problem, start, none, {2, 0.1, 0.3});
  const Vec3& down = problem.prior.down;
  const bool is_known = dot(down, down) > 0;
  std::vector<Start> starts;
  const auto add_turned = [&](const Ground& ground) {
    starts.push_back({turned_for(ground, still.values, problem), ground, {2 * still.scatter.noise, 0.1, 0.3}});
  };
  for (int i = 0; i < 4; ++i) {
    const SineCosine t = sine_cosine(i * kPi / 2);
    const Ground ground{4 * t.cosine, 4 * t.sine, 0};  // pixels
    starts.push_back({start, ground, {2, 0.1, 0.3}});
    if (!is_known) add_turned(ground);
  }
  if (is_known) {
    for (const double parallax : {2.0, 8.0}) add_turned(parallax * down);
  }
  std::vector<Solution> solutions(starts.size());
  share_work(int(starts.size()), [&](int i) {
    const Start& from = starts[std::size_t(i)];
    solutions[std::size_t(i)] = solve(problem, from.values, std::vector<Ground>(pairs, from.ground), from.scatter);
  });
  double alike = still.scatter.alike;
  for (const Solution& solution : solutions) alike = std::min(alike, solution.scatter.alike);
  const auto cost = [&](const Solution& solution) {
    return Explanations::cost_of(solution, alike) + (is_known && !lies_below(solution, down) ? kUnexpected : 0);
  };
  const auto best = std::min_element(solutions.begin(), solutions.end(),
                                     [&](const Solution& a, const Solution& b) { return cost(a) < cost(b); });
  return {still, *best, is_known && lies_below(*best, down)};
}

Explanations explain_again(Problem& problem, const Explanations& before, const ShareWork& share_work) {
  const Solution& better = before.better();
  const auto again = [&](const Solution& solution) { return solve_again(problem, solution, solution.scatter.scattered); };
  doubt_places(problem.matches, again(better));
  if (before.scattered) {
    Explanations after = before;
    after.scattered = again(better);
    return after;
  }
  Solution solutions[2];
  share_work(2, [&](int i) { solutions[i] = again(i == 0 ? before.still : before.ground); });
  return {std::move(solutions[0]), std::move(solutions[1]), before.is_expected, before.evidence()};
}

bool explain_scattered(const Problem& problem, Explanations& found) {
  // Of the matches that aren't wrong.  Of those of rendered cameras over a ground it takes a twentieth for such things, the
  // least there can be; of real woods and slopes a quarter and more.
  constexpr double kLeastNear = 0.15;
  const Solution &before = found.better(), scattered = solve_again(problem, before, true);
  const double alike = std::max(before.scatter.alike, scattered.scatter.alike);
  const double gain = Explanations::cost_of(before, alike) - Explanations::cost_of(scattered, alike);
  if (gain < 0 || scattered.scatter.near < kLeastNear) return false;
  found.scattered = scattered;
  return true;
}

GroundMean mean_ground(const Solution& solution) {
  const int pairs = int(solution.grounds.size());
  Vec3 sum{0, 0, 0};
  for (const Ground& ground : solution.grounds) sum = sum + ground;
  if (!(dot(sum, sum) > 0)) return {};
  const Vec3 direction = unit(sum);
  const double d[3] = {direction.x, direction.y, direction.z};
  cv::Mat1d along(pairs, 3 * pairs, 0.0);
  for (int i = 0; i < pairs; ++i) {
    for (int j = 0; j < 3; ++j) along(i, 3 * i + j) = d[j];
  }
  const cv::Mat1d spread = along * solution.covariance(cv::Rect(kParameters, kParameters, 3 * pairs, 3 * pairs)) * along.t();
  cv::Mat1d weights(1, pairs);
  double all = 0;
  for (int i = 0; i < pairs; ++i) all += weights(0, i) = 1 / spread(i, i);
  GroundMean mean;
  for (int i = 0; i < pairs; ++i) {
    weights(0, i) /= all;
    mean.parallax += weights(0, i) * dot(direction, solution.grounds[std::size_t(i)]);
  }
  mean.deviation = std::sqrt(cv::Mat1d(weights * spread * weights.t())(0, 0));
  return mean;
}

cv::Mat1d covariance_of(const Explanations& found) {
  if (found.scattered) return covariance_of_scattered(found);
  const Solution &better = found.better(), &other = found.is_ground() ? found.still : found.ground;
  const double against = 5 * std::abs(found.evidence() - 1), undecided = 1 / (1 + std::exp(against));
  const double share = found.is_ground() ? undecided : std::max(undecided, hidden_share(found));
  cv::Mat1d covariance = better.covariance.clone();
  for (int i = 0; i < kParameters; ++i) {
    for (int j = 0; j < kParameters; ++j) {
      const std::size_t p = std::size_t(i), q = std::size_t(j);
      const double apart = (other.values[p] - better.values[p]) * (other.values[q] - better.values[q]);
      covariance(i, j) += share * (other.covariance(i, j) + apart - better.covariance(i, j));
    }
  }
  return covariance;
}

}  // namespace biseam::calibrate
