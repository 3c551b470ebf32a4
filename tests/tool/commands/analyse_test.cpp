#include <gtest/gtest.h>

#include "tool/support/places.hpp"
#include "tool/support/process.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::test {
namespace {

void expect_refused(const std::vector<std::string>& words, const std::string& line) {
  std::vector<std::string> command = {kTool};
  command.insert(command.end(), words.begin(), words.end());
  const Finished finished = run(command);
  EXPECT_EQ(finished.exit_code, 2) << finished.err;
  EXPECT_EQ(finished.err, "biseam: " + line + "\n");
}

TEST(Analyse, AnOutputThatIsAnInputIsRefused) {
  const ScratchFolder folder;
  write_bytes(folder / "in.mp4", "a recording");
  expect_refused({"analyse", folder / "in.mp4", "-o", folder / "in.mp4"},
                 "-o " + folder / "in.mp4" + ": is the same file as the input " + folder / "in.mp4");
  EXPECT_EQ(read_bytes(folder / "in.mp4"), "a recording");
}

TEST(Analyse, OptionsAreChecked) {
  expect_refused({"analyse", "in.mp4", "-o", "a.bsa", "--width", "100"}, "--width: '100' must be a multiple of 8, 64 to 16384");
  expect_refused({"analyse", "in.nv12", "-o", "a.bsa", "--size", "64x32"}, "--rate: raw frames of a clip need their rate");
}

TEST(Analyse, WhatItSettledIsNotSettledAgain) {
  const std::vector<std::vector<std::string>> given = {{"--light", "off"}, {"--near", "on"}, {"--seams", "free"},
                                                       {"--search"},       {"--no-search"},  {"--seam-hold", "3"}};
  for (const auto& words : given) {
    std::vector<std::string> command = {"stitch", "in.mp4", "-o", "out.mp4", "--analysis", "a.bsa"};
    command.insert(command.end(), words.begin(), words.end());
    expect_refused(command, words[0] + ": not with --analysis, which has settled it");
  }
  expect_refused({"stitch", "in.mp4", "-o", "out.mp4", "--analysis", "a.bsa", "--engine", "exact"},
                 "--analysis: not for --engine exact");
  expect_refused({"stitch", "in.png", "-o", "out.png", "--analysis", "a.bsa"}, "--analysis: only for video");
}

TEST(Analyse, AnAnalysisIsNotReplacedByAPanorama) {
  const ScratchFolder folder;
  write_bytes(folder / "a.mkv", "an analysis");
  expect_refused({"stitch", "in.mp4", "-o", folder / "a.mkv", "--analysis", folder / "a.mkv"},
                 "-o " + folder / "a.mkv" + ": is the same file as --analysis " + folder / "a.mkv");
}

}  // namespace
}  // namespace biseam::test
