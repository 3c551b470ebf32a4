#include "ring/near/disparity.hpp"

#include <algorithm>
#include <bit>
#include <cmath>

#include "ring/near/disparity_rows.hpp"

namespace biseam::ring {

namespace {

constexpr int kMisfitBits = 10, kMisfitOne = 1 << kMisfitBits;
// Misfits are shares of the lenses' squared gradients, 1 for strips that have nothing to do with each other.  A misfit of this
// share and more says nothing about the place.
constexpr int32_t kNoMatch = kMisfitOne * 3 / 4;
// Where little speaks for any of them, far away is more likely than near: for each sample of the first ones.
constexpr int32_t kPrior = 20, kPriorSamples = 3;
// Squared gradients of a sample, in 1/16 codes, that noise and rounding may leave.
constexpr uint32_t kNoise = 8 * 16;
// The share of a place's own confidence from which it is known.
constexpr int kKnown = 64;

int wrapped(int t, int length) noexcept { return t < 0 ? t + length : t >= length ? t - length : t; }

// A row of search samples from the strip.
void mean_row(const NearShape& shape, const int16_t* strip, int t, int16_t* out) noexcept {
  const int side = 1 << shape.bits, half = (1 << (2 * shape.bits)) >> 1;
  const int16_t* const first = strip + ptrdiff_t{wrapped(t, shape.length)} * side * shape.strip.width;
  for (int b = 0; b < shape.width; ++b) {
    int32_t sum = half;
    for (int j = 0; j < side; ++j) {
      for (int i = 0; i < side; ++i) sum += first[ptrdiff_t{j} * shape.strip.width + b * side + i];
    }
    out[b] = static_cast<int16_t>(sum >> (2 * shape.bits));
  }
}

// Rows of a strip one after the other, at the pitch of the search.
class SearchRows {
 public:
  SearchRows(const NearShape& shape, const int16_t* strip) noexcept : shape_(shape), strip_(strip) {}

  const int16_t* row(int t, int place) noexcept {
    if (shape_.bits == 0) return strip_ + ptrdiff_t{wrapped(t, shape_.length)} * shape_.strip.width;
    mean_row(shape_, strip_, t, means_[place]);
    return means_[place];
  }

 private:
  const NearShape& shape_;
  const int16_t* strip_;
  int16_t means_[3][kMaxStripWidth];
};

void gradients_of(const NearShape& shape, SearchRows& rows, int t, int16_t* gradients) noexcept {
  kGradientRow.best()(rows.row(t - 1, 0), rows.row(t, 1), rows.row(t + 1, 2), gradients, shape.width);
}

// Sums over the rows that count for a place.
struct WindowSums {
  uint32_t apart[kPathLanes] = {}, both[kPathLanes] = {};

