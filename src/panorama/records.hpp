// Records of the C interface that begin with their size.
#pragma once

#include <cstdint>
#include <cstring>

#include "biseam/panorama.h"

namespace biseam {

// Writes what went wrong, in one line; error may be null.  Returns the code.
__attribute__((format(printf, 3, 4))) int32_t report(BiseamError* error, BiseamErrorCode code, const char* format,
                                                     ...) noexcept;

// A caller's record, of this or an older version of the library: what it lacks has its default.  False: no such record.
template <class Record>
bool read_record(const Record* given, const Record& defaults, uint32_t least_size, Record& read) noexcept {
  read = defaults;
  if (given == nullptr || given->size < least_size || given->size > sizeof(Record)) return false;
  std::memcpy(&read, given, given->size);
  return true;
}

}  // namespace biseam
