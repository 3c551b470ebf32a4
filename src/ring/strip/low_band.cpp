#include "ring/strip/low_band.hpp"

#include "base/loop_versions.hpp"

namespace biseam::ring {

namespace {

BISEAM_LOOP int16_t faded(int32_t correction, int32_t factor) {
  const int32_t held = correction < -kMaxCorrection  ? -kMaxCorrection
                       : correction > kMaxCorrection ? kMaxCorrection
                                                     : correction;
  return static_cast<int16_t>((held * factor + (kFadeOne >> 1)) >> kFadeBits);
}

BISEAM_LOOP void correct_row(const int16_t* mixed, const int16_t* difference, const int16_t* fade, int16_t* correction0,
                             int16_t* correction1, int width) noexcept {
  BISEAM_TURNS_APART
  for (int b = 0; b < width; ++b) {
    correction0[b] = faded(mixed[b], fade[b]);
    correction1[b] = faded(mixed[b] - difference[b], fade[b]);
  }
}

// The top of the pyramid under its weights.
void weigh_top(const StripPyramid& pyramid, const StripPyramid& weights) {
  const int top = pyramid.levels - 1;
  int16_t* samples = pyramid.samples[top];
  for (ptrdiff_t i = 0; i < strip_samples(pyramid.shapes[top]); ++i) {
    samples[i] = static_cast<int16_t>((samples[i] * weights.samples[top][i] + kWeightOne / 2) >> 8);
  }
}

}  // namespace

constinit const Variants<CorrectRow> kCorrectRow = short_loop_versions<correct_row, CorrectRow>;

ptrdiff_t pyramid_samples(StripShape shape) noexcept {
  ptrdiff_t samples = 0;
  for (int level = strip_levels(shape); level > 0; --level, shape = reduced(shape)) samples += strip_samples(shape);
  return samples;
}

StripPyramid lay_out_pyramid(StripShape shape, int16_t* samples) noexcept {
  StripPyramid pyramid{strip_levels(shape), {}, {}};
  for (int level = 0; level < pyramid.levels; ++level, shape = reduced(shape)) {
    pyramid.shapes[level] = shape;
    pyramid.samples[level] = samples;
    samples += strip_samples(shape);
  }
  return pyramid;
}

void build_seam_weights(const int32_t* path, const StripPyramid& weights) noexcept {
  int16_t* weight = weights.samples[0];
  const int width = weights.shapes[0].width;
  for (int t = 0; t < weights.shapes[0].length; ++t, weight += width) {
    for (int b = 0; b < width; ++b) {
      weight[b] = static_cast<int16_t>((b << 16 > path[t] ? kWeightOne / 2 : 0) + (b << 16 >= path[t] ? kWeightOne / 2 : 0));
    }
  }
  for (int level = 1; level < weights.levels; ++level) {
    kReduceLevel.best()(weights.samples[level - 1], weights.shapes[level - 1], weights.samples[level]);
  }
}

void build_difference_pyramid(const int16_t* difference, const StripPyramid& pyramid) noexcept {
  const int16_t* fine = difference;
  for (int level = 1; level < pyramid.levels; ++level) {
    kReduceLevel.best()(fine, pyramid.shapes[level - 1], pyramid.samples[level]);
    fine = pyramid.samples[level];
  }
  if (pyramid.levels == 1) {
    for (ptrdiff_t i = 0; i < strip_samples(pyramid.shapes[0]); ++i) pyramid.samples[0][i] = difference[i];
  }
  for (int level = 0; level < pyramid.levels - 1; ++level) {
    kSubtractExpanded.best()(level == 0 ? difference : pyramid.samples[level], pyramid.samples[level + 1],
                             pyramid.shapes[level], pyramid.samples[level]);
  }
}

void mix_low_band(const StripPyramid& pyramid, const StripPyramid& weights, const int16_t* difference, const int16_t* fade,
                  int16_t* correction0, int16_t* correction1) noexcept {
  weigh_top(pyramid, weights);
  for (int level = pyramid.levels - 2; level >= 0; --level) {
    kAddExpanded.best()(pyramid.samples[level], weights.samples[level], pyramid.samples[level + 1], pyramid.shapes[level],
                        pyramid.samples[level]);
  }
  const StripShape shape = pyramid.shapes[0];
  for (int t = 0; t < shape.length; ++t) {
    const ptrdiff_t at = ptrdiff_t{t} * shape.width;
    kCorrectRow.best()(pyramid.samples[0] + at, difference + at, fade, correction0 + at, correction1 + at, shape.width);
  }
}

void make_fade(int width, int margin, int16_t* fade) noexcept {
  const int64_t m = margin < 1 ? 1 : margin, cube = m * m * m;
  for (int b = 0; b < width; ++b) {
    const int64_t inward = b < width - 1 - b ? b : width - 1 - b, i = inward < m ? inward : m;
    fade[b] = static_cast<int16_t>((kFadeOne * i * i * (3 * m - 2 * i) + cube / 2) / cube);
  }
}

}  // namespace biseam::ring
