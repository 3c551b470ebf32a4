#include "calibrate/solve.hpp"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace biseam::calibrate {
namespace {

constexpr double kGroundDeviation = 20;  // pixels, of a ground's parallax before anything is known

// Logarithm of the measured radius of a rim / the one that the values give.
double rim_residual(const Values& values, const Problem& problem, int lens) {
  const Camera camera = camera_of(values, problem.frame);
  return std::log(problem.prior.circle[lens] / radius(camera.lens[lens], values[kRim] * kDegree));
}

struct Normal {
  cv::Mat1d matrix, right;

  explicit Normal(int size) : matrix(cv::Mat1d::zeros(size, size)), right(cv::Mat1d::zeros(size, 1)) {}

  void add(const Row& row, double stiffness, double slope) {
    for (int i = 0; i < kParameters; ++i) {
      const double a = row[std::size_t(i)];
      if (a == 0) continue;
      right(i, 0) -= a * slope;
      double* out = matrix[i];
      for (int j = 0; j < kParameters; ++j) out[j] += stiffness * a * row[std::size_t(j)];
    }
  }

  // A row that reaches a ground as well.
  void add(const Row& row, const Vec3& ground, int place, double stiffness, double slope) {
    add(row, stiffness, slope);
    const double g[3] = {ground.x, ground.y, ground.z};
    for (int i = 0; i < 3; ++i) {
      right(place + i, 0) -= g[i] * slope;
      for (int j = 0; j < kParameters; ++j) {
        const double value = stiffness * g[i] * row[std::size_t(j)];
        matrix(place + i, j) += value;
        matrix(j, place + i) += value;
      }
      for (int j = 0; j < 3; ++j) matrix(place + i, place + j) += stiffness * g[i] * g[j];
    }
  }
};

struct State {
  Values values;
  std::vector<Ground> grounds;
};

class Solver {
 public:
  Solver(const Problem& problem, State state) : problem_(problem), state_(std::move(state)) {
    remainders_ = remainders_of(state_.values, problem_.frame, problem_.matches);
  }

  // Levenberg's steps down the cost until they are small.
  void descend(const Scatter& scatter) {
    constexpr int kMostSteps = 4, kMostAttempts = 8;
    double damping = 1e-6;
    cost_ = cost_of(state_, remainders_, scatter);
    for (int step = 0; step < kMostSteps; ++step) {
      const Normal normal = equations(scatter);
      bool better = false;
      double length = 0;
      for (int attempt = 0; attempt < kMostAttempts && !better; ++attempt) {
        State moved = state_;
        length = move(normal, damping, moved);
        std::vector<Remainder> there = remainders_of(moved.values, problem_.frame, problem_.matches);
        const double next = cost_of(moved, there, scatter);
        better = next < cost_;
        if (better) {
          state_ = std::move(moved);
          remainders_ = std::move(there);
          cost_ = next;
          damping *= 0.1;
        } else {
          damping = std::max(damping, 1e-7) * 10;
        }
      }
      if (!better || length < 1e-2) break;
    }
  }

  const State& state() const { return state_; }
  double cost() const { return cost_; }
  double prior_cost() const { return prior_cost(state_); }
  const std::vector<Remainder>& remainders() const { return remainders_; }

  std::vector<Share> shares(const Scatter& scatter) const {
    std::vector<Share> shares;
    shares.reserve(remainders_.size());
    for (std::size_t i = 0; i < remainders_.size(); ++i) shares.push_back(share_of(remainders_[i].off, parallax(i), scatter));
    return shares;
  }

  double parallax(std::size_t i) const {
    return parallax_of(state_.grounds[std::size_t(problem_.matches[i].pair)], remainders_[i].at);
  }

