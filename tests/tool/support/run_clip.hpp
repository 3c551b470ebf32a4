// Clips through the tool.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "tool/support/walk.hpp"

namespace biseam::test {

inline Finished stitch_clip(const std::string& input, const std::string& output, const std::vector<std::string>& more = {}) {
  const std::vector<std::string> lossless = {"--crf", "0", "--preset", "ultrafast"};
  return run_stitch(with(with(with({input, "-o", output}, known_lenses()), lossless), more));
}

// Nothing is told but the summary.
inline void expect_success(const Finished& finished, int frames) {
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  const std::string start = "biseam: " + std::to_string(frames) + (frames == 1 ? " frame in " : " frames in ");
  EXPECT_EQ(finished.err.rfind(start, 0), 0u) << finished.err;
  EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 1) << finished.err;
}

}  // namespace biseam::test
