#include "calibrate/solve.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "calibrate/normal.hpp"
#include "calibrate/vectors.hpp"

namespace biseam::calibrate {
namespace {

// What a ground's parallax is before anything is known: none, or the rarer the larger.  It costs so much a pixel below the
// camera, above or beside it, and along the axis, as a ground is nearly level; without knowing what is below, the last of them
// anywhere.
constexpr double kBelow = 0.02, kElsewhere = 1, kAhead = 4, kAnywhere = 0.05;
constexpr double kSoft = 0.2;  // pixels, about which the cost bends

Pull ground_pull(double parallax, double price) {
  const double length = std::hypot(parallax, kSoft);
  return {price / length, price * parallax / length};
}
double ground_cost(double parallax, double price) { return price * (std::hypot(parallax, kSoft) - kSoft); }

double slant_of(const Values& values, double t) {
  if (values[kBesideX] == 0 && values[kBesideY] == 0) return 0;  // held, as nearly always: sines of every match are expensive
  const SineCosine at = sine_cosine(t);
  return values[kBesideX] * at.sine - values[kBesideY] * at.cosine;
}

// Directions that have a price of their own, with the prices to either side.
struct Axis {
  Vec3 along;
  double forwards, backwards;
  double price(double parallax) const { return parallax > 0 ? forwards : backwards; }
};

std::array<Axis, 3> ground_axes(const Vec3& down) {
  if (down.x == 0 && down.y == 0)
    return {{{{1, 0, 0}, kAnywhere, kAnywhere}, {{0, 1, 0}, kAnywhere, kAnywhere}, {{0, 0, 1}, kAnywhere, kAnywhere}}};
  return {{{down, kBelow, kElsewhere}, {{-down.y, down.x, 0}, kElsewhere, kElsewhere}, {{0, 0, 1}, kAhead, kAhead}}};
}

// Logarithm of the measured radius of a rim / the one that the values give.
double rim_residual(const Values& values, const Problem& problem, int lens) {
  const Camera camera = camera_of(values, problem.frame);
  return std::log(problem.prior.circle[lens] / radius(camera.lens[lens], values[kRim] * kDegree));
}

// Where the radius hardly grows any more, any angle would do for what is seen there, and all matches would agree.
bool is_lens(const Values& values, const Frame& frame) {
  constexpr double kLeast = 0.2;  // of the mean growth up to there
  const double rim = values[kRim] * kDegree;
  for (const Lens& lens : camera_of(values, frame).lens) {
    if (!(radius_slope(lens, rim) > kLeast * radius(lens, rim) / rim)) return false;
  }
  return true;
}

struct State {
  Values values;
  std::vector<Ground> grounds;
};

// Of a match, as far as it isn't wrong: what nearness doesn't explain.
double along_of(const Observed& seen, const Share& share) {
  return share.good() * seen.off.t - seen.slant * (share.ground * seen.parallax + share.near * seen.off.b);
}

class Solver {
 public:
  Solver(const Problem& problem, State state) : problem_(problem), state_(std::move(state)) {
    remainders_ = remainders_of(state_.values, problem_.frame, problem_.matches);
  }

  // Levenberg's steps down the cost until they gain little.  What may be far or near is pulled less than it will be, so that a
  // step that is good is tried at twice its length as well, and again.
  void descend(const Scatter& scatter, int most_steps) {
    constexpr int kMostAttempts = 8, kMostDoublings = 6;
    constexpr double kLeastGain = 1e-3;
    double damping = 1e-6;
    cost_ = cost_of(state_, remainders_, scatter);
    for (int step = 0; step < most_steps; ++step) {
      const Normal normal = equations(scatter);
      const double before = cost_;
      bool better = false;
      for (int attempt = 0; attempt < kMostAttempts && !better; ++attempt) {
        cv::Mat1d change = step_of(normal, damping);
        better = try_step(change, scatter);
        damping = better ? 0.1 * damping : 10 * std::max(damping, 1e-7);
        for (int i = 0; better && i < kMostDoublings && try_step(change, scatter); ++i) change *= 2;
      }
      if (!better || before - cost_ < kLeastGain) break;
    }
  }

  const State& state() const { return state_; }
  double cost() const { return cost_; }
  double prior_cost() const { return prior_cost(state_); }
  const std::vector<Remainder>& remainders() const { return remainders_; }

  std::vector<Share> shares(const Scatter& scatter) const {
    std::vector<Share> shares;
    shares.reserve(remainders_.size());
    for (std::size_t i = 0; i < remainders_.size(); ++i) shares.push_back(share_of(observed(i, scatter), scatter));
    return shares;
  }