  void add(const DisparitySearch& search, int t) noexcept {
    for (int d = 0; d < kPathLanes; ++d) {
      apart[d] += search.apart[t][d];
      both[d] += search.both[t][d];
    }
  }
  void remove(const DisparitySearch& search, int t) noexcept {
    for (int d = 0; d < kPathLanes; ++d) {
      apart[d] -= search.apart[t][d];
      both[d] -= search.both[t][d];
    }
  }
};

// apart / (both + noise), which is 2 at most, in 1/kMisfitOne.
uint16_t misfit(uint32_t apart, uint32_t both, uint32_t noise) noexcept {
  const uint32_t all = both + noise;
  const int shift = std::max(0, 12 - std::countl_zero(all));
  return static_cast<uint16_t>(((apart >> shift) << kMisfitBits) / (all >> shift));
}

void fill_costs(const NearShape& shape, DisparitySearch& search) noexcept {
  const uint32_t samples = static_cast<uint32_t>(2 * shape.count * (2 * shape.reach + 1)), noise = samples * kNoise;
  WindowSums sums;
  for (int t = -shape.reach; t <= shape.reach; ++t) sums.add(search, wrapped(t, shape.length));
  for (int t = 0; t < shape.length; ++t) {
    for (int d = 0; d < shape.disparities; ++d) {
      const uint16_t found = misfit(sums.apart[d], sums.both[d], noise);
      search.misfits[t][d] = found;
      search.costs[t].values[d] = std::min<int32_t>(found, kNoMatch) + kPrior * std::min(d, kPriorSamples);
    }
    const uint32_t least = *std::min_element(sums.both, sums.both + shape.disparities);
    search.texture[t] = static_cast<uint16_t>(std::min((std::max(least, noise) - noise) / (3 * noise / 256), 256U));
    sums.remove(search, wrapped(t - shape.reach, shape.length));
    sums.add(search, wrapped(t + shape.reach + 1, shape.length));
  }
}

// How much a place says about itself, 0 .. 256: there is texture, the lenses agree, and do so less at other disparities.
int confidence_at(const NearShape& shape, const DisparitySearch& search, int t) noexcept {
  const int d = search.path[t], misfit = search.misfits[t][d];
  int others = kNoMatch;
  for (int other = 0; other < shape.disparities; ++other) {
    if (other < d - 1 || other > d + 1) others = std::min<int>(others, search.misfits[t][other]);
  }
  const int match = std::clamp(kNoMatch - misfit, 0, 256), clear = std::clamp((others - misfit) * 4, 0, 256);
  return (search.texture[t] * match >> 8) * clear >> 8;
}

// From the path to between the samples: the lowest place of the parabola through three misfits, in 1/kDisparityOne.
int refined(const NearShape& shape, const DisparitySearch& search, int t) noexcept {
  const int d = search.path[t], middle = std::clamp(d, 1, shape.disparities - 2);
  const int32_t before = search.misfits[t][middle - 1], here = search.misfits[t][middle], after = search.misfits[t][middle + 1];
  const int32_t bend = before - 2 * here + after;
  if (bend <= 0) return 0;
  const int32_t offset = (middle - d) * kDisparityOne + (before - after) * (kDisparityOne / 2) / bend;
  if (d > 0) return std::clamp(offset, -kDisparityOne / 2, kDisparityOne / 2);
  // Nothing is known of the other side of 0, and what 2 says may be an edge's beside the place.  Above 0 a parabola's lowest
  // place divides the first sample at most as the roots of the misfits at its ends do.
  const double root = std::sqrt(static_cast<double>(before)), roots = root + std::sqrt(static_cast<double>(here));
  return roots > 0 ? std::clamp(offset, 0, static_cast<int>(kDisparityOne / 2 * std::min(2 * root / roots, 1.0))) : 0;
}

// What is found one-sided is never below 0: little of it means nothing, and begins to count from kLeast on.
int told(int disparity) noexcept {
  constexpr int kLeast = kDisparityOne / 4;
  return disparity <= kLeast ? 0 : disparity < 2 * kLeast ? 2 * (disparity - kLeast) : disparity;
}

}  // namespace

void measure_disparities(const NearShape& shape, const int16_t* const (&strips)[2], int part,
                         DisparitySearch& search) noexcept {
  SearchRows rows0(shape, strips[0]), rows1(shape, strips[1]);
  int16_t gradients[2][2 * kMaxStripWidth];
  const int end = std::min((part + 1) * kSearchRows, shape.length);
  for (int t = part * kSearchRows; t < end; ++t) {
    gradients_of(shape, rows0, t, gradients[0]);
    gradients_of(shape, rows1, t, gradients[1]);
    kCompareRow.best()(gradients[0], gradients[1], shape, search.apart[t], search.both[t]);
  }
}

void find_disparities(const NearShape& shape, DisparitySearch& search, int16_t* disparities) noexcept {
  fill_costs(shape, search);
  find_disparities(search.costs, shape.length, shape.disparities, search.memory, search.path);
  // What is known reaches as far as a place's own columns do.
  const int reach = shape.count / 2;
  int since = 2 * shape.length;
  for (int t = -reach; t < reach; ++t) since = confidence_at(shape, search, wrapped(t, shape.length)) >= kKnown ? 0 : since + 1;
  for (int t = 0; t < shape.length; ++t) {
    since = confidence_at(shape, search, wrapped(t + reach, shape.length)) >= kKnown ? 0 : since + 1;
    const int fraction = refined(shape, search, t) * confidence_at(shape, search, t) / 256;
    disparities[t] = static_cast<int16_t>(since <= 2 * reach ? told(search.path[t] * kDisparityOne + fraction) : 0);
  }
}

}  // namespace biseam::ring
