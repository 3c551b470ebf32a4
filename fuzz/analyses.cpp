// Analyses of clips: refused in one line, or a guide for every time that they name and for no other one.  The last byte chooses
// which sums are made to hold.
#include <cstdint>
#include <vector>

#include "analysis/analysis_reader.hpp"
#include "base/failure.hpp"
#include "base/little_endian.hpp"
#include "fuzz/expect.hpp"
#include "fuzz/input.hpp"
#include "fuzz/memory_file.hpp"

using namespace biseam;
using namespace biseam::tool;

namespace {

using Bytes = std::vector<std::uint8_t>;

void put(Bytes& bytes, std::size_t at, std::uint32_t number) {
  for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = std::uint8_t(number >> (8 * i));
}

void mend_head(Bytes& file) {
  if (file.size() < kAnalysisHeadBytes) return;
  put(file, kAnalysisHeadBytes - 4, sum_of({file.data(), kAnalysisHeadBytes - 4}));
}

// Over the times and their number, which is the number itself that says where they begin.
void mend_times(Bytes& file) {
  if (file.size() < kAnalysisHeadBytes + kAnalysisEndBytes) return;
  const std::size_t end = file.size() - kAnalysisEndBytes;
  const std::uint64_t frames = number_at(&file[end], 8);
  if (frames <= (end - kAnalysisHeadBytes) / 8) {
    put(file, end + 8, sum_of({&file[end - std::size_t(frames) * 8], std::size_t(frames) * 8 + 8}));
  }
}

void read_all(AnalysisReader& analysis, const Bytes& file) {
  const std::size_t frames = analysis.frames(), guide_bytes = analysis.head().guide_bytes;
  fuzz::expect(file.size() == kAnalysisHeadBytes + frames * (guide_bytes + 8) + kAnalysisEndBytes, "every byte has its place");
  const Bytes head = head_bytes(analysis.head());
  fuzz::expect(head_bytes(read_head(head, "again")) == head, "what is written of a head is read");
  const std::size_t times = file.size() - kAnalysisEndBytes - 8 * frames;
  for (std::size_t i = 0; i < frames; ++i) {
    const auto time = std::int64_t(number_at(&file[times + 8 * i], 8));
    fuzz::expect(analysis.guide_at(time).size() == guide_bytes, "each time has a guide");
    if (i + 1 == frames && time < INT64_MAX) fuzz::expect(analysis.guide_at(time + 1).empty(), "later ones have none");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  Bytes bytes(data, data + size - 1);
  if (data[size - 1] & 1) mend_head(bytes);
  if (data[size - 1] & 2) mend_times(bytes);
  const fuzz::MemoryFile file(bytes.data(), bytes.size());
  try {
    AnalysisReader analysis(file.path());
    read_all(analysis, bytes);
  } catch (const Failure& refusal) {
    fuzz::expect(fuzz::is_one_line(refusal.what()), "a refusal is one line");
  }
  return 0;
}
