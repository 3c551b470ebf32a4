// Parts of clips, and parts against the whole.
#include "clip/read/part_reader.hpp"

#include <gtest/gtest.h>

#include "tool/support/by_library.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/clip_probe.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

constexpr int kFrames = 24;  // at 25 a second

// Key pictures now and then and pictures that refer to later ones, so that a part begins in the middle of both.
void write_long_clip(const std::string& path) {
  ClipSpec spec;
  spec.options = {{"qp", "0"}, {"preset", "ultrafast"}, {"bf", "2"}, {"g", "7"}};
  spec.sound = 0.96;
  spec.motion_packets = path.ends_with("mkv") ? 0 : 10;
  spec.chapters = {{0, 300, "One"}, {300, 960, "Two"}};
  write_clip(path, spec, walk(kFrames));
}

class Parts : public testing::TestWithParam<const char*> {
 protected:
  std::string name(const std::string& stem) const { return folder_ / (stem + "." + GetParam()); }
  ClipProbe part(const std::string& stem, const std::vector<std::string>& range) {
    const Finished finished = stitch_clip(name("in"), name(stem), range);
    EXPECT_EQ(finished.exit_code, 0) << finished.err;
    return ClipProbe(name(stem));
  }
  ScratchFolder folder_;
};
INSTANTIATE_TEST_SUITE_P(Clip, Parts, testing::Values("mp4", "mkv"),
                         [](const auto& parameter) { return std::string(parameter.param); });

TEST_P(Parts, OneAfterTheOtherTheyEqualTheWhole) {
  write_long_clip(name("in"));
  const ClipProbe whole = part("whole", {}), a = part("a", {"--to", "0.3"}), b = part("b", {"--from", "0.3", "--to", "0.62"}),
                  c = part("c", {"--from", "0.62"});
  ASSERT_EQ(whole.pictures.size(), std::size_t(kFrames));
  EXPECT_EQ(a.pictures.size(), 8u);
  EXPECT_EQ(b.pictures.size(), 8u);
  EXPECT_EQ(raw_bytes(a.pictures) + raw_bytes(b.pictures) + raw_bytes(c.pictures), raw_bytes(whole.pictures));
  EXPECT_EQ(b.only(AVMEDIA_TYPE_VIDEO).times().front(), 20000);
  for (const AVMediaType type : {AVMEDIA_TYPE_AUDIO, AVMEDIA_TYPE_DATA}) {
    if (type == AVMEDIA_TYPE_DATA && std::string(GetParam()) == "mkv") continue;
    EXPECT_EQ(a.only(type).bytes() + b.only(type).bytes() + c.only(type).bytes(), whole.only(type).bytes());
  }
}

TEST_P(Parts, ANumberOfFramesEndsEverything) {
  write_long_clip(name("in"));
  const ClipProbe whole = part("whole", {}), a = part("a", {"--frames", "10"});
  ASSERT_EQ(a.pictures.size(), 10u);
  EXPECT_EQ(raw_bytes(a.pictures), raw_bytes(std::vector<Nv12>(whole.pictures.begin(), whole.pictures.begin() + 10)));
  EXPECT_LT(a.only(AVMEDIA_TYPE_AUDIO).times().back(), 400000);
  EXPECT_GT(a.only(AVMEDIA_TYPE_AUDIO).times().back(), 370000);
  const ClipProbe b = part("b", {"--from", "0:00:00.4", "--frames", "100"});
  EXPECT_EQ(b.pictures.size(), 14u);
  EXPECT_EQ(a.only(AVMEDIA_TYPE_AUDIO).bytes() + b.only(AVMEDIA_TYPE_AUDIO).bytes(), whole.only(AVMEDIA_TYPE_AUDIO).bytes());
}

TEST_P(Parts, ChaptersAreCutToThePart) {
  write_long_clip(name("in"));
  const ClipProbe b = part("b", {"--from", "0.2", "--to", "0.6"});
  EXPECT_EQ(b.chapters, (std::vector<ChapterFacts>{{0, 100, "One"}, {100, 400, "Two"}}));
  const ClipProbe c = part("c", {"--from", "0.4"});
  ASSERT_EQ(c.chapters.size(), 1u);
  EXPECT_EQ(c.chapters[0].title, "Two");
}