  std::vector<double> likelihoods(const Scatter& scatter) const {
    std::vector<double> likelihoods;
    likelihoods.reserve(remainders_.size());
    for (std::size_t i = 0; i < remainders_.size(); ++i) likelihoods.push_back(log_likelihood(observed(i, scatter), scatter));
    return likelihoods;
  }

  std::vector<double> along(const Scatter& scatter) const {
    std::vector<double> along;
    along.reserve(remainders_.size());
    for (std::size_t i = 0; i < remainders_.size(); ++i) {
      const Observed seen = observed(i, scatter);
      const Share share = share_of(seen, scatter);
      along.push_back(share.good() > 0 ? along_of(seen, share) / share.good() : seen.off.t);
    }
    return along;
  }

  // What is observed of a match at the solver's state.
  Observed observed(std::size_t i, const Scatter& scatter) const { return observed(state_, remainders_, i, scatter); }

  // Of the values, then of the grounds.
  cv::Mat1d covariance(const Scatter& scatter) const {
    const Normal normal = equations(scatter);
    cv::Mat1d matrix = normal.matrix.clone(), right = normal.right.clone(), inverse;
    hold(matrix, right);
    cv::invert(matrix, inverse, cv::DECOMP_CHOLESKY);
    return inverse;
  }

 private:
  int size() const { return kParameters + 3 * problem_.pairs; }

  Observed observed(const State& state, const std::vector<Remainder>& remainders, std::size_t i, const Scatter& scatter) const {
    const Match& match = problem_.matches[i];
    return {remainders[i].off, scatter.noise * match.t_doubt, scatter.noise * match.b_doubt,
            parallax_of(state.grounds[std::size_t(match.pair)], remainders[i].at), slant_of(state.values, remainders[i].at.t)};
  }

  double cost_of(const State& state, const std::vector<Remainder>& remainders, const Scatter& scatter) const {
    double cost = 0;
    for (std::size_t i = 0; i < remainders.size(); ++i)
      cost -= log_likelihood(observed(state, remainders, i, scatter), scatter);
    return prior_cost(state) + cost / scatter.alike;
  }

  double prior_cost(const State& state) const {
    double cost = 0;
    const Prior& prior = problem_.prior;
    const auto add = [&](double z) { cost += 0.5 * z * z; };
    for (std::size_t p = 0; p < kParameters; ++p) {
      if (prior.deviations[p] > kHeld) add((state.values[p] - prior.values[p]) / prior.deviations[p]);
    }
    if (!prior.stiffness.empty()) {
      const cv::Mat1d off = off_others(state.values);
      cost += 0.5 * off.dot(prior.stiffness * off);
    }
    for (int lens = 0; lens < 2; ++lens) {
      if (prior.circle[lens] > 0) add(rim_residual(state.values, problem_, lens) / prior.circle_deviation);
    }
    for (const Ground& ground : state.grounds) {
      for (const Axis& axis : axes_) {
        const double parallax = dot(axis.along, ground);
        cost += ground_cost(parallax, axis.price(parallax));
      }
    }
    return cost;
  }

  cv::Mat1d off_others(const Values& values) const {
    cv::Mat1d off(problem_.prior.stiffness.rows, 1);
    for (int p = 0; p < off.rows; ++p) off(p, 0) = values[std::size_t(p)] - problem_.prior.others[std::size_t(p)];
    return off;
  }

  void add_match(const Slopes& slopes, std::size_t i, const Scatter& scatter, Normal& normal) const {
    const Observed seen = observed(i, scatter);
    const Share share = share_of(seen, scatter);
    const double counts = 1 / scatter.alike;
    const double across = counts / (seen.b_noise * seen.b_noise);
    const double along = counts / (seen.t_noise * seen.t_noise);
    if (scatter.scattered) {
      add_slanted(slopes, i, seen, share, along, normal);
    } else {
      normal.add(slopes.t, share.good() * along, share.good() * along * seen.off.t);
    }
    const Pull near = near_pull(seen.off.b, seen.b_noise, share.near, scatter);
    normal.add(slopes.b, share.far * across + counts * near.stiffness, share.far * across * seen.off.b + counts * near.slope);
    if (seen.parallax <= 0) {
      normal.add(slopes.b, share.ground * across, share.ground * across * seen.off.b);
      return;
    }
    const Vec3 d = ring_direction(remainders_[i].at.t, remainders_[i].at.b);
    normal.add(slopes.b, {-d.x, -d.y, -d.z}, kParameters + 3 * problem_.matches[i].pair, share.ground * across,
               share.ground * across * (seen.off.b - seen.parallax));
  }

