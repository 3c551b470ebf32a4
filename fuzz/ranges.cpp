// The Range header of a request: eight bytes say how long the file is, the rest is the header.
#include "view/byte_range.hpp"

#include <cstdint>
#include <string>

#include "fuzz/expect.hpp"
#include "fuzz/input.hpp"

using namespace biseam;
using namespace biseam::tool;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::uint64_t low = input.word(), file_bytes = std::uint64_t{input.word()} << 32 | low;
  const ByteRange range = parse_range(input.rest(), file_bytes);
  if (range.kind != RangeKind::part) {
    fuzz::expect(range.first == 0 && range.count == 0, "only a part has numbers");
    return 0;
  }
  fuzz::expect(range.count > 0 && range.first < file_bytes, "a part has bytes of the file");
  fuzz::expect(range.count <= file_bytes - range.first, "a part ends inside the file");
  return 0;
}
