#include "clip/read/open_clips.hpp"

#include <gtest/gtest.h>

#include "tool/support/clip_maker.hpp"
#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

void write_gray_clip(const std::string& path, int width) {
  Nv12 picture(width, 64);
  test::write_clip(path, {}, {picture, picture, picture});
}

int pairs_of(ClipFiles& files, bool both) {
  std::unique_ptr<Container> first = open_first(files);
  settle_streams(*first, files);
  PairReader reader = open_clips(files, std::move(first));
  int count = 0;
  while (const std::optional<FramePair> pair = reader.next()) {
    EXPECT_EQ(pair->picture[1] != nullptr, both);
    ++count;
  }
  return count;
}

TEST(OpenClips, OneFileOrOneForEachLens) {
  const test::ScratchFolder folder;
  write_gray_clip(folder / "both.mkv", 128);
  write_gray_clip(folder / "one.mkv", 64);
  ClipFiles both{{folder / "both.mkv"}, {}, std::nullopt}, two{{folder / "one.mkv", folder / "one.mkv"}, {}, std::nullopt};
  EXPECT_EQ(pairs_of(both, false), 3);
  EXPECT_EQ(pairs_of(two, true), 3);
}

TEST(OpenClips, AMissingFileIsAFailure) {
  const test::ScratchFolder folder;
  const ClipFiles files{{folder / "missing.mkv"}, {}, std::nullopt};
  EXPECT_EQ(test::failure_of([&] { open_first(files); }).first, ExitCode::input);
}

}  // namespace
}  // namespace biseam::tool
