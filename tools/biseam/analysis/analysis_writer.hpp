#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "analysis/analysis_head.hpp"
#include "base/replace_file.hpp"

namespace biseam::tool {

// Of what it wrote it keeps the times alone.
class AnalysisWriter {
 public:
  // Throws Failure (output), as the others do.
  explicit AnalysisWriter(const std::string& path) : file_(path) {}

  const std::string& name() const { return file_.name(); }
  std::int64_t frames() const { return std::int64_t(times_.size()); }

  void begin(const AnalysisHead& head);
  // time: in the clip's time base, later than the one before; guide: of the head's size.
  void add(std::int64_t time, std::span<const std::uint8_t> guide);
  void finish();

 private:
  ReplacementFile file_;
  std::vector<std::int64_t> times_;
};

}  // namespace biseam::tool
