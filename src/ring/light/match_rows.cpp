#include "ring/light/match_rows.hpp"

#include <cstddef>
#include <cstring>

#include "base/loop_versions.hpp"

namespace biseam::ring {

namespace {

constexpr int32_t kDarkEnd = 8000;  // above black: no line of darkest codes goes farther

BISEAM_LOOP int32_t lesser(int32_t a, int32_t b) { return a < b ? a : b; }
BISEAM_LOOP int32_t greater(int32_t a, int32_t b) { return a > b ? a : b; }
BISEAM_LOOP int32_t held_in_16_bits(int32_t value) { return greater(INT16_MIN, lesser(INT16_MAX, value)); }

// a share / 2^15, rounded half up, in the form that compilers know as one instruction.
BISEAM_LOOP int16_t product(int16_t a, int16_t share) { return static_cast<int16_t>((((a * share) >> 14) + 1) >> 1); }

BISEAM_LOOP int16_t lesser16(int16_t a, int16_t b) { return a < b ? a : b; }
BISEAM_LOOP int16_t greater16(int16_t a, int16_t b) { return a > b ? a : b; }
BISEAM_LOOP int16_t sum16(int16_t a, int16_t b) { return static_cast<int16_t>(a + b); }
BISEAM_LOOP int16_t difference16(int16_t a, int16_t b) { return static_cast<int16_t>(a - b); }

// Nothing leaves 16 bits: factors stay below 5/3, samples within [-8000, 16600], the pivot is 4205 below black at most.
BISEAM_LOOP int16_t matched_luma(int16_t given, int16_t factor, int16_t black, int16_t white, int16_t pivot) {
  const int16_t sample = greater16(-8000, lesser16(given, 16600));
  const int16_t more = static_cast<int16_t>((lesser16(factor, kMostMatch) - kLightOne) * 4);
  const int16_t line = sum16(sample, product(difference16(sample, pivot), more));
  const int16_t level = difference16(sample, black), low = lesser16(level, kDarkEnd), once = sum16(low, product(low, more));
  const int16_t squared = sum16(black, sum16(once, product(once, more)));
  const int16_t dark = level > kDarkEnd ? line : squared;
  const int16_t below = lesser16(difference16(white, sample), 8000);
  const int16_t light = lesser16(sample, static_cast<int16_t>(white - 3 * below));
  const int16_t up = lesser16(lesser16(line, dark), greater16(sample, white));
  const int16_t down = greater16(greater16(line, dark), light);
  return more >= 0 ? up : down;
}

BISEAM_LOOP void match_rows(int16_t* samples, SharedRows rows, const int16_t* factors, const Tone& tone, int count) noexcept {
  const int16_t black = static_cast<int16_t>(tone.black), white = static_cast<int16_t>(tone.white);
  const int16_t pivot = static_cast<int16_t>(tone.pivot);
  for (const int16_t* const end = samples + rows.count * rows.stride; samples != end; samples += rows.stride) {
    BISEAM_TURNS_APART
    for (ptrdiff_t i = 0; i < count; ++i) samples[i] = matched_luma(samples[i], factors[i], black, white, pivot);
  }
}

BISEAM_LOOP int16_t matched(int32_t sample, int32_t factor, int32_t share, int32_t luma, const MatchChroma& shared) {
  constexpr int32_t kMiddle = 1 << (kFineBits - 1), kFallsBy = 4, kHalf = kLightOne / 2;
  const int32_t within = greater(0, lesser(luma - shared.black, kFallsBy * (shared.white - luma)));
  const int32_t tint = (within * share + kHalf) >> kLightBits, lit = ((sample - kMiddle) * factor + kHalf) >> kLightBits;
  return static_cast<int16_t>(held_in_16_bits(kMiddle + lit + tint));
}

BISEAM_LOOP void match_chroma_rows(int16_t* samples, SharedRows rows, const MatchChroma& given, int channels,
                                   int count) noexcept {
  const MatchChroma shared = given;
  const int16_t *const f0 = shared.factors[0], *const f1 = shared.factors[1], *const s0 = shared.shares[0],
                       *const s1 = shared.shares[1];
  const int16_t* luma = shared.luma;
  for (int row = 0; row < rows.count; ++row, samples += rows.stride, luma += shared.luma_stride) {
    if (channels == 2) {
      BISEAM_TURNS_APART
      for (ptrdiff_t i = 0; i < count; ++i) {
        samples[2 * i] = matched(samples[2 * i], f0[i], s0[i], luma[i], shared);
        samples[2 * i + 1] = matched(samples[2 * i + 1], f1[i], s1[i], luma[i], shared);
      }
    } else {
      BISEAM_TURNS_APART
      for (ptrdiff_t i = 0; i < count; ++i) samples[i] = matched(samples[i], f0[i], s0[i], luma[i], shared);
    }
  }
}

BISEAM_LOOP void spread_nodes(const NodeRows& rows, int16_t* out, int count) noexcept {
  const int32_t apart = 1 << rows.bits, half = 1 << (2 * rows.bits) >> 1, step = 1 << rows.step_bits;
  int place = rows.start;
  for (int i = 0; i < count;) {
    const int column = place >> rows.bits;
    const int32_t past = place - (column << rows.bits);
    const int within = (apart - past + step - 1) >> rows.step_bits, end = i + within < count ? i + within : count;
    const int32_t left = rows.upper[column] * (apart - rows.below) + rows.lower[column] * rows.below;
    const int32_t right = rows.upper[column + 1] * (apart - rows.below) + rows.lower[column + 1] * rows.below;
    const int32_t first = left * apart + (right - left) * past + half, rise = (right - left) * step;
    BISEAM_TURNS_APART
    for (int k = i; k < end; ++k) out[k] = static_cast<int16_t>((first + rise * (k - i)) >> (2 * rows.bits));
    place += (end - i) * step;
    i = end;
  }
}

// Pairs of bytes are read as one word, whose halves may come in any order.
BISEAM_LOOP int32_t sum_of_pair(const uint8_t* pair) {
  uint16_t word;
  std::memcpy(&word, pair, sizeof word);
  return (word & 255) + (word >> 8);
}

BISEAM_LOOP void mean_byte_pairs(const LumaRows& rows, int16_t* out, int count) {
  const uint8_t *const upper = static_cast<const uint8_t*>(rows.rows[0]), *const lower =
                                                                              static_cast<const uint8_t*>(rows.rows[1]);
  if (rows.down == 2) {
    BISEAM_TURNS_APART
    for (ptrdiff_t i = 0; i < count; ++i)
      out[i] = static_cast<int16_t>((sum_of_pair(upper + 2 * i) + sum_of_pair(lower + 2 * i)) * 16);
  } else {
    BISEAM_TURNS_APART
    for (ptrdiff_t i = 0; i < count; ++i) out[i] = static_cast<int16_t>(sum_of_pair(upper + 2 * i) * 32);
  }
}

template <class Sample>
BISEAM_LOOP void mean_row(const LumaRows& rows, int lift, int16_t* out, int count) {
  const Sample *const upper = static_cast<const Sample*>(rows.rows[0]), *const lower = static_cast<const Sample*>(rows.rows[1]);
  const int drop = rows.shift;
  if (rows.across == 2 && rows.down == 2) {
    BISEAM_TURNS_APART
    for (ptrdiff_t i = 0; i < count; ++i) {
      const int32_t sum =
          (upper[2 * i] >> drop) + (upper[2 * i + 1] >> drop) + (lower[2 * i] >> drop) + (lower[2 * i + 1] >> drop);
      out[i] = static_cast<int16_t>(sum << lift >> 2);
    }
  } else if (rows.across == 2) {
    BISEAM_TURNS_APART
    for (ptrdiff_t i = 0; i < count; ++i) {
      out[i] = static_cast<int16_t>(((upper[2 * i] >> drop) + (upper[2 * i + 1] >> drop)) << lift >> 1);
    }
  } else {
    BISEAM_TURNS_APART
    for (ptrdiff_t i = 0; i < count; ++i) out[i] = static_cast<int16_t>((upper[i] >> drop) << lift);
  }
}

BISEAM_LOOP void luma_means(const LumaRows& rows, int16_t* out, int count) noexcept {
  const int lift = kFineBits - rows.bits;
  if (!rows.words && rows.across == 2) return mean_byte_pairs(rows, out, count);
  rows.words ? mean_row<uint16_t>(rows, lift, out, count) : mean_row<uint8_t>(rows, lift, out, count);
}

}  // namespace

constinit const Variants<MatchLumaRows> kMatchRows = loop_versions<match_rows, MatchLumaRows>;
constinit const Variants<MatchChromaRows> kMatchChromaRows = loop_versions<match_chroma_rows, MatchChromaRows>;
constinit const Variants<SpreadNodes> kSpreadNodes = loop_versions<spread_nodes, SpreadNodes>;
constinit const Variants<LumaMeans> kLumaMeans = loop_versions<luma_means, LumaMeans>;

}  // namespace biseam::ring
