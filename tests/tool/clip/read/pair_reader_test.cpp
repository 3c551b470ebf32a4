// Two clips, one of each lens, and one clip with both circles in another layout.
#include "clip/read/pair_reader.hpp"

#include <gtest/gtest.h>

#include "clip/read/open_clips.hpp"
#include "picture/frame_over.hpp"
#include "picture/read_picture.hpp"
#include "picture/write_picture.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/clip_probe.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

std::vector<Nv12> lens_walk(int index, int frames, int first = 0) {
  std::vector<Nv12> all;
  for (int step = first; step < first + frames; ++step) all.push_back(walk_lens(index, step));
  return all;
}

std::string expected_walk(int frames, int first = 0) {
  std::vector<Nv12> pairs;
  for (int step = first; step < first + frames; ++step) pairs.push_back(join(walk_lens(0, step), walk_lens(1, step), true));
  return stitch_singly(pairs, unmatched());
}

Finished stitch_two(const ScratchFolder& folder, const std::vector<std::string>& more = {}) {
  const std::vector<std::string> lossless = {"--crf", "0", "--preset", "ultrafast"};
  return run_stitch(
      with(with(with({folder / "0.mp4", folder / "1.mp4", "-o", folder / "out.mp4"}, as_pictures()), lossless), more));
}

std::vector<std::int64_t> milliseconds(const std::vector<std::int64_t>& times) {
  std::vector<std::int64_t> out;
  for (const std::int64_t time : times) out.push_back((time + 500) / 1000);
  return out;
}

// Full range, so that it is taken as a picture without a change of its samples, too.
void write_jpeg_like(const std::string& path, const Nv12& picture) {
  ClipSpec spec;
  spec.colour = {AVCOL_RANGE_JPEG, AVCOL_SPC_SMPTE170M, AVCOL_PRI_SMPTE170M, AVCOL_TRC_SMPTE170M, AVCHROMA_LOC_CENTER};
  write_clip(path, spec, {picture});
}

Nv12 picture_of(const std::string& raw) {
  Nv12 picture(kWalkWidth, kWalkWidth / 2);
  if (raw.size() != nv12_bytes({kWalkWidth, kWalkWidth / 2})) return picture;
  std::copy_n(raw.begin(), picture.luma.size(), picture.luma.begin());
  std::copy_n(raw.begin() + std::ptrdiff_t(picture.luma.size()), picture.chroma.size(), picture.chroma.begin());
  return picture;
}

TEST(PairReader, TwoClipsAreTheSameAsOne) {
  const ScratchFolder folder;
  write_clip(folder / "0.mp4", {}, lens_walk(0, 5));
  write_clip(folder / "1.mp4", {}, lens_walk(1, 5));
  expect_success(stitch_two(folder), 5);
  EXPECT_EQ(raw_bytes(ClipProbe(folder / "out.mp4").pictures), expected_walk(5));
}

// What was read before the start is forgotten, of both clips.
TEST(PairReader, StartsOverWithBothClips) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.options["g"] = "10";
  std::vector<Nv12> pictures(200, Nv12(64, 64));
  for (std::size_t i = 0; i < pictures.size(); ++i) std::fill(pictures[i].luma.begin(), pictures[i].luma.end(), 20 + i);
  for (const char* name : {"0.mkv", "1.mkv"}) write_clip(folder / name, spec, pictures);
  for (const int tenths : {4, 60}) {  // within the first second there is nothing to seek but the beginning
    ClipFiles files{{folder / "0.mkv", folder / "1.mkv"}, {}, std::nullopt};
    PairReader reader = open_clips(files, open_first(files));
    for (int i = 0; i < 190; ++i) ASSERT_TRUE(reader.next());
    reader.start_at(AV_TIME_BASE * tenths / 10);
    const std::optional<FramePair> pair = reader.next();
    ASSERT_TRUE(pair && pair->picture[0] && pair->picture[1]);
    EXPECT_EQ(pair->picture[0]->data[0][0], pair->picture[1]->data[0][0]);
    EXPECT_LE(pair->picture[0]->data[0][0], 20 + 25 * tenths / 10);
  }
}

