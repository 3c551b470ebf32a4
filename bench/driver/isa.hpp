// For contestants that are linked with the library, whose this is.
#pragma once

#include <cstdio>
#include <cstdlib>

#include "base/isa.hpp"
#include "driver/setup.hpp"

namespace biseam::bench {

// Before the library is asked for anything.  Ends the program where this machine hasn't got it.
inline void hold_to_isa(const Setup& setup) {
  if (setup.isa == "best") return;
  for (const Isa known : kIsas) {
    if (setup.isa == name_of(known) && limit_isa(known)) return;
  }
  std::fprintf(stderr, "this machine can't be held to '%s'\n", setup.isa.c_str());
  std::exit(3);
}

}  // namespace biseam::bench
