#include "clip/write/lossless_clip.hpp"

#include <gtest/gtest.h>

#include "support/random_source.hpp"
#include "tool/support/clip_probe.hpp"
#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

TEST(LosslessClip, PicturesComeBackAsTheyWereAtTheirRate) {
  const ScratchFolder folder;
  RandomSource random;
  std::vector<Nv12> pictures;
  for (int k = 0; k < 4; ++k) {
    Nv12& picture = pictures.emplace_back(64, 48);
    for (auto* plane : {&picture.luma, &picture.chroma}) {
      for (std::uint8_t& sample : *plane) sample = std::uint8_t(random.between(0, 255));
    }
  }
  for (const char* name : {"a.mp4", "a.mov", "a.mkv"}) {
    SCOPED_TRACE(name);
    LosslessClip clip(folder / name, {64, 48}, {24000, 1001});
    for (const Nv12& picture : pictures) clip.add(picture);
    EXPECT_FALSE(std::filesystem::exists(folder / name));
    clip.finish();
    const ClipProbe probe(folder / name);
    ASSERT_EQ(probe.pictures.size(), pictures.size());
    for (std::size_t k = 0; k < pictures.size(); ++k) {
      EXPECT_EQ(probe.pictures[k].luma, pictures[k].luma) << k;
      EXPECT_EQ(probe.pictures[k].chroma, pictures[k].chroma) << k;
      const double seconds = double(probe.picture_times[k]) * av_q2d(probe.base);
      EXPECT_NEAR(seconds, double(k) * 1001 / 24000, 0.00051) << k;  // Matroska counts milliseconds
    }
    EXPECT_EQ(probe.only(AVMEDIA_TYPE_VIDEO).codec, "h264");
  }
}

TEST(LosslessClip, OneThatIsNotFinishedLeavesNothing) {
  const ScratchFolder folder;
  {
    LosslessClip clip(folder / "a.mp4", {64, 48}, {25, 1});
    clip.add(Nv12(64, 48));
  }
  EXPECT_TRUE(folder.names().empty());
}

TEST(LosslessClip, APlaceThatIsNoneIsNamed) {
  const ScratchFolder folder;
  const auto [code, line] = failure_of([&] { LosslessClip(folder / "none/a.mp4", {64, 48}, {25, 1}); });
  EXPECT_EQ(code, ExitCode::output);
  expect_one_line_naming(line, folder / "none/a.mp4");
}

}  // namespace
}  // namespace biseam::tool