  // Of values and grounds.  Neighbouring matches err together, so that their number alone would promise too much: the slopes of
  // whole places tell by how much.
  cv::Mat1d covariance(const Scatter& scatter) const {
    constexpr int kSectors = 32;
    const Normal normal = equations(scatter);
    cv::Mat1d matrix = normal.matrix.clone(), right = normal.right.clone(), inverse;
    hold(matrix, right);
    cv::invert(matrix, inverse, cv::DECOMP_CHOLESKY);
    const std::vector<Slopes> slopes = slopes_of(state_.values, problem_.frame, problem_.matches);
    std::map<std::pair<int, int>, Normal> places;
    for (std::size_t i = 0; i < remainders_.size(); ++i) {
      const int pair = problem_.matches[i].pair, sector = int((remainders_[i].at.t + kPi) / (2 * kPi) * kSectors) % kSectors;
      add_match(slopes[i], i, scatter, places.try_emplace({pair, sector}, size()).first->second);
    }
    Normal scattered(size());
    add_priors(scattered);
    for (const auto& place : places) scattered.matrix += place.second.right * place.second.right.t();
    hold(scattered.matrix, right);
    const cv::Mat1d robust = inverse * scattered.matrix * inverse;
    double factor = 1;
    for (int p = 0; p < kParameters; ++p) factor = std::max(factor, robust(p, p) / inverse(p, p));
    return inverse * factor;
  }

 private:
  int size() const { return kParameters + 3 * problem_.pairs; }

  double cost_of(const State& state, const std::vector<Remainder>& remainders, const Scatter& scatter) const {
    double cost = prior_cost(state);
    for (std::size_t i = 0; i < remainders.size(); ++i) {
      const Ground& ground = state.grounds[std::size_t(problem_.matches[i].pair)];
      cost -= log_likelihood(remainders[i].off, parallax_of(ground, remainders[i].at), scatter);
    }
    return cost;
  }

  double prior_cost(const State& state) const {
    double cost = 0;
    const Prior& prior = problem_.prior;
    const auto add = [&](double z) { cost += 0.5 * z * z; };
    for (std::size_t p = 0; p < kParameters; ++p) {
      if (prior.deviations[p] > kHeld) add((state.values[p] - prior.values[p]) / prior.deviations[p]);
    }
    for (int lens = 0; lens < 2; ++lens) {
      if (prior.circle[lens] > 0) add(rim_residual(state.values, problem_, lens) / prior.circle_deviation);
    }
    for (const Ground& ground : state.grounds) {
      for (const double value : {ground.x, ground.y, ground.z}) add(value / kGroundDeviation);
    }
    return cost;
  }

