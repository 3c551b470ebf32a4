#pragma once

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/isa.hpp"

namespace biseam::test {

// Holds the kernels to the set that BISEAM_ISA names; ends the program where that can't be done, so that no run counts for a
// set it did not use.
inline void force_isa_by_environment() {
  const char* wanted = std::getenv("BISEAM_ISA");
  if (wanted == nullptr) return;
  for (const Isa isa : kIsas) {
    if (std::strcmp(wanted, name_of(isa)) == 0 && limit_isa(isa)) return;
  }
  std::fprintf(stderr, "BISEAM_ISA=%s: no such instruction set here\n", wanted);
  std::exit(2);
}

}  // namespace biseam::test
