// Clips with a video stream for each lens.
#include "media/lens_streams.hpp"

#include <gtest/gtest.h>

#include "base/failure.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/clip_probe.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

std::vector<Nv12> lens_walk(int index, int frames) {
  std::vector<Nv12> all;
  for (int step = 0; step < frames; ++step) all.push_back(walk_lens(index, step));
  return all;
}

// Sound goes on after the pictures, so that the streams end at different times.
ClipSpec with_second(std::vector<Nv12> second) {
  ClipSpec spec;
  spec.second = std::move(second);
  spec.sound = 0.9;
  return spec;
}

void write_lens_streams(const std::string& path, int frames) {
  write_clip(path, with_second(lens_walk(1, frames)), lens_walk(0, frames));
}

std::vector<Nv12> pictures_of(const ScratchFolder& folder, const std::string& input,
                              const std::vector<std::string>& more = {}) {
  const Finished finished = stitch_clip(folder / input, folder / "out.mp4", more);
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  return ClipProbe(folder / "out.mp4").pictures;
}

std::string refusal(const ScratchFolder& folder, const std::vector<std::string>& more, int exit_code) {
  const Finished finished = stitch_clip(folder / "in.mp4", folder / "out.mp4", more);
  EXPECT_EQ(finished.exit_code, exit_code) << finished.err;
  return finished.err;
}

class LensStreamsOf : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(Clip, LensStreamsOf, testing::Values("in.mp4", "in.mkv"),
                         [](const auto& parameter) { return std::string(parameter.param).substr(3); });

TEST_P(LensStreamsOf, ArePaired) {
  const ScratchFolder folder;
  write_lens_streams(folder / GetParam(), 5);
  write_clip(folder / "one.mp4", {}, walk(5));
  const Finished finished = stitch_clip(folder / GetParam(), folder / "out.mp4");
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(finished.err.find(": stream 0 is taken as lens 0, stream 1 as lens 1\n"), std::string::npos) << finished.err;
  EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 2) << finished.err;  // and the summary
  const ClipProbe in(folder / GetParam()), out(folder / "out.mp4");
  ASSERT_EQ(out.streams.size(), 2u);
  EXPECT_EQ(out.streams[1].bytes(), in.streams[2].bytes());
  EXPECT_EQ(raw_bytes(out.pictures), raw_bytes(pictures_of(folder, "one.mp4")));
}

TEST(LensStreams, CanBeToldInAnyOrder) {
  const ScratchFolder folder;
  write_lens_streams(folder / "in.mp4", 3);
  std::vector<Nv12> swapped;
  for (int step = 0; step < 3; ++step) swapped.push_back(join(walk_lens(1, step), walk_lens(0, step), true));
  write_clip(folder / "swapped.mp4", {}, swapped);
  EXPECT_EQ(raw_bytes(pictures_of(folder, "in.mp4", {"--streams", "1,0"})), raw_bytes(pictures_of(folder, "swapped.mp4")));
}

TEST(LensStreams, APartIsThatOfBoth) {
  const ScratchFolder folder;
  write_lens_streams(folder / "in.mp4", 8);
  write_clip(folder / "one.mp4", {}, walk(8));
  const std::vector<std::string> part = {"--from", "0.08", "--to", "0.24"};
  const std::vector<Nv12> pictures = pictures_of(folder, "in.mp4", part);
  EXPECT_EQ(pictures.size(), 4u);
  EXPECT_EQ(raw_bytes(pictures), raw_bytes(pictures_of(folder, "one.mp4", part)));
}

TEST(LensStreams, RawFramesLeaveNoneOut) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.second = lens_walk(1, 2);
  write_clip(folder / "in.mp4", spec, lens_walk(0, 2));
  write_clip(folder / "one.mp4", {}, walk(2));
  for (const char* name : {"in", "one"}) {
    const std::string stem = folder / name;
    const Finished finished = run_stitch(with({stem + ".mp4", "-o", stem + ".nv12"}, known_lenses()));
    EXPECT_EQ(finished.exit_code, 0) << finished.err;
  }
  EXPECT_EQ(read_bytes(folder / "in.nv12"), read_bytes(folder / "one.nv12"));
}

TEST(LensStreams, APictureIsMadeOfBothToo) {
  const ScratchFolder folder;
  write_lens_streams(folder / "in.mp4", 2);
  write_clip(folder / "0.mp4", {}, lens_walk(0, 2));
  write_clip(folder / "1.mp4", {}, lens_walk(1, 2));
  const Finished one = run_stitch(with({folder / "in.mp4", "-o", folder / "one.png"}, known_lenses()));
  const Finished two = run_stitch(with({folder / "0.mp4", folder / "1.mp4", "-o", folder / "two.png"}, known_lenses()));
  EXPECT_EQ(one.exit_code, 0) << one.err;
  EXPECT_EQ(two.exit_code, 0) << two.err;
  EXPECT_EQ(read_bytes(folder / "one.png"), read_bytes(folder / "two.png"));
}

