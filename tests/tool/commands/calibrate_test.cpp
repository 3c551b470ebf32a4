// What `biseam calibrate` says to options that it can't use.
#include <gtest/gtest.h>

#include "tool/support/places.hpp"
#include "tool/support/process.hpp"

namespace biseam::test {
namespace {

std::string said(std::vector<std::string> words) {
  words.insert(words.begin(), {kTool, "calibrate"});
  const Finished finished = run(words);
  EXPECT_EQ(finished.exit_code, 2);
  EXPECT_EQ(finished.out, "");
  return finished.err;
}

TEST(CalibrateOptions, WhatIsHeldNeedsValuesAndAName) {
  EXPECT_EQ(said({"a.png", "-o", "b.toml", "--fix", "p"}), "biseam: --fix: needs the values of --start\n");
  EXPECT_EQ(said({"a.png", "-o", "b.toml", "--start", "c.toml", "--fix", "p,x"}),
            "biseam: --fix: 'x': p, k, centre and turn can be held\n");
  EXPECT_EQ(said({"a.png", "-o", "b.toml", "--start", "c.toml", "--fix", "p", "--in-lens"}),
            "biseam: --in-lens: finds what --fix holds\n");
}

TEST(CalibrateOptions, StandardInputIsRefused) {
  EXPECT_EQ(said({"-", "-o", "b.toml"}), "biseam: calibrate: standard input can't be sought, files are wanted\n");
}

TEST(CalibrateOptions, ReportNeedsAFileOfItsOwn) {
  EXPECT_EQ(said({"a.png", "-o", "b.toml", "--report", "./b.toml"}),
            "biseam: --report ./b.toml: is the same file as -o b.toml\n");
  EXPECT_EQ(said({"a.png", "-o", "b.toml", "--report", "a.png"}),
            "biseam: --report a.png: is the same file as the input a.png\n");
  EXPECT_EQ(said({"a.png", "-o", "b.toml", "--report", "-"}),
            "biseam: --report: needs a file, standard output is the profile's\n");
  EXPECT_EQ(said({"a.png", "-o", "b.toml", "--report", "b.png"}),
            "biseam: --report b.png: the name must end in .html or .htm\n");
}

}  // namespace
}  // namespace biseam::test
