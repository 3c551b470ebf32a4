#include "ring/strip/lookup.hpp"

#include "base/loop_versions.hpp"
#include "ring/strip/lookup_kernels.hpp"
#include "ring/strip/pyramid.hpp"

namespace biseam::ring {

namespace {

BISEAM_LOOP int32_t wrapped(int32_t t, int32_t turn) { return t < 0 ? t + turn : t >= turn ? t - turn : t; }

void look_up_corrections(const int16_t* corrections, StripShape shape, const int32_t* t, const int32_t* b, int16_t* out,
                         int count) noexcept {
  const int32_t turn = shape.length << 16, last = (shape.width - 1) << 16;
  for (int i = 0; i < count; ++i) {
    const int32_t at_t = wrapped(t[i], turn), at_b = b[i] < 0 ? 0 : b[i] > last ? last : b[i];
    // The last sample is read as the second of a pair.
    const int32_t row = at_t >> 16, next = row + 1 < shape.length ? row + 1 : 0;
    const int32_t column = at_b >> 16 < shape.width - 2 ? at_b >> 16 : shape.width - 2;
    const int32_t along = (at_t & 0xffff) >> 8, across = (at_b - (column << 16)) >> 8;
    const int16_t* here = corrections + ptrdiff_t{row} * shape.width + column;
    const int16_t* after = corrections + ptrdiff_t{next} * shape.width + column;
    const int32_t near = here[0] * (256 - across) + here[1] * across, far = after[0] * (256 - across) + after[1] * across;
    out[i] = static_cast<int16_t>((near * (256 - along) + far * along + 32768) >> 16);
  }
}

BISEAM_LOOP void look_up_weights(const SeamRamp& ramp, const int32_t* t, const int32_t* b, int16_t* out, int count) noexcept {
  const int32_t* path = ramp.path;
  const int32_t turn = ramp.length << 16;
  // Distances in 1/4096 of a sample; a product of one within the ramp and the slope is at most 2^28.
  const int32_t across = ramp.across >> 4, slope = ((1 << 28) + across / 2) / across;
  for (int i = 0; i < count; ++i) {
    const int32_t at = wrapped(t[i], turn), row = at >> 16;
    const int32_t seam = path[row] + (((path[row + 1] - path[row]) >> 8) * ((at & 0xffff) >> 8));
    const int32_t distance = (b[i] - seam + (ramp.across >> 1)) >> 4;
    const int32_t within = distance < 0 ? 0 : distance > across ? across : distance;
    out[i] = static_cast<int16_t>((within * slope + (1 << 19)) >> 20);
  }
}
static_assert(kWeightOne == 256);

}  // namespace

constinit const Variants<LookUpCorrections> kLookUpCorrections{
    look_up_corrections, nullptr, BISEAM_ON_X86_64(look_up_corrections_avx2), BISEAM_ON_X86_64(look_up_corrections_avx512)};
constinit const Variants<LookUpWeights> kLookUpWeights = loop_versions<look_up_weights, LookUpWeights>;

}  // namespace biseam::ring
