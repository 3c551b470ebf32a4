// `biseam view` on a panorama in a scratch folder.
#pragma once

#include <gtest/gtest.h>

#include "picture/write_picture.hpp"
#include "tool/support/command_line.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::test {

inline std::string make_panorama(const ScratchFolder& folder) {
  const std::string path = folder / "panorama.png";
  tool::write_picture(path, tool::Rgb(64, 32));
  return path;
}

inline void expect_refusal(const std::vector<std::string>& words, int exit_code, const std::string& what) {
  const Outcome outcome = run_tool(words);
  EXPECT_EQ(outcome.exit_code, exit_code) << outcome.message;
  EXPECT_NE(outcome.message.find(what), outcome.message.npos) << outcome.message;
}

}  // namespace biseam::test
