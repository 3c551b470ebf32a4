// Clips analysed by the tool, and stitched by what came of it.
#pragma once

#include <string>
#include <vector>

#include "tool/support/run_clip.hpp"

namespace biseam::test {

inline Finished run_analyse(const std::vector<std::string>& arguments) { return run(with({kTool, "analyse"}, arguments)); }

inline void analyse(const std::string& clip, const std::string& analysis, const std::vector<std::string>& more = {}) {
  const Finished finished = run_analyse(with(with({clip, "-o", analysis}, known_lenses()), more));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
}

// Raw frames.
inline std::string stitched_by(const std::string& analysis, const std::string& clip,
                               const std::vector<std::string>& more = {}) {
  const Finished finished = run_stitch(with(with({clip, "--analysis", analysis, "-o", "-"}, known_lenses()), more));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  return finished.out;
}

}  // namespace biseam::test
