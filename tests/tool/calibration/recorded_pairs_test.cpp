#include "calibration/recorded_pairs.hpp"

#include <gtest/gtest.h>

#include <algorithm>

#include "picture/frame_over.hpp"
#include "picture/write_picture.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

// Luma in steps, so that each frame of a lossless clip is known again.
Nv12 flat(int width, int level) {
  Nv12 picture(width, 64);
  std::fill(picture.luma.begin(), picture.luma.end(), std::uint8_t(level));
  std::fill(picture.chroma.begin(), picture.chroma.end(), std::uint8_t(128));
  return picture;
}

TEST(RecordedPairs, PicturesWithBothCirclesOrOne) {
  const test::ScratchFolder folder;
  write_picture(folder / "both.png", flat(128, 40));
  write_picture(folder / "one.png", flat(64, 80));
  const std::vector<std::string> files = {folder / "both.png", folder / "one.png", folder / "one.png"};
  const std::vector<RecordedPair> pairs = read_picture_pairs(files, Layout::automatic);
  ASSERT_EQ(pairs.size(), 2u);
  for (const RecordedPair& pair : pairs) {
    for (const calibrate::Luma& luma : pair.luma().lens) {
      EXPECT_EQ(luma.width, 64);
      EXPECT_EQ(luma.height, 64);
    }
  }
  const std::vector<std::string> alone = {folder / "one.png"};
  EXPECT_EQ(test::failure_of([&] { read_picture_pairs(alone, Layout::automatic); }).first, ExitCode::usage);
}

TEST(RecordedPairs, SpreadOverAClip) {
  const test::ScratchFolder folder;
  std::vector<Nv12> frames;
  for (int i = 0; i < 12; ++i) frames.push_back(flat(128, 20 * (i + 1)));
  test::ClipSpec spec;
  spec.options["g"] = "5";
  test::write_clip(folder / "in.mkv", spec, frames);
  ClipFiles files{{folder / "in.mkv"}, {}, std::nullopt};
  settle_streams(*open_first(files), files);
  for (const int count : {1, 3, 100}) {
    const std::vector<RecordedPair> pairs = read_clip_pairs(files, Layout::automatic, count);
    EXPECT_GE(pairs.size(), 1u);
    EXPECT_LE(pairs.size(), std::size_t(std::min(count, 12)));
    int last = -1;
    for (const RecordedPair& pair : pairs) {  // none is given twice
      const int level = pair.luma().lens[0].bytes[0];
      EXPECT_GT(level, last);
      last = level;
    }
  }
}

// Key frames lie now closer together, now further apart, than what is wanted.
TEST(RecordedPairs, TwoClipsStayTogether) {
  const test::ScratchFolder folder;
  std::vector<Nv12> frames;
  for (int i = 0; i < 120; ++i) frames.push_back(flat(64, 10 + 2 * i));
  for (const char* distance : {"10", "70"}) {
    test::ClipSpec spec;
    spec.options["g"] = distance;
    for (const char* name : {"0.mkv", "1.mkv"}) test::write_clip(folder / name, spec, frames);
    ClipFiles files{{folder / "0.mkv", folder / "1.mkv"}, {}, std::nullopt};
    settle_streams(*open_first(files), files);
    const std::vector<RecordedPair> pairs = read_clip_pairs(files, Layout::automatic, 7);
    EXPECT_EQ(pairs.size(), 7u);
    int last = -1;
    for (const RecordedPair& pair : pairs) {
      const calibrate::LumaPair luma = pair.luma();
      EXPECT_EQ(luma.lens[0].bytes[0], luma.lens[1].bytes[0]);
      EXPECT_GT(luma.lens[0].bytes[0], last);
      last = luma.lens[0].bytes[0];
    }
  }
}

// Two readers look for pictures of a clip, and a third one may have before.
TEST(RecordedPairs, ATurnedClipIsSpokenOfOnce) {
  const test::ScratchFolder folder;
  test::ClipSpec spec;
  spec.options["g"] = "10";
  spec.display = {-65536, 0, 0, 0, -65536, 0, 0, 0, 1 << 30};
  test::write_clip(folder / "in.mov", spec, std::vector<Nv12>(120, flat(128, 40)));
  ClipFiles files{{folder / "in.mov"}, {}, std::nullopt};
  settle_streams(*open_first(files), files);
  const auto said = [&] {
    testing::internal::CaptureStderr();
    EXPECT_EQ(read_clip_pairs(files, Layout::automatic, 3).size(), 3u);
    return testing::internal::GetCapturedStderr();
  };
  EXPECT_EQ(said(), "biseam: " + folder / "in.mov" + ": the pictures of stream 0 are turned clockwise by 180 degrees\n");
  files.are_known = true;
  EXPECT_EQ(said(), "");
}

// A picture whose lenses are of different colours.
TEST(RecordedPairs, ColoursOfEachLens) {
  Rgb both(128, 64);
  for (std::size_t i = 0; i < both.bytes.size(); ++i) both.bytes[i] = std::uint8_t(i / 3 % 128 < 64 ? 200 : 40 + 60 * (i % 3));
  const Nv12 picture = to_nv12(both);
  const RecordedPair pair(*frame_over(picture), nullptr, Layout::side_by_side, "pair");
  for (int k = 0; k < 2; ++k) {
    const Rgb colours = pair.colours(k);
    ASSERT_EQ(colours.width, 64);
    ASSERT_EQ(colours.height, 64);
    for (std::size_t i = 0; i < 3; ++i) {
      EXPECT_NEAR(colours.bytes[3 * (32 * 64 + 32) + i], both.bytes[3 * (32 * 128 + 32 + 64 * std::size_t(k)) + i], 2);
    }
  }
}

}  // namespace
}  // namespace biseam::tool
