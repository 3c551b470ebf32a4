#include "panorama/records.hpp"

#include <cstdarg>
#include <cstdio>

namespace biseam {

int32_t report(BiseamError* error, BiseamErrorCode code, const char* format, ...) noexcept {
  if (error == nullptr) return code;
  error->code = code;
  va_list values;
  va_start(values, format);
  std::vsnprintf(error->text, sizeof error->text, format, values);
  va_end(values);
  return code;
}

}  // namespace biseam
