#include "ring/strip/lookup.hpp"

namespace biseam::ring {

namespace {

int32_t wrapped(int32_t t, int32_t turn) { return t < 0 ? t + turn : t >= turn ? t - turn : t; }

void look_up_corrections(const int16_t* corrections, StripShape shape, const int32_t* t, const int32_t* b, int32_t* out,
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
    out[i] = (near * (256 - along) + far * along + 32768) >> 16;
  }
}

}  // namespace

constinit const Variants<LookUpCorrections> kLookUpCorrections{look_up_corrections, nullptr,
                                                               BISEAM_ON_X86_64(look_up_corrections_avx2)};

}  // namespace biseam::ring