TEST(Part, AFarOneIsReachedWithoutDecodingEverything) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.options["g"] = "4";
  for (int k = 0; k < 40; ++k) spec.times.push_back(k * 12800);  // one a second
  const auto pairs = walk(40);
  write_clip(folder / "in.mp4", spec, pairs);
  const Finished finished = stitch_clip(folder / "in.mp4", folder / "out.mp4",
                                        {"--seams", "free", "--near", "off", "--light", "off", "--from", "33", "--to", "35.5"});
  expect_success(finished, 3);
  EXPECT_EQ(raw_bytes(ClipProbe(folder / "out.mp4").pictures), stitch_singly({pairs[33], pairs[34], pairs[35]}, unmatched()));
}

TEST(Part, OfAStreamThatCantBeSought) {
  const ScratchFolder folder;
  const auto pairs = walk(6);
  write_clip(folder / "in.mkv", {}, pairs);
  const Finished finished =
      run_stitch(with({"-", "-o", "-", "--from", "0.08", "--frames", "2"}, as_pictures()), read_bytes(folder / "in.mkv"));
  expect_success(finished, 2);
  EXPECT_EQ(finished.out, stitch_singly({pairs[2], pairs[3]}, unmatched()));
}

TEST(Part, OfRawFramesAndStreamsWithoutAnIndex) {
  const ScratchFolder folder;
  const auto pairs = walk(60);
  write_bytes(folder / "in.nv12", raw_bytes(pairs));
  const std::vector<std::string> part = with({"--from", "2.2", "--frames", "2", "-o", "-"}, as_pictures());
  const std::string expected = stitch_singly({pairs[55], pairs[56]}, unmatched());
  EXPECT_EQ(run_stitch(with({folder / "in.nv12", "--size", "240x120", "--rate", "25"}, part)).out, expected);
  EXPECT_EQ(
      run_stitch(with({folder / "in.nv12", "--size", "240x120", "--rate", "25", "-o", folder / "in.y4m", "--width", "240"},
                      known_lenses()))
          .exit_code,
      0);
  const ClipProbe y4m(folder / "in.y4m");
  const Finished finished =
      run_stitch(with({folder / "in.y4m", "-o", "-", "--from", "2.2", "--frames", "2", "--no-search"}, unmatched()));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_EQ(finished.out, stitch_by_library({y4m.pictures[55], y4m.pictures[56]},
                                            {.siting = y4m.siting, .search = false, .near = BISEAM_NEAR_OFF}));
}

TEST(Part, OfTwoClips) {
  const ScratchFolder folder;
  std::vector<Nv12> lens[2];
  for (int k = 0; k < 2; ++k) {
    for (int step = 0; step < 12; ++step) lens[k].push_back(walk_lens(k, step));
    write_clip(folder / (std::to_string(k) + ".mkv"), {}, lens[k]);
  }
  const Finished finished =
      run_stitch(with({folder / "0.mkv", folder / "1.mkv", "-o", "-", "--from", "0.2", "--to", "0.3"}, as_pictures()));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_EQ(finished.out, stitch_singly({walk(8)[5], walk(8)[6], walk(8)[7]}, unmatched()));
}

TEST(Part, BeyondTheEndIsRefused) {
  const ScratchFolder folder;
  write_clip(folder / "in.mp4", {}, walk(2));
  const Finished finished = stitch_clip(folder / "in.mp4", folder / "out.mp4", {"--from", "5"});
  EXPECT_EQ(finished.exit_code, 3);
  EXPECT_NE(finished.err.find("in.mp4: has no picture in the part"), std::string::npos) << finished.err;
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"in.mp4"}));
}

TEST(Part, AWrongRangeIsAWrongCommandLine) {
  const ScratchFolder folder;
  write_clip(folder / "in.mp4", {}, walk(1));
  for (const auto& [range, option] :
       std::vector<std::pair<std::vector<std::string>, std::string>>{{{"--from", "x"}, "--from"},
                                                                     {{"--from", "-1"}, "--from"},
                                                                     {{"--to", "1:2:3:4"}, "--to"},
                                                                     {{"--from", "2", "--to", "1"}, "--to"},
                                                                     {{"--frames", "0"}, "--frames"},
                                                                     {{"--offset", "soon"}, "--offset"}}) {
    const Finished finished = stitch_clip(folder / "in.mp4", folder / "out.mp4", range);
    EXPECT_EQ(finished.exit_code, 2) << finished.err;
    EXPECT_NE(finished.err.find(option), std::string::npos) << finished.err;
  }
}

}  // namespace
}  // namespace biseam::tool
