#include "ring/light/match_chroma_rows.hpp"

#include <cstring>

#include "ring/light/match_arithmetic.hpp"

namespace biseam::ring {

namespace {

constexpr int16_t kMiddle = 1 << (kFineBits - 1);

// How far a chroma channel takes the colour that it is the difference of beyond luma, less one, and what of such a distance is
// two thirds of it: in 1/2^15, by BT.709.
struct ChromaReach {
  int16_t reach, cut;
};
constexpr ChromaReach kReaches[2][2] = {{{26680, 12041}, {17684, 14189}}, {{28036, 11773}, {18835, 13872}}};  // range, channel

// Of the channels in turn.
struct ChromaReaches {
  int16_t reaches[kMostMatched], cuts[kMostMatched];
};
constexpr ChromaReaches reaches_of(int range, int first, int second) {
  ChromaReaches made{};
  for (int i = 0; i < kMostMatched; ++i) {
    made.reaches[i] = kReaches[range][(i % 2 == 0 ? first : second) - 1].reach;
    made.cuts[i] = kReaches[range][(i % 2 == 0 ? first : second) - 1].cut;
  }
  return made;
}
constexpr ChromaReaches kAllReaches[2][2][2] = {
    {{reaches_of(0, 1, 1), reaches_of(0, 1, 2)}, {reaches_of(0, 2, 1), reaches_of(0, 2, 2)}},
    {{reaches_of(1, 1, 1), reaches_of(1, 1, 2)}, {reaches_of(1, 2, 1), reaches_of(1, 2, 2)}}};

// least and luma: what over is reckoned from, see below.
struct ChromaColumn {
  int16_t more, share, middle, reach, least, luma, cut;
  BISEAM_LOOP ChromaColumn(int16_t gain, int16_t tint, const Tone& tone, const ChromaReaches& reaches, ptrdiff_t i)
      : more(gain), share(tint), middle(product(kMiddle, gain)), reach(reaches.reaches[i]) {
    least = sum(kMiddle, product(kMiddle, reach));
    luma = sum(shoulder(tone, gain), least);
    cut = gain > 0 ? reaches.cuts[i] : int16_t{0};
  }
};

// Chroma is held within 8500 of its middle; what is added to it is below 8192, white 7072 above the shoulder at most.
template <bool up>
BISEAM_LOOP int16_t matched_chroma(int16_t given, int16_t luma, const ChromaColumn& column, const Tone& tone) {
  constexpr int16_t kLeast = kMiddle - 8500, kMost = kMiddle + 8500;
  const int16_t black = static_cast<int16_t>(tone.black), white = static_cast<int16_t>(tone.white);
  const int16_t sample = greater(kLeast, lesser(given, kMost));
  const int16_t fading = static_cast<int16_t>(4 * lesser(4000, difference(white, luma)));
  const int16_t within = greater(0, lesser(difference(luma, black), fading));
  const int16_t lit = sum(sum(sample, product(sample, column.more)), difference(product(within, column.share), column.middle));
  const int16_t matched = greater(kLeast, lesser(lit, kMost));
  if (!up) return matched;
  // By how much the colour is beyond the shoulder, and itself where luma alone is.
  const int16_t far = lesser(static_cast<int16_t>(-column.least), difference(luma, column.luma));
  const int16_t over = sum(sum(matched, product(matched, column.reach)), far);
  return difference(matched, greater(0, product(over, column.cut)));
}

template <bool up>
BISEAM_LOOP void match_chroma(int16_t* samples, FineRows rows, const MatchChroma& given, const Tone& given_tone, int count) {
  const MatchChroma shared = given;
  const ValueRows gains = shared.gains.values, shares = shared.shares;
  const Tone tone = given_tone;
  const ChromaReaches& reaches = kAllReaches[tone.full_range ? 1 : 0][shared.channels[0] - 1][shared.channels[1] - 1];
  int row = 0;
  for (; row + kSharedRows <= rows.count; row += kSharedRows) {
    const int16_t below = below_at(gains, row);
    int16_t *const r0 = samples + row * rows.stride, *const r1 = r0 + rows.stride, *const r2 = r1 + rows.stride,
                   *const r3 = r2 + rows.stride;
    const int16_t *const l0 = shared.luma + row * shared.luma_stride, *const l1 = l0 + shared.luma_stride,
                         *const l2 = l1 + shared.luma_stride, *const l3 = l2 + shared.luma_stride;
    BISEAM_TURNS_APART
    for (ptrdiff_t i = 0; i < count; ++i) {
      const ChromaColumn column(value_at(gains, below, i), value_at(shares, below, i), tone, reaches, i);
      r0[i] = matched_chroma<up>(r0[i], l0[i], column, tone);
      r1[i] = matched_chroma<up>(r1[i], l1[i], column, tone);
      r2[i] = matched_chroma<up>(r2[i], l2[i], column, tone);
      r3[i] = matched_chroma<up>(r3[i], l3[i], column, tone);
    }
  }
  for (; row < rows.count; ++row) {
    const int16_t below = below_at(gains, row);
    int16_t* const out = samples + row * rows.stride;
    const int16_t* const luma = shared.luma + row * shared.luma_stride;
    BISEAM_TURNS_APART
    for (ptrdiff_t i = 0; i < count; ++i) {
      const ChromaColumn column(value_at(gains, below, i), value_at(shares, below, i), tone, reaches, i);
      out[i] = matched_chroma<up>(out[i], luma[i], column, tone);
    }
  }
}

BISEAM_LOOP void match_chroma_rows(int16_t* samples, FineRows rows, const MatchChroma& shared, const Tone& tone,
                                   int count) noexcept {
  shared.gains.up ? match_chroma<true>(samples, rows, shared, tone, count)
                  : match_chroma<false>(samples, rows, shared, tone, count);
}

// Pairs of bytes are read as one word, whose halves may come in any order.
BISEAM_LOOP int32_t sum_of_pair(const uint8_t* pair) {
  uint16_t word;
  std::memcpy(&word, pair, sizeof word);
  return (word & 255) + (word >> 8);
}

// As often as there are channels.
template <int channels>
BISEAM_LOOP void write(int16_t* out, ptrdiff_t i, int32_t value) {
  for (int c = 0; c < channels; ++c) out[i * channels + c] = static_cast<int16_t>(value);
}

template <int channels>
BISEAM_LOOP void mean_byte_pairs(const uint8_t* upper, const uint8_t* lower, int16_t* out, int count) {
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) {
    write<channels>(out, i, (sum_of_pair(upper + 2 * i) + sum_of_pair(lower + 2 * i)) * 16);
  }
}

template <class Sample, int channels>
BISEAM_LOOP void mean_row(const LumaCodes& codes, const void* first, const void* second, int16_t* out, int count) {
  const Sample *const upper = static_cast<const Sample*>(first), *const lower = static_cast<const Sample*>(second);
  const int drop = codes.shift, lift = kFineBits - codes.bits;
  if (codes.across == 2) {
    BISEAM_TURNS_APART
    for (ptrdiff_t i = 0; i < count; ++i) {
      const int32_t sum =
          (upper[2 * i] >> drop) + (upper[2 * i + 1] >> drop) + (lower[2 * i] >> drop) + (lower[2 * i + 1] >> drop);
      write<channels>(out, i, sum << lift >> 2);
    }
  } else {
    BISEAM_TURNS_APART
    for (ptrdiff_t i = 0; i < count; ++i) write<channels>(out, i, (upper[i] >> drop) << lift);
  }
}

template <int channels>
BISEAM_LOOP void mean_rows(const LumaCodes& codes, int16_t* out, FineRows rows, int count) {
  for (int row = 0; row < rows.count; ++row, out += rows.stride) {
    const uint8_t* const upper = codes.first + row * codes.down * codes.stride;
    const uint8_t* const lower = codes.down == 2 ? upper + codes.stride : upper;
    if (!codes.words && codes.across == 2) {
      mean_byte_pairs<channels>(upper, lower, out, count);
    } else if (codes.words) {
      mean_row<uint16_t, channels>(codes, upper, lower, out, count);
    } else {
      mean_row<uint8_t, channels>(codes, upper, lower, out, count);
    }
  }
}

BISEAM_LOOP void luma_means(const LumaCodes& codes, int channels, int16_t* out, FineRows rows, int count) noexcept {
  channels == 2 ? mean_rows<2>(codes, out, rows, count) : mean_rows<1>(codes, out, rows, count);
}

}  // namespace

constinit const Variants<MatchChromaRows> kMatchChromaRows = loop_versions<match_chroma_rows, MatchChromaRows>;
constinit const Variants<LumaMeans> kLumaMeans = loop_versions<luma_means, LumaMeans>;

}  // namespace biseam::ring