  void add_match(const Slopes& slopes, std::size_t i, const Scatter& scatter, Normal& normal) const {
    const Remainder& remainder = remainders_[i];
    const double parallax_here = parallax(i), weight = 1 / (scatter.noise * scatter.noise);
    const Share share = share_of(remainder.off, parallax_here, scatter);
    normal.add(slopes.t, share.good() * weight, share.good() * weight * remainder.off.t);
    const Pull near = near_pull(remainder.off.b, share.near, scatter);
    normal.add(slopes.b, share.far * weight + near.stiffness, share.far * weight * remainder.off.b + near.slope);
    if (parallax_here <= 0) {
      normal.add(slopes.b, share.ground * weight, share.ground * weight * remainder.off.b);
      return;
    }
    const Vec3 d = ring_direction(remainder.at.t, remainder.at.b);
    normal.add(slopes.b, {-d.x, -d.y, -d.z}, kParameters + 3 * problem_.matches[i].pair, share.ground * weight,
               share.ground * weight * (remainder.off.b - parallax_here));
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
    for (int lens = 0; lens < 2; ++lens) {
      if (prior.circle[lens] <= 0) continue;
      Row row{};
      for (const int p : {kScale, kScaleRatio, kK1, kK2, kK1Apart, kK2Apart, kRim}) {
        const double step = 0.05 * kSteps[std::size_t(p)];
        Values low = state_.values, high = state_.values;
        low[std::size_t(p)] -= step;
        high[std::size_t(p)] += step;
        row[std::size_t(p)] = (rim_residual(high, problem_, lens) - rim_residual(low, problem_, lens)) / (2 * step);
      }
      const double weight = 1 / (prior.circle_deviation * prior.circle_deviation);
      normal.add(row, weight, weight * rim_residual(state_.values, problem_, lens));
    }
    const double weight = 1 / (kGroundDeviation * kGroundDeviation);
    for (std::size_t i = 0; i < state_.grounds.size(); ++i) {
      const double g[3] = {state_.grounds[i].x, state_.grounds[i].y, state_.grounds[i].z};
      for (int j = 0; j < 3; ++j) {
        const int place = kParameters + 3 * int(i) + j;
        normal.matrix(place, place) += weight;
        normal.right(place, 0) -= weight * g[j];
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

  // Returns the length of the step, in units of kSteps and of pixels.
  double move(const Normal& normal, double damping, State& state) const {
    cv::Mat1d matrix = normal.matrix.clone(), right = normal.right.clone(), change;
    for (int p = 0; p < matrix.rows; ++p) {
      const double unit = p < kParameters ? kSteps[std::size_t(p)] : 1;
      matrix(p, p) += damping * std::max(matrix(p, p), 1 / (unit * unit));
    }
    hold(matrix, right);
    cv::solve(matrix, right, change, cv::DECOMP_CHOLESKY);
    double length = 0;
    for (int p = 0; p < kParameters; ++p) {
      state.values[std::size_t(p)] += change(p, 0);
      length = std::max(length, std::abs(change(p, 0)) / kSteps[std::size_t(p)]);
    }
    for (std::size_t i = 0; i < state.grounds.size(); ++i) {
      const int place = kParameters + 3 * int(i);
      Ground& ground = state.grounds[i];
      ground.x += change(place, 0);
      ground.y += change(place + 1, 0);
      ground.z += change(place + 2, 0);
      for (int j = 0; j < 3; ++j) length = std::max(length, std::abs(change(place + j, 0)));
    }
    return length;
  }

  const Problem& problem_;
  State state_;
  std::vector<Remainder> remainders_;
  double cost_ = 0;
};

// The parts and the noise that make the remainders most likely.
Scatter refitted(const Solver& solver, const Scatter& before, double least_noise) {
  const std::vector<Share> shares = solver.shares(before);
  double still = 0, near = 0, square = 0, count = 0;
  for (std::size_t i = 0; i < shares.size(); ++i) {
    const Share& share = shares[i];
    const Residual& off = solver.remainders()[i].off;
    const double raised = off.b - solver.parallax(i);
    still += share.far + share.ground;
    near += share.near;
    square += share.good() * off.t * off.t + share.far * off.b * off.b + share.ground * raised * raised;
    count += 2 * (share.far + share.ground) + share.near;
  }
  const double all = std::max(1.0, double(shares.size())), good = std::max(1e-9, still + near);
  Scatter scatter;
  scatter.noise = std::max(least_noise, std::sqrt(square / std::max(1.0, count)));
  scatter.wrong = std::clamp(1 - good / all, 0.01, 0.9);
  scatter.near_known = before.near_known;
  scatter.near = before.near_known ? before.near : std::clamp(near / good, 0.05, 0.95);
  return scatter;
}

}  // namespace

double parallax_of(const Ground& ground, const RingPoint& at) {
  const Vec3 d = ring_direction(at.t, at.b);
  return std::max(0.0, d.x * ground.x + d.y * ground.y + d.z * ground.z);
}

Solution solve(const Problem& problem, const Values& guess, const std::vector<Ground>& grounds, Scatter scatter) {
  constexpr double kLeastNoise = 0.05;
  constexpr int kRounds = 14;
  Solver solver(problem, {guess, grounds});
  for (int round = 0; round < kRounds; ++round) {
    solver.descend(scatter);
    const Scatter next = refitted(solver, scatter, std::max(kLeastNoise, 0.5 * scatter.noise));
    const bool still = std::abs(next.noise - scatter.noise) < 0.01 * scatter.noise;
    scatter = next;
    if (still) break;
  }
  solver.descend(scatter);
  return {solver.state().values, solver.state().grounds, scatter,
          solver.cost(),         solver.prior_cost(),    solver.covariance(scatter),
          solver.remainders(),   solver.shares(scatter)};
}

}  // namespace biseam::calibrate
