#include "base/isa.hpp"

#if defined(BISEAM_ARM) && defined(__arm__)
#include <sys/auxv.h>
#endif

namespace biseam {

namespace detail {

// The one value outside a record: a property of the processor, the same for every engine and thread.
constinit std::atomic<int> isa_in_use{-1};

Isa find_isa() noexcept {
  Isa best = Isa::scalar;
  for (const Isa isa : kIsas) {
    if (can_run(isa)) best = isa;
  }
  isa_in_use.store(static_cast<int>(best), std::memory_order_relaxed);
  return best;
}

}  // namespace detail

const char* name_of(Isa isa) noexcept {
  switch (isa) {
    case Isa::neon:
      return "neon";
    case Isa::avx2:
      return "avx2";
    case Isa::avx512:
      return "avx512";
    default:
      return "scalar";
  }
}

bool can_run(Isa isa) noexcept {
  if (isa == Isa::scalar) return true;
#if defined(BISEAM_X86_64)
  __builtin_cpu_init();
  if (isa == Isa::avx2) return __builtin_cpu_supports("avx2");
  if (isa == Isa::avx512) {
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi") &&
           __builtin_cpu_supports("avx512vnni");
  }
#elif defined(BISEAM_ARM) && defined(__arm__)
  constexpr unsigned long neon_bit = 1ul << 12;  // HWCAP_NEON of the kernel's interface
  return isa == Isa::neon && (getauxval(AT_HWCAP) & neon_bit) != 0;
#elif defined(BISEAM_ARM)
  return isa == Isa::neon;
#endif
  return false;
}

bool limit_isa(Isa isa) noexcept {
  if (!can_run(isa)) return false;
  detail::isa_in_use.store(static_cast<int>(isa), std::memory_order_relaxed);
  return true;
}

}  // namespace biseam
