#pragma once

#include "ring/strip/lookup.hpp"

namespace biseam::ring {

#if defined(BISEAM_X86_64)
BISEAM_AVX2 void look_up_corrections_avx2(const int16_t* corrections, StripShape shape, const int32_t* t, const int32_t* b,
                                          int16_t* out, int count) noexcept;
BISEAM_AVX512 void look_up_corrections_avx512(const int16_t* corrections, StripShape shape, const int32_t* t, const int32_t* b,
                                              int16_t* out, int count) noexcept;
#endif

}  // namespace biseam::ring
