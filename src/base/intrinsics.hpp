#pragma once

#include "base/isa.hpp"

// The intrinsics of the architecture.
#if defined(BISEAM_X86_64)
// GCC 12 takes the vectors that its own intrinsics leave undefined for mistakes.
#if !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>
#if !defined(__clang__)
#pragma GCC diagnostic pop
#endif
#elif defined(BISEAM_ARM)
#include <arm_neon.h>
#endif
