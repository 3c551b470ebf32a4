// Values of options: times, rates and sizes are refused in one line or lie where their users expect them.
#include <cstdint>
#include <string>

#include "base/failure.hpp"
#include "fuzz/expect.hpp"
#include "fuzz/input.hpp"
#include "picture/picture.hpp"
#include "picture/read_picture.hpp"
#include "text/time_text.hpp"

using namespace biseam;
using namespace biseam::tool;

namespace {

void try_time(const std::string& text) {
  const std::int64_t time = parse_time("--from", text);
  fuzz::expect(fuzz::is_one_line(time_text(time, {1, 1000000})), "a time has a text");
}

void try_rate(const std::string& text) {
  const AVRational rate = parse_rate("--rate", text);
  fuzz::expect(rate.num > 0 && rate.den > 0, "a rate is above 0");
}

void try_size(const std::string& text) {
  const Size size = parse_size(text);
  const bool even = size.width % 2 == 0 && size.height % 2 == 0;
  fuzz::expect(even && size.width >= 2 && size.height >= 2, "sides are even, 2 or more");
  fuzz::expect(nv12_bytes(size) <= INT32_MAX, "a picture's bytes are counted in 32 bits");
  const Size again = parse_size(size_text(size));
  fuzz::expect(again == size, "a size that is written is read");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A command line has no zeros in it.
  const std::string text = std::string(reinterpret_cast<const char*>(data), size).c_str();
  for (const auto attempt : {try_time, try_rate, try_size}) {
    try {
      attempt(text);
    } catch (const Failure& failure) {
      fuzz::expect(failure.code() == ExitCode::usage && *failure.what() != 0, "what is refused is the user's mistake");
    }
  }
  return 0;
}