TEST(PairReader, LensesOneAboveTheOther) {
  const ScratchFolder folder;
  write_clip(folder / "in.mp4", {}, walk(3, false));
  expect_success(stitch_clip(folder / "in.mp4", folder / "out.mp4",
                             {"--seams", "free", "--near", "off", "--light", "off", "--layout", "top-bottom"}),
                 3);
  EXPECT_EQ(raw_bytes(ClipProbe(folder / "out.mp4").pictures), expected_walk(3));
}

TEST(PairReader, PicturesMayBeOneAboveTheOtherToo) {
  const Nv12 across = walk(1, true)[0], down = walk(1, false)[0];
  const Finished finished =
      run_stitch(with({"-", "--size", "120x240", "--layout", "top-bottom", "-o", "-"}, unmatched()), raw_bytes(down));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_EQ(finished.out, stitch_singly({across}, unmatched()));
}

TEST(PairReader, PartnersAreFoundByTimeNotByNumber) {
  const ScratchFolder folder;
  ClipSpec late;
  late.times = {1024, 1536, 2048, 2560};  // the first pictures of the second clip are missing
  write_clip(folder / "0.mp4", {}, lens_walk(0, 6));
  write_clip(folder / "1.mp4", late, lens_walk(1, 4, 2));
  const Finished finished = stitch_two(folder);
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(finished.err.find("2 pictures have no partner"), std::string::npos) << finished.err;
  const ClipProbe out(folder / "out.mp4");
  EXPECT_EQ(raw_bytes(out.pictures), expected_walk(4, 2));
  EXPECT_EQ(milliseconds(out.only(AVMEDIA_TYPE_VIDEO).times()), (std::vector<std::int64_t>{80, 120, 160, 200}));
}

TEST(PairReader, AnOffsetShiftsTheSecondClip) {
  const ScratchFolder folder;
  ClipSpec late;
  late.times = {5120, 5632, 6144, 6656};
  write_clip(folder / "0.mp4", {}, lens_walk(0, 4));
  write_clip(folder / "1.mp4", late, lens_walk(1, 4));
  EXPECT_EQ(stitch_two(folder).exit_code, 3);
  expect_success(stitch_two(folder, {"--offset", "-0.4"}), 4);
  EXPECT_EQ(raw_bytes(ClipProbe(folder / "out.mp4").pictures), expected_walk(4));
}

TEST(PairReader, AGapInTheSecondClipIsHeldOver) {
  const ScratchFolder folder;
  ClipSpec gap;
  gap.times = {0, 512, 2560, 3072};
  write_clip(folder / "0.mp4", {}, lens_walk(0, 7));
  write_clip(folder / "1.mp4", gap, {walk_lens(1, 0), walk_lens(1, 1), walk_lens(1, 5), walk_lens(1, 6)});
  const Finished finished = stitch_two(folder);
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(finished.err.find("stood in for 3 pictures"), std::string::npos) << finished.err;
  const ClipProbe out(folder / "out.mp4");
  ASSERT_EQ(out.pictures.size(), 7u);
  EXPECT_EQ(raw_bytes(out.pictures[2]), stitch_singly({join(walk_lens(0, 2), walk_lens(1, 1), true)}, unmatched()));
  EXPECT_EQ(raw_bytes(out.pictures[6]), expected_walk(1, 6));
}

