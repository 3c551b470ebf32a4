#pragma once

#include "base/isa.hpp"

// A kernel's version where the host's architecture has it, null elsewhere.
#if defined(BISEAM_X86_64)
#define BISEAM_ON_X86_64(version) version
#else
#define BISEAM_ON_X86_64(version) nullptr
#endif
#if defined(BISEAM_ARM)
#define BISEAM_ON_ARM(version) version
#else
#define BISEAM_ON_ARM(version) nullptr
#endif

namespace biseam {

// One kernel in its versions, all of which give the same bytes.  scalar is the definition; the others may be null.
template <class Function>
struct Variants {
  Function* scalar;
  Function* neon = nullptr;
  Function* avx2 = nullptr;
  Function* avx512 = nullptr;

  // The version of exactly this set, null where there is none.
  constexpr Function* of(Isa isa) const noexcept {
    switch (isa) {
      case Isa::neon:
        return neon;
      case Isa::avx2:
        return avx2;
      case Isa::avx512:
        return avx512;
      default:
        return scalar;
    }
  }

  // The version to be called now.
  Function* best() const noexcept {
    const Isa limit = isa_in_use();
    if (limit >= Isa::avx512 && avx512 != nullptr) return avx512;
    if (limit >= Isa::avx2 && avx2 != nullptr) return avx2;
    if (limit >= Isa::neon && neon != nullptr) return neon;
    return scalar;
  }
};

}  // namespace biseam
