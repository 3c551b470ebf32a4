#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "analysis/analysis_head.hpp"
#include "base/byte_source.hpp"

namespace biseam::tool {

// An analysis in a file, of which head and times are held; guides are read when they are asked for.
class AnalysisReader {
 public:
  // Throws Failure (input): there is no such file, or it is no analysis, of another version, damaged or cut short.
  explicit AnalysisReader(const std::string& path);

  const std::string& name() const { return source_.name(); }
  const AnalysisHead& head() const { return head_; }
  std::size_t frames() const { return times_.size(); }

  // Of the picture at this time; valid until the next call.  Empty: the analysis knows nothing of it.  Throws Failure (input).
  // Whether a guide is sound is for those to say who follow it.
  std::span<const std::uint8_t> guide_at(std::int64_t time);

 private:
  std::vector<std::uint8_t> read(std::uint64_t from, std::size_t count) const;
  void read_times(std::uint64_t size);
  [[noreturn]] void refuse(const char* what) const;

  ByteSource source_;
  AnalysisHead head_;
  std::vector<std::int64_t> times_;
  std::vector<std::uint8_t> guide_;
};

}  // namespace biseam::tool