TEST(PairReader, ClipsOfDifferentLengthEndWithTheShorterOne) {
  const ScratchFolder folder;
  write_clip(folder / "0.mp4", {}, lens_walk(0, 6));
  write_clip(folder / "1.mp4", {}, lens_walk(1, 3));
  const Finished first_longer = stitch_two(folder);
  EXPECT_EQ(first_longer.exit_code, 0) << first_longer.err;
  EXPECT_NE(first_longer.err.find("0.mp4: 3 pictures have no partner"), std::string::npos) << first_longer.err;
  EXPECT_EQ(raw_bytes(ClipProbe(folder / "out.mp4").pictures), expected_walk(3));
  write_clip(folder / "1.mp4", {}, lens_walk(1, 9));
  const Finished second_longer = stitch_two(folder);
  EXPECT_EQ(second_longer.exit_code, 0) << second_longer.err;
  EXPECT_NE(second_longer.err.find("1.mp4: goes on"), std::string::npos) << second_longer.err;
  EXPECT_EQ(raw_bytes(ClipProbe(folder / "out.mp4").pictures), expected_walk(6));
}

// As with pictures: another size is another scale of the lens.
TEST(PairReader, ClipsOfDifferentSizeAreStitchedLikeSuchPictures) {
  const ScratchFolder folder;
  FisheyeView view = walk_view();
  view.width = view.height = 160;
  view.cx = view.cy = 79.5;
  view.p *= 160.0 / 120;
  const Nv12 first = paint_fisheye(walk_view(), 0), second = paint_fisheye(view, 1);
  write_jpeg_like(folder / "0.mov", first);
  write_jpeg_like(folder / "1.mov", second);
  const std::vector<std::string> scales = {"--p0", std::to_string(walk_view().p), "--p1", std::to_string(view.p)};
  expect_success(run_stitch(with({folder / "0.mov", folder / "1.mov", "-o", folder / "out.nv12", "--seams", "free"}, scales)),
                 1);
  const Finished pictures =
      run_stitch(with({folder / "0.mov", folder / "1.mov", "-o", folder / "out.png", "--no-360-metadata"}, scales));
  EXPECT_EQ(pictures.exit_code, 0) << pictures.err;
  write_picture(folder / "expected.png", picture_of(read_bytes(folder / "out.nv12")));
  EXPECT_EQ(rgb_of(*read_picture(folder / "out.png")).bytes, rgb_of(*read_picture(folder / "expected.png")).bytes);
}

TEST(PairReader, ColoursThatMeanDifferentThingsAreRefused) {
  const ScratchFolder folder;
  ClipSpec full, limited;
  full.colour.range = AVCOL_RANGE_JPEG;
  limited.colour = {AVCOL_RANGE_MPEG, AVCOL_SPC_BT709, AVCOL_PRI_BT709, AVCOL_TRC_BT709, AVCHROMA_LOC_LEFT};
  write_clip(folder / "0.mp4", full, lens_walk(0, 2));
  write_clip(folder / "1.mp4", limited, lens_walk(1, 2));
  const Finished finished = stitch_two(folder);
  EXPECT_EQ(finished.exit_code, 3);
  EXPECT_NE(finished.err.find("1.mp4: its colours"), std::string::npos) << finished.err;
}

TEST(PairReader, SoundsOfBothClipsAreKept) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.sound = 0.3;
  spec.times = {0, 512, 1024, 1536};
  write_clip(folder / "0.mp4", spec, lens_walk(0, 4));
  spec.sound = 0.2;
  write_clip(folder / "1.mp4", spec, lens_walk(1, 4));
  expect_success(stitch_two(folder), 4);
  const ClipProbe first(folder / "0.mp4"), second(folder / "1.mp4"), out(folder / "out.mp4");
  ASSERT_EQ(out.streams.size(), 3u);
  EXPECT_EQ(out.streams[1].packets, first.streams[1].packets);
  EXPECT_EQ(out.streams[2].packets, second.streams[1].packets);
  EXPECT_NE(out.streams[1].disposition & AV_DISPOSITION_DEFAULT, 0);
  EXPECT_EQ(out.streams[2].disposition & AV_DISPOSITION_DEFAULT, 0);
}

}  // namespace
}  // namespace biseam::tool