TEST(LensStreams, StreamsThatMayHoldBothCirclesStayAsTheyAre) {
  const ScratchFolder folder;
  write_clip(folder / "in.mp4", with_second(walk(3)), walk(3));
  write_clip(folder / "one.mp4", {}, walk(3));
  EXPECT_EQ(raw_bytes(pictures_of(folder, "in.mp4")), raw_bytes(pictures_of(folder, "one.mp4")));
  pictures_of(folder, "in.mp4");
  EXPECT_EQ(ClipProbe(folder / "out.mp4").streams.size(), 3u);
}

TEST(LensStreams, AreFoundByTheirShape) {
  const ScratchFolder folder;
  const auto found = [&](Size first, Size second, AVRational pixel = {0, 1}) {
    ClipSpec spec;
    spec.second = {Nv12(second.width, second.height)};
    spec.pixel = pixel;
    write_clip(folder / "in.mp4", spec, {Nv12(first.width, first.height)});
    return find_lens_streams(Container(folder / "in.mp4")).has_value();
  };
  EXPECT_TRUE(found({64, 64}, {64, 64}));
  EXPECT_TRUE(found({112, 64}, {112, 64}));
  EXPECT_TRUE(found({64, 112}, {64, 112}));
  EXPECT_FALSE(found({128, 64}, {128, 64}));
  EXPECT_FALSE(found({64, 128}, {64, 128}));
  EXPECT_FALSE(found({64, 64}, {32, 32}));
  EXPECT_FALSE(found({64, 64}, {64, 64}, {2, 1}));
  EXPECT_TRUE(found({64, 128}, {64, 128}, {2, 1}));
}

TEST(LensStreams, ALayoutMeansOneStream) {
  const ScratchFolder folder;
  write_lens_streams(folder / "in.mp4", 2);
  const Container file(folder / "in.mp4");
  EXPECT_FALSE(choose_lens_streams(file, {std::nullopt, false}));
  EXPECT_EQ(choose_lens_streams(file, {LensStreams{1, 0}, false}), (LensStreams{1, 0}));
  EXPECT_NE(refusal(folder, {"--streams", "0,1", "--layout", "top-bottom"}, 2).find("--streams: with --layout"),
            std::string::npos);
}

TEST(LensStreams, WhatCanNotBeIsRefused) {
  const ScratchFolder folder;
  write_lens_streams(folder / "in.mp4", 2);
  EXPECT_NE(refusal(folder, {"--streams", "0,3"}, 3).find("in.mp4: has no stream 3, only 0 to 2"), std::string::npos);
  EXPECT_NE(refusal(folder, {"--streams", "2,1"}, 3).find("in.mp4: stream 2 is no video"), std::string::npos);
  for (const char* text : {"0", "0,", "0,1,2", "-1,0", "1,1", "a,b", "99999999999,0"}) {
    EXPECT_NE(refusal(folder, {std::string("--streams=") + text}, 2).find("--streams: '"), std::string::npos) << text;
  }
  const Finished two = run_stitch({folder / "in.mp4", folder / "in.mp4", "--streams", "0,1", "-o", folder / "out.mp4"});
  EXPECT_EQ(two.exit_code, 2) << two.err;
  const Finished raw = run_stitch({"-", "--size", "64x64", "--streams", "0,1", "-o", folder / "out.png"});
  EXPECT_EQ(raw.exit_code, 2) << raw.err;
  write_clip(folder / "in.mp4", with_second({Nv12(64, 64)}), {walk_lens(0, 0)});
  EXPECT_NE(refusal(folder, {"--streams", "0,1"}, 3).find("stream 0 has pictures of 120x120, stream 1 of 64x64"),
            std::string::npos);
}

TEST(LensStreams, APipeCanNotBeReadTwice) {
  const ScratchFolder folder;
  write_lens_streams(folder / "in.mkv", 2);
  const Finished finished = run_stitch({"-", "-o", folder / "out.mp4"}, read_bytes(folder / "in.mkv"));
  EXPECT_EQ(finished.exit_code, 3);
  EXPECT_NE(finished.err.find("not from a pipe"), std::string::npos) << finished.err;
}

}  // namespace
}  // namespace biseam::tool
