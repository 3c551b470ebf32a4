#pragma once

#include <atomic>

// Architectures with kernels of their own.  On 32-bit ARM the vector unit is asked for at run time: kernels name it with
// BISEAM_NEON, whatever the compiler's own flags allow.
#if defined(__x86_64__)
#define BISEAM_X86_64 1
#define BISEAM_AVX2 __attribute__((target("avx2")))
#define BISEAM_AVX512 __attribute__((target("avx2,avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi,avx512vnni")))
#elif defined(__aarch64__) || (defined(__arm__) && defined(__ARM_FP) && defined(__GNUC__) && !defined(__clang__))
#define BISEAM_ARM 1
#if defined(__arm__)
#define BISEAM_NEON __attribute__((target("fpu=neon")))
#else
#define BISEAM_NEON
#endif
#endif

// A step of a kernel, part of every loop that takes it.  Sanitizers' checks make such loops so long that compilers take several
// times as long over them: there a step is a function.
#if defined(BISEAM_SANITIZED)
#define BISEAM_INLINED inline
#else
#define BISEAM_INLINED [[gnu::always_inline]] inline
#endif

namespace biseam {

// Instruction sets in rising order; those of other architectures never occur on a host.  avx512 stands for what Ice Lake and
// Zen 4 brought: F, BW, DQ, VL, VBMI and VNNI.
enum class Isa : int { scalar, neon, avx2, avx512 };

inline constexpr Isa kIsas[] = {Isa::scalar, Isa::neon, Isa::avx2, Isa::avx512};

const char* name_of(Isa isa) noexcept;

// Whether processor and operating system can run it.
bool can_run(Isa isa) noexcept;

namespace detail {
extern std::atomic<int> isa_in_use;  // negative: not asked yet
Isa find_isa() noexcept;
}  // namespace detail

// The most capable set that kernels may use now.
inline Isa isa_in_use() noexcept {
  const int isa = detail::isa_in_use.load(std::memory_order_relaxed);
  return isa >= 0 ? static_cast<Isa>(isa) : detail::find_isa();
}

// Holds the kernels to a set and those below, from the next call on.  For tests and measurements: the library never calls it.
// False, and nothing changes, where the host can't run it.
bool limit_isa(Isa isa) noexcept;

}  // namespace biseam
