#include "panorama/error_writer.hpp"

#include <cstdarg>
#include <cstdio>

namespace biseam {

Error ErrorWriter::write(ErrorCode code, const char* format, ...) {
  Error error;
  error.code_ = code;
  va_list values;
  va_start(values, format);
  std::vsnprintf(error.text_, sizeof error.text_, format, values);
  va_end(values);
  return error;
}

}  // namespace biseam
