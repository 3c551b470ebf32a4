#pragma once

#include "base/variants.hpp"

// Marks a loop that loop_versions compiles for several instruction sets.
#define BISEAM_LOOP BISEAM_INLINED

// Marks a term of such a loop, arithmetic for one sample, to which sanitizers add little: part of the loop there too.
#define BISEAM_TERM [[gnu::always_inline]] inline

// Before a loop that writes nothing that a later turn of it reads: g++ makes no checks for that then, and vectorises loops over
// more rows than it would check.  clang++ checks more by itself.
#if defined(__clang__)
#define BISEAM_TURNS_APART
#else
#define BISEAM_TURNS_APART _Pragma("GCC ivdep")
#endif

// Before a loop of fixed length that would be taken apart instead of becoming a vector.
#if defined(__clang__)
#define BISEAM_KEEP_LOOP
#else
#define BISEAM_KEEP_LOOP _Pragma("GCC unroll 1")
#endif

namespace biseam {

namespace detail {

template <auto loop, class Function>
struct LoopVersions;

template <auto loop, class... Args>
struct LoopVersions<loop, void(Args...) noexcept> {
  static void scalar(Args... args) noexcept { loop(args...); }
#if defined(BISEAM_X86_64)
  BISEAM_AVX2 static void avx2(Args... args) noexcept { loop(args...); }
  BISEAM_AVX512 static void avx512(Args... args) noexcept { loop(args...); }
#elif defined(BISEAM_ARM)
  BISEAM_NEON static void neon(Args... args) noexcept { loop(args...); }
#endif
};

}  // namespace detail

// One loop, compiled for every instruction set of the host's architecture.  For integers, and for floats whose every step is
// rounded on its own: compilers keep to that, and on 32-bit ARM leave floats to the scalar unit, which keeps denormals.
template <auto loop, class Function>
inline constexpr Variants<Function> loop_versions{detail::LoopVersions<loop, Function>::scalar,
                                                  BISEAM_ON_ARM((detail::LoopVersions<loop, Function>::neon)),
                                                  BISEAM_ON_X86_64((detail::LoopVersions<loop, Function>::avx2)),
                                                  BISEAM_ON_X86_64((detail::LoopVersions<loop, Function>::avx512))};

// For rows as short as strips are wide: in vectors of 64 bytes the rest of a row takes longer than whole vectors save.
template <auto loop, class Function>
inline constexpr Variants<Function> short_loop_versions{detail::LoopVersions<loop, Function>::scalar,
                                                        BISEAM_ON_ARM((detail::LoopVersions<loop, Function>::neon)),
                                                        BISEAM_ON_X86_64((detail::LoopVersions<loop, Function>::avx2))};

}  // namespace biseam
