// How codes stand for light, as far as matching needs it.
#pragma once

#include <cstdint>

#include "ring/fine.hpp"

namespace biseam::ring {

// Light that is g times as strong is recorded as pivot + f (code - pivot), f a power of g, where a transfer curve is a power
// above its pivot: exactly so for those of sRGB and BT.709 but for their darkest codes, which go by lines through black.
enum class Transfer {
  usual,  // sRGB for three planes of anything, BT.709 for others
  bt709,  // and BT.601, BT.2020
  srgb,
  power,  // of any exponent, linear light included
  log,    // PQ and HLG: steps of light are nearly steps of codes
};

struct Tone {
  int32_t black, white;  // fine
  int32_t pivot;         // fine, black or below
  bool rgb;              // else luma and chroma, or luma alone
  bool full_range;
};

Tone make_tone(Transfer transfer, bool rgb, bool full_range) noexcept;

// Logarithms are to the base 2, of distances from the pivot: logs of f.
inline constexpr int kLogBits = 12;
inline constexpr int kLogOne = 1 << kLogBits;

// Logarithms of levels, fine codes above black: entries every 16.
struct LogTable {
  static constexpr int kSteps = 1024;
  int32_t values[kSteps + 1];

  // 0 <= level < 2^kFineBits.
  int32_t at(int32_t level) const noexcept {
    const int32_t step = level >> 4, past = level & 15;
    return values[step] + (((values[step + 1] - values[step]) * past) >> 4);
  }
};
void fill_logs(const Tone& tone, LogTable& table) noexcept;

// 2^(log / kLogOne), within 1e-9 of it; |log| <= 8 kLogOne.
double power_of(double log) noexcept;

}  // namespace biseam::ring
