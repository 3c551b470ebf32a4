#include "analysis/analysis_writer.hpp"

#include "base/little_endian.hpp"

namespace biseam::tool {

void AnalysisWriter::begin(const AnalysisHead& head) { file_.write(head_bytes(head)); }

void AnalysisWriter::add(std::int64_t time, std::span<const std::uint8_t> guide) {
  file_.write(guide);
  times_.push_back(time);
}

void AnalysisWriter::finish() {
  std::vector<std::uint8_t> end;
  for (const std::int64_t time : times_) append_number(end, std::uint64_t(time), 8);
  append_number(end, times_.size(), 8);
  append_number(end, sum_of(end), 4);
  append_number(end, kAnalysisEnd, 4);
  file_.write(end);
  file_.commit();
}

}  // namespace biseam::tool
