#include "calibrate/doubt.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace biseam::calibrate {
namespace {

double median(std::vector<double> values) {
  const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace

void compare_doubts(std::vector<Match>& matches) {
  constexpr double kLeastDoubt = 0.5, kMostDoubt = 10;
  if (matches.empty()) return;
  std::vector<double> all;
  for (const Match& match : matches) all.insert(all.end(), {match.t_doubt, match.b_doubt});
  const double usual = std::max(1e-6, median(all));
  for (Match& match : matches) {
    match.t_doubt = std::clamp(match.t_doubt / usual, kLeastDoubt, kMostDoubt);
    match.b_doubt = std::clamp(match.b_doubt / usual, kLeastDoubt, kMostDoubt);
  }
}

void doubt_places(std::vector<Match>& matches, const Solution& solution) {
  constexpr std::size_t kLeastNeighbours = 12;
  constexpr double kLeastFactor = 0.7, kMostFactor = 20;
  const std::size_t count = matches.size(), neighbours = std::max(kLeastNeighbours, count / 64);
  if (count < 2 * neighbours) return;
  std::vector<std::size_t> order(count);
  std::iota(order.begin(), order.end(), std::size_t(0));
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    const double first = solution.remainders[a].at.t, second = solution.remainders[b].at.t;
    return first != second ? first < second : a < b;
  });
  std::vector<double> off(count), factors(count), part(neighbours);
  for (std::size_t i = 0; i < count; ++i) {
    off[i] = std::abs(solution.along[order[i]]) / matches[order[i]].t_doubt;
  }
  const double usual = std::max(1e-6, median(off));
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t j = 0; j < neighbours; ++j) part[j] = off[(i + count + j - neighbours / 2) % count];
    factors[i] = std::clamp(median(part) / usual, kLeastFactor, kMostFactor);
  }
  for (std::size_t i = 0; i < count; ++i) {
    matches[order[i]].t_doubt *= factors[i];
    matches[order[i]].b_doubt *= factors[i];
  }
}

}  // namespace biseam::calibrate
