#include "ring/sample/axis_weights.hpp"

#include <cstddef>

namespace biseam::ring {

namespace {

constexpr int kWidest = 8;  // index of the last widening with a kernel for every quality
constexpr int kAll = sizeof kWidenings / sizeof kWidenings[0];

// Kernels as functions of the distance, not negative, in samples.
constexpr double triangle(double d) { return d < 1 ? 1 - d : 0; }

// The cubic through four samples, with its bend a quarter stronger.  That cubic leaves the straight line between the middle two
// as the slowest waves do; finer ones bend more.  Of all strengths this one misses the least, in the mean over all places
// between samples, of pictures whose waves of f cycles a sample have the power (1 - 2f)^4 / f^2, which is natural pictures
// behind a lens; four weights found for each place alone miss 0.004 dB less.  A stronger bend comes closer to sharper pictures,
// but lets more noise through.
constexpr double kBend = 1.26;

constexpr double cubic(double d) {
  if (d < 1) return (1 - d) * (1 + kBend / 2 * d * (1 - d));
  if (d < 2) return -kBend / 6 * (d - 1) * (2 - d) * (3 - d);
  return 0;
}

constexpr double spline36(double d) {
  if (d < 1) return ((13.0 / 11 * d - 453.0 / 209) * d - 3.0 / 209) * d + 1;
  if (d < 2) {
    d -= 1;
    return ((-6.0 / 11 * d + 270.0 / 209) * d - 156.0 / 209) * d;
  }
  if (d >= 3) return 0;
  d -= 2;
  return ((1.0 / 11 * d - 45.0 / 209) * d + 26.0 / 209) * d;
}

constexpr double kernel_at(Quality quality, double d) {
  if (d < 0) d = -d;
  return quality == Quality::fast ? triangle(d) : quality == Quality::good ? cubic(d) : spline36(d);
}

constexpr int radius_of(Quality quality) { return quality == Quality::fast ? 1 : quality == Quality::good ? 2 : 3; }

constexpr int half_taps(Quality quality, int widening) {
  const double reach = radius_of(quality) * kWidenings[widening];
  const int whole = static_cast<int>(reach);
  return whole < reach ? whole + 1 : whole;
}

// As many as show: with twice as many no kernel comes 0.1 dB closer to the truth.
constexpr int phase_bits_of(Quality quality, int widening) {
  if (widening > kWidest) return 4;
  if (widening > 0) return 5;
  return quality == Quality::fast ? 6 : 7;
}

constexpr int round_to_int(double value) { return static_cast<int>(value < 0 ? value - 0.5 : value + 0.5); }

template <Quality quality, int widening>
struct Table {
  static constexpr int kHalf = half_taps(quality, widening), kTaps = 2 * kHalf, kPadded = (kTaps + 3) / 4 * 4;
  static constexpr int kPhaseBits = phase_bits_of(quality, widening), kPhases = 1 << kPhaseBits;

  alignas(64) int16_t words[kPhases][kPadded]{};
  alignas(64) int8_t parts[kTaps][2][kPhases]{};

  constexpr void weigh(int phase) {
    double exact[kTaps]{}, sum = 0;
    for (int k = 0; k < kTaps; ++k) {
      const double distance = k - (kHalf - 1) - static_cast<double>(phase) / kPhases;
      sum += exact[k] = kernel_at(quality, distance / kWidenings[widening]);
    }
    int left = kTapsOne;
    for (int k = 0; k < kTaps; ++k) {
      exact[k] *= kTapsOne / sum;
      left -= words[phase][k] = static_cast<int16_t>(round_to_int(exact[k]));
    }
    // What rounding left over goes, one by one, to the weights that are farthest from the truth.
    for (const int step = left < 0 ? -1 : 1; left != 0; left -= step) {
      int farthest = 0;
      for (int k = 1; k < kTaps; ++k) {
        if (step * (exact[k] - words[phase][k]) > step * (exact[farthest] - words[phase][farthest])) farthest = k;
      }
      words[phase][farthest] = static_cast<int16_t>(words[phase][farthest] + step);
    }
  }

  constexpr void part(int phase, int tap) {
    const int weight = words[phase][tap], low = ((weight + 64) & 127) - 64;
    parts[tap][0][phase] = static_cast<int8_t>((weight - low) / 128);
    parts[tap][1][phase] = static_cast<int8_t>(low);
  }

  constexpr Table() {
    for (int phase = 0; phase < kPhases; ++phase) {
      weigh(phase);
      for (int tap = 0; tap < kTaps; ++tap) part(phase, tap);
    }
  }
};

template <Quality quality, int widening>
constexpr Table<quality, widening> kTable{};

template <Quality quality, int widening>
constexpr AxisWeights weights_of() {
  constexpr const Table<quality, widening>& table = kTable<quality, widening>;
  return {table.words[0], table.parts[0][0], table.kTaps, table.kPadded, table.kHalf - 1, table.kPhaseBits};
}

template <Quality q>
struct WidenedWeights {
  static constexpr AxisWeights kWeights[] = {weights_of<q, 0>(), weights_of<q, 1>(), weights_of<q, 2>(),
                                             weights_of<q, 3>(), weights_of<q, 4>(), weights_of<q, 5>(),
                                             weights_of<q, 6>(), weights_of<q, 7>(), weights_of<q, 8>()};
};

template <>
struct WidenedWeights<Quality::fast> {
  static constexpr Quality q = Quality::fast;
  static constexpr AxisWeights kWeights[] = {weights_of<q, 0>(),  weights_of<q, 1>(),  weights_of<q, 2>(),  weights_of<q, 3>(),
                                             weights_of<q, 4>(),  weights_of<q, 5>(),  weights_of<q, 6>(),  weights_of<q, 7>(),
                                             weights_of<q, 8>(),  weights_of<q, 9>(),  weights_of<q, 10>(), weights_of<q, 11>(),
                                             weights_of<q, 12>(), weights_of<q, 13>(), weights_of<q, 14>()};
};

}  // namespace

int widening_for(double scale) noexcept {
  if (!(scale > 1.55)) return 0;
  int widening = 1;
  while (widening + 1 < kAll && kWidenings[widening] * 1.1 < scale) ++widening;
  return widening;
}

const AxisWeights& axis_weights(Quality quality, int widening) noexcept {
  if (quality == Quality::fast || widening > kWidest) return WidenedWeights<Quality::fast>::kWeights[widening];
  return quality == Quality::good ? WidenedWeights<Quality::good>::kWeights[widening]
                                  : WidenedWeights<Quality::best>::kWeights[widening];
}

}  // namespace biseam::ring
