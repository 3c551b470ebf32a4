#include "ring/light/match_rows.hpp"

#include "ring/light/match_arithmetic.hpp"

namespace biseam::ring {

namespace {

// What a column's rows share.
struct LumaColumn {
  int16_t more, pivot, dark, shoulder, cut, fall;
  BISEAM_LOOP LumaColumn(int16_t gain, const Tone& tone)
      : more(gain),
        pivot(product(static_cast<int16_t>(tone.pivot), gain)),
        dark(sum(static_cast<int16_t>(2 * tone.black - tone.pivot), product(static_cast<int16_t>(tone.black), gain))),
        shoulder(ring::shoulder(tone, gain)),
        cut(gain > 0 ? int16_t{(1 << 15) * 2 / 3} : int16_t{0}),
        fall(gain < 0 ? int16_t{-1} : int16_t{0}) {}
};

// Nothing leaves 16 bits: samples are held within [-4000, 16600], white is 21216 above the pivot at most.
template <bool up, bool down>
BISEAM_LOOP int16_t matched_luma(int16_t given, const LumaColumn& column, const Tone& tone) {
  const int16_t white = static_cast<int16_t>(tone.white), sample = greater(-4000, lesser(given, 16600));
  // f sample, from which both lines come.
  const int16_t times = sum(sample, product(sample, column.more));
  const int16_t below_line = product(greater(0, difference(column.dark, times)), column.more);
  int16_t matched = difference(difference(times, column.pivot), below_line);
  if (up) matched = difference(matched, greater(0, product(difference(matched, column.shoulder), column.cut)));
  int16_t least = sample;
  if (down) {
    const int16_t below = lesser(0, greater(-8000, difference(sample, white)));
    least = sum(least, static_cast<int16_t>(2 * (up ? below & column.fall : below)));
  }
  return greater(matched, least);
}

// Rows that share their gains are gone through together.
template <bool up, bool down>
BISEAM_LOOP void match_luma_rows(int16_t* samples, FineRows rows, const ValueRows& given, const Tone& given_tone, int count) {
  const ValueRows gains = given;
  const Tone tone = given_tone;
  int row = 0;
  for (; row + kSharedRows <= rows.count; row += kSharedRows) {
    const int16_t below = below_at(gains, row);
    int16_t *const r0 = samples + row * rows.stride, *const r1 = r0 + rows.stride, *const r2 = r1 + rows.stride,
                   *const r3 = r2 + rows.stride;
    BISEAM_TURNS_APART
    for (ptrdiff_t i = 0; i < count; ++i) {
      const LumaColumn column(value_at(gains, below, i), tone);
      r0[i] = matched_luma<up, down>(r0[i], column, tone);
      r1[i] = matched_luma<up, down>(r1[i], column, tone);
      r2[i] = matched_luma<up, down>(r2[i], column, tone);
      r3[i] = matched_luma<up, down>(r3[i], column, tone);
    }
  }
  for (; row < rows.count; ++row) {
    const int16_t below = below_at(gains, row);
    int16_t* const out = samples + row * rows.stride;
    BISEAM_TURNS_APART
    for (ptrdiff_t i = 0; i < count; ++i) {
      out[i] = matched_luma<up, down>(out[i], LumaColumn(value_at(gains, below, i), tone), tone);
    }
  }
}

BISEAM_LOOP void match_rows(int16_t* samples, FineRows rows, const MatchGains& gains, const Tone& tone, int count) noexcept {
  if (!gains.down) return match_luma_rows<true, false>(samples, rows, gains.values, tone, count);
  if (!gains.up) return match_luma_rows<false, true>(samples, rows, gains.values, tone, count);
  match_luma_rows<true, true>(samples, rows, gains.values, tone, count);
}

}  // namespace

constinit const Variants<MatchLumaRows> kMatchRows = loop_versions<match_rows, MatchLumaRows>;

}  // namespace biseam::ring
