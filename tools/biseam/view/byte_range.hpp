// The Range header of HTTP.
#pragma once

#include <cstdint>
#include <string_view>

namespace biseam::tool {

enum class RangeKind {
  whole,  // none given, or one that is to be ignored: another unit, several ranges, nonsense
  part,
  outside  // nothing of the file is within it
};

struct ByteRange {
  RangeKind kind = RangeKind::whole;
  std::uint64_t first = 0, count = 0;  // of a part; within the file, count > 0
};

// header is the field's value, "bytes=0-99" for example.
ByteRange parse_range(std::string_view header, std::uint64_t file_bytes);

}  // namespace biseam::tool
