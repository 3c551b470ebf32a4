#pragma once

#include <cstdio>
#include <cstdlib>

namespace biseam::fuzz {

// Ends the program, which a fuzzer takes for a finding, when what should hold does not.
inline void expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

}  // namespace biseam::fuzz
