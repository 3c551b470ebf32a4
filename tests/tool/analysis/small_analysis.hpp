#pragma once

#include <string>
#include <vector>

#include "analysis/analysis_head.hpp"
#include "analysis/analysis_writer.hpp"

namespace biseam::test {

inline tool::AnalysisHead small_head() {
  tool::AnalysisHead head;
  head.guide_bytes = 20;
  head.panorama = {256, 128};
  head.lens[0] = {120, 122};
  head.lens[1] = {124, 126};
  head.light = true;
  head.camera = 0x0123456789abcdef;
  head.clip = {{1, 12800}, {5000000000, 77}};
  return head;
}

// Guides of frames at 512, 1024, ... that hold their number.
inline void write_small(const std::string& path, int frames) {
  tool::AnalysisWriter writer(path);
  writer.begin(small_head());
  for (int i = 0; i < frames; ++i) writer.add(512 * (i + 1), std::vector<std::uint8_t>(20, std::uint8_t(i)));
  writer.finish();
}

}  // namespace biseam::test