  // What is left along the ring, of what is far, what lies on a ground and what is near.
  void add_slanted(const Slopes& slopes, std::size_t i, const Observed& seen, const Share& share, double stiffness,
                   Normal& normal) const {
    const RingPoint& at = remainders_[i].at;
    const SineCosine t = sine_cosine(at.t);
    const auto displaced = [&](double by) {
      Row row = slopes.t;
      row[kBesideX] = -by * t.sine;
      row[kBesideY] = by * t.cosine;
      return row;
    };
    normal.add(slopes.t, stiffness * share.far, stiffness * share.far * seen.off.t);
    const Vec3 raised = (seen.parallax > 0 ? -seen.slant : 0) * ring_direction(at.t, at.b);
    const double ground = stiffness * share.ground, near = stiffness * share.near;
    normal.add(displaced(seen.parallax), raised, kParameters + 3 * problem_.matches[i].pair, ground,
               ground * (seen.off.t - seen.slant * seen.parallax));
    Row row = displaced(seen.off.b);
    for (std::size_t p = 0; p < kBesideX; ++p) row[p] -= seen.slant * slopes.b[p];
    normal.add(row, near, near * (seen.off.t - seen.slant * seen.off.b));
  }

  void add_priors(Normal& normal) const {
    const Prior& prior = problem_.prior;
    for (std::size_t p = 0; p < kParameters; ++p) {
      const double deviation = prior.deviations[p];
      if (deviation <= 0) continue;
      Row row{};
      row[p] = 1;
      normal.add(row, 1 / (deviation * deviation), (state_.values[p] - prior.values[p]) / (deviation * deviation));
    }
    if (!prior.stiffness.empty()) {
      const cv::Mat1d pull = prior.stiffness * off_others(state_.values);
      for (int p = 0; p < pull.rows; ++p) {
        normal.right(p, 0) -= pull(p, 0);
        for (int q = 0; q < pull.rows; ++q) normal.matrix(p, q) += prior.stiffness(p, q);
      }
    }
    for (int lens = 0; lens < 2; ++lens) {
      if (prior.circle[lens] <= 0) continue;
      Row row{};
      for (const int p : {kScale, kScaleRatio, kK1, kK2, kK3, kK1Apart, kK2Apart, kRim}) {
        const double step = 0.05 * kSteps[std::size_t(p)];
        Values low = state_.values, high = state_.values;
        low[std::size_t(p)] -= step;
        high[std::size_t(p)] += step;
        row[std::size_t(p)] = (rim_residual(high, problem_, lens) - rim_residual(low, problem_, lens)) / (2 * step);
      }
      const double weight = 1 / (prior.circle_deviation * prior.circle_deviation);
      normal.add(row, weight, weight * rim_residual(state_.values, problem_, lens));
    }
    for (std::size_t i = 0; i < state_.grounds.size(); ++i) {
      for (const Axis& axis : axes_) {
        const double parallax = dot(axis.along, state_.grounds[i]);
        const Pull pull = ground_pull(parallax, axis.price(parallax));
        normal.add({}, axis.along, kParameters + 3 * int(i), pull.stiffness, pull.slope);
      }
    }
  }

  Normal equations(const Scatter& scatter) const {
    const std::vector<Slopes> slopes = slopes_of(state_.values, problem_.frame, problem_.matches);
    Normal normal(size());
    add_priors(normal);
    for (std::size_t i = 0; i < remainders_.size(); ++i) add_match(slopes[i], i, scatter, normal);
    return normal;
  }

  // What is held does not move.
  void hold(cv::Mat1d& matrix, cv::Mat1d& right) const {
    for (int p = 0; p < kParameters; ++p) {
      const double deviation = problem_.prior.deviations[std::size_t(p)];
      if (deviation <= 0 || deviation > kHeld) continue;
      matrix.row(p).setTo(0);
      matrix.col(p).setTo(0);
      matrix(p, p) = 1e18;
      right(p, 0) = 0;
    }
  }

  cv::Mat1d step_of(const Normal& normal, double damping) const {
    cv::Mat1d matrix = normal.matrix.clone(), right = normal.right.clone(), change;
    for (int p = 0; p < matrix.rows; ++p) {
      const double unit = p < kParameters ? kSteps[std::size_t(p)] : 1;
      matrix(p, p) += damping * std::max(matrix(p, p), 1 / (unit * unit));
    }
    hold(matrix, right);
    cv::solve(matrix, right, change, cv::DECOMP_CHOLESKY);
    return change;
  }

  // Goes there if that is better.
  bool try_step(const cv::Mat1d& change, const Scatter& scatter) {
    State moved = state_;
    for (int p = 0; p < kParameters; ++p) moved.values[std::size_t(p)] += change(p, 0);
    for (std::size_t i = 0; i < moved.grounds.size(); ++i) {
      const int place = kParameters + 3 * int(i);
      moved.grounds[i] = moved.grounds[i] + Vec3{change(place, 0), change(place + 1, 0), change(place + 2, 0)};
    }
    if (!is_lens(moved.values, problem_.frame) && is_lens(state_.values, problem_.frame)) return false;
    std::vector<Remainder> there = remainders_of(moved.values, problem_.frame, problem_.matches);
    const double cost = cost_of(moved, there, scatter);
    if (!(cost < cost_)) return false;
    state_ = std::move(moved);
    remainders_ = std::move(there);
    cost_ = cost;
    return true;
  }

