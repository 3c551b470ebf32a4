#include "ring/strip/pyramid.hpp"

#include "base/loop_versions.hpp"

namespace biseam::ring {

namespace {

constexpr int kMargin = 2;  // samples on either side of a row of column sums

BISEAM_LOOP int32_t weigh(int32_t value, int32_t weight) { return (value * weight + kWeightOne / 2) >> 8; }
static_assert(kWeightOne == 1 << 8);

BISEAM_LOOP int16_t held_in_16_bits(int32_t value) {
  return static_cast<int16_t>(value < -32768 ? -32768 : value > 32767 ? 32767 : value);
}

BISEAM_LOOP void reduce_level(const int16_t* fine, StripShape shape, int16_t* coarse) noexcept {
  const int width = shape.width, length = shape.length, coarse_width = (width + 1) / 2;
  int32_t row[kMaxStripWidth + 2 * kMargin];
  int32_t* sums = row + kMargin;
  for (int t = 0; t < length; t += 2) {
    const auto row_at = [=](int at) { return fine + ptrdiff_t{(at + length) % length} * width; };
    const int16_t *a = row_at(t - 2), *b = row_at(t - 1), *c = row_at(t), *d = row_at(t + 1), *e = row_at(t + 2);
    for (int i = 0; i < width; ++i) sums[i] = a[i] + 4 * (b[i] + d[i]) + 6 * c[i] + e[i];
    sums[-2] = sums[2];
    sums[-1] = sums[1];
    sums[width] = sums[width - 2];
    sums[width + 1] = sums[width - 3];
    BISEAM_TURNS_APART
    for (int i = 0; i < coarse_width; ++i) {
      const int32_t sum = sums[2 * i - 2] + 4 * (sums[2 * i - 1] + sums[2 * i + 1]) + 6 * sums[2 * i] + sums[2 * i + 2];
      coarse[i] = static_cast<int16_t>((sum + 128) >> 8);
    }
    coarse += coarse_width;
  }
}

// Rows of the expanded coarse level, as row sums of its columns' sums: both carry a factor of 8.  use(b, value) takes the rest.
template <class Use>
BISEAM_LOOP void expand_row(const int16_t* coarse, StripShape shape, int t, Use use) {
  const int width = shape.width, coarse_width = (width + 1) / 2, coarse_length = shape.length / 2;
  int32_t row[kMaxStripWidth / 2 + 2 * kMargin];
  int32_t* sums = row + kMargin;
  sums[1] = 0;  // which widths of two and more fill, as compilers don't know
  const auto row_at = [=](int at) { return coarse + ptrdiff_t{(at + coarse_length) % coarse_length} * coarse_width; };
  const int16_t *here = row_at(t / 2), *after = row_at(t / 2 + 1);
  if (t % 2 == 0) {
    const int16_t* before = row_at(t / 2 - 1);
    for (int i = 0; i < coarse_width; ++i) sums[i] = before[i] + 6 * here[i] + after[i];
  } else {
    for (int i = 0; i < coarse_width; ++i) sums[i] = 4 * (here[i] + after[i]);
  }
  sums[-1] = sums[1];
  sums[coarse_width] = sums[width % 2 == 0 ? coarse_width - 1 : coarse_width - 2];
  BISEAM_TURNS_APART
  for (int i = 0; i < width / 2; ++i) {
    use(2 * i, (sums[i - 1] + 6 * sums[i] + sums[i + 1] + 32) >> 6);
    use(2 * i + 1, (4 * (sums[i] + sums[i + 1]) + 32) >> 6);
  }
  if (width % 2 != 0) {
    const int i = coarse_width - 1;
    use(2 * i, (sums[i - 1] + 6 * sums[i] + sums[i + 1] + 32) >> 6);
  }
}

BISEAM_LOOP void subtract_expanded(const int16_t* fine, const int16_t* coarse, StripShape shape, int16_t* detail) noexcept {
  for (int t = 0; t < shape.length; ++t) {
    expand_row(coarse, shape, t, [=](int b, int32_t value) { detail[b] = static_cast<int16_t>(fine[b] - value); });
    fine += shape.width;
    detail += shape.width;
  }
}

BISEAM_LOOP void add_expanded(const int16_t* detail, const int16_t* weights, const int16_t* coarse, StripShape shape,
                              int16_t* sum) noexcept {
  for (int t = 0; t < shape.length; ++t) {
    expand_row(coarse, shape, t, [=](int b, int32_t value) { sum[b] = held_in_16_bits(weigh(detail[b], weights[b]) + value); });
    detail += shape.width;
    weights += shape.width;
    sum += shape.width;
  }
}

}  // namespace

constinit const Variants<ReduceLevel> kReduceLevel = short_loop_versions<reduce_level, ReduceLevel>;
constinit const Variants<SubtractExpanded> kSubtractExpanded = short_loop_versions<subtract_expanded, SubtractExpanded>;
constinit const Variants<AddExpanded> kAddExpanded = short_loop_versions<add_expanded, AddExpanded>;

}  // namespace biseam::ring
