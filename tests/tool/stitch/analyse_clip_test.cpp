#include "stitch/analyse_clip.hpp"

#include <gtest/gtest.h>

#include <csignal>

#include "tool/support/clip_maker.hpp"
#include "tool/support/run_analysis.hpp"
#include "tool/support/scratch_folder.hpp"
#include "tool/support/started.hpp"

namespace biseam::tool {
namespace {

using namespace test;

TEST(AnalyseClip, TellsWhatCameOfItInOneLine) {
  const ScratchFolder folder;
  write_clip(folder / "in.mkv", {}, walk(3));
  const Finished finished = run_analyse(with({folder / "in.mkv", "-o", folder / "in.bsa"}, known_lenses()));
  EXPECT_EQ(finished.exit_code, 0);
  EXPECT_EQ(finished.err.rfind("biseam: 3 frames in ", 0), 0u) << finished.err;
  EXPECT_NE(finished.err.find(" fps; 1.4 kB a frame\n"), std::string::npos) << finished.err;
  EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 1) << finished.err;
  const Finished piped = run_analyse(with({folder / "in.mkv", "-o", "-"}, known_lenses()));
  EXPECT_EQ(piped.out, read_bytes(folder / "in.bsa"));
}

TEST(AnalyseClip, WhatCantBeReadOrWrittenLeavesNothing) {
  const ScratchFolder folder;
  write_bytes(folder / "in.mkv", "no clip");
  EXPECT_EQ(run_analyse({folder / "in.mkv", "-o", folder / "in.bsa"}).exit_code, 3);
  EXPECT_EQ(run_analyse({folder / "none.mkv", "-o", folder / "in.bsa"}).exit_code, 3);
  EXPECT_EQ(run_analyse({folder / "in.mkv", "-o", folder / "none/in.bsa"}).exit_code, 4);
  EXPECT_EQ(folder.names(), std::vector<std::string>{"in.mkv"});
}

TEST(AnalyseClip, AnInterruptLeavesNothing) {
  const std::string frames = raw_bytes(walk(1));
  for (const int signal : {SIGINT, SIGTERM}) {
    const ScratchFolder folder;
    Started started(
        with({kTool, "analyse", "-", "--size", "240x120", "--rate", "25", "-o", folder / "out.bsa"}, known_lenses()));
    for (int i = 0; i < 20; ++i) started.send(frames);
    started.wait_until_read();
    started.signal(signal);
    const Finished finished = started.finish();
    EXPECT_EQ(finished.exit_code, 130) << finished.err;
    EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 1) << finished.err;
    EXPECT_TRUE(folder.names().empty());
  }
}

}  // namespace
}  // namespace biseam::tool