  const Problem& problem_;
  const std::array<Axis, 3> axes_ = ground_axes(problem_.prior.down);
  State state_;
  std::vector<Remainder> remainders_;
  double cost_ = 0;
};

// How many matches err alike: the sums over places of the ring, all pairs together, vary so many times as much as sums of what
// errs independently.
double alike_of(const Solver& solver, const Scatter& scatter, const std::vector<Share>& shares, double alike_error) {
  constexpr int kPlaces = 64;
  double sums[kPlaces][2] = {}, single = 0, counted = 0;
  for (std::size_t i = 0; i < shares.size(); ++i) {
    const Observed seen = solver.observed(i, scatter);
    const Share& share = shares[i];
    const int place = std::clamp(int((solver.remainders()[i].at.t / (2 * kPi) + 0.5) * kPlaces), 0, kPlaces - 1);
    const double t = along_of(seen, share) / seen.t_noise;
    const double b = (share.far * seen.off.b + share.ground * (seen.off.b - seen.parallax)) / seen.b_noise;
    sums[place][0] += t;
    sums[place][1] += b;
    single += t * t + b * b;
    counted += share.good() * scatter.noise * scatter.noise / (seen.b_noise * seen.b_noise);
  }
  const double least = 1 + counted / kPlaces * std::pow(alike_error / scatter.noise, 2);
  double together = 0;
  for (const auto& sum : sums) together += sum[0] * sum[0] + sum[1] * sum[1];
  return std::max(least, together / std::max(1e-9, single));
}

// The parts and the noise that make the remainders most likely.
Scatter refitted(const Solver& solver, const Scatter& before, double least_noise) {
  const std::vector<Share> shares = solver.shares(before);
  double still = 0, near = 0, square = 0, count = 0;
  for (std::size_t i = 0; i < shares.size(); ++i) {
    const Share& share = shares[i];
    const Observed seen = solver.observed(i, before);
    const double raised = seen.off.b - seen.parallax, b = share.far * seen.off.b * seen.off.b + share.ground * raised * raised;
    still += share.far + share.ground;
    near += share.near;
    const double far = seen.off.t, ground = far - seen.slant * seen.parallax, close = far - seen.slant * seen.off.b;
    const double along = share.far * far * far + share.ground * ground * ground + share.near * close * close;
    square += along / (seen.t_noise * seen.t_noise);
    count += share.good();
    if (before.scattered) continue;
    square += b / (seen.b_noise * seen.b_noise);
    count += share.far + share.ground;
  }
  const double all = std::max(1.0, double(shares.size())), good = std::max(1e-9, still + near);
  Scatter scatter = before;
  scatter.noise = std::max(least_noise, before.noise * std::sqrt(square / std::max(1.0, count)));
  scatter.wrong = std::clamp(1 - good / all, 0.01, 0.9);
  if (!before.near_known) scatter.near = std::clamp(near / good, 0.05, 0.95);
  return scatter;
}

}  // namespace

double parallax_of(const Ground& ground, const RingPoint& at) { return std::max(0.0, dot(ring_direction(at.t, at.b), ground)); }

Solution solve(const Problem& problem, const Values& guess, const std::vector<Ground>& grounds, Scatter scatter) {
  constexpr double kLeastNoise = 0.02;
  constexpr int kRounds = 14, kLastRounds = 3, kFewSteps = 4, kManySteps = 40;
  Solver solver(problem, {guess, grounds});
  for (int round = 0; round < kRounds; ++round) {
    solver.descend(scatter, kFewSteps);
    const Scatter next = refitted(solver, scatter, std::max(kLeastNoise, 0.5 * scatter.noise));
    const bool still = std::abs(next.noise - scatter.noise) < 0.01 * scatter.noise;
    scatter = next;
    if (still) break;
  }
  for (int round = 0; round < kLastRounds; ++round) {
    scatter.alike = alike_of(solver, scatter, solver.shares(scatter), problem.alike_error);
    solver.descend(scatter, kManySteps);
    scatter = refitted(solver, scatter, kLeastNoise);
  }
  solver.descend(scatter, kManySteps);
  return {solver.state().values, solver.state().grounds, scatter,
          solver.cost(),         solver.prior_cost(),    solver.covariance(scatter),
          solver.remainders(),   solver.shares(scatter), solver.likelihoods(scatter),
          solver.along(scatter)};
}

}  // namespace biseam::calibrate
