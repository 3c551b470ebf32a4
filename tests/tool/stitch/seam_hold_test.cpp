// Seams that are searched now and then and kept between.
#include <gtest/gtest.h>

#include "tool/support/by_library.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/clip_probe.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

constexpr int kFrames = 14;

std::string held(const std::string& input, int hold, const std::vector<std::string>& more = {}) {
  const Finished finished =
      run_stitch(with(with({input, "-o", "-", "--seam-hold", std::to_string(hold)}, known_lenses()), more));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  return finished.out;
}

TEST(SeamHold, SeamsAreThoseOfEveryNthFrame) {
  const ScratchFolder folder;
  const auto pairs = walk(kFrames);
  write_clip(folder / "in.mkv", {}, pairs);
  for (const int hold : {1, 2, 5, 100}) {
    SCOPED_TRACE(hold);
    EXPECT_EQ(held(folder / "in.mkv", hold), stitch_by_library(pairs, {.hold = hold}));
  }
  EXPECT_NE(held(folder / "in.mkv", 5), held(folder / "in.mkv", 1));
}

TEST(SeamHold, FourThreadsGiveWhatOneGives) {
  const ScratchFolder folder;
  write_clip(folder / "in.mkv", {}, walk(kFrames));
  for (const int hold : {2, 3, 100}) {
    EXPECT_EQ(held(folder / "in.mkv", hold, {"--jobs", "4"}), held(folder / "in.mkv", hold, {"--jobs", "1"}));
  }
}

TEST(SeamHold, PartsEqualTheWhole) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.options["g"] = "4";
  write_clip(folder / "in.mkv", spec, walk(kFrames));
  const std::string whole = held(folder / "in.mkv", 4);
  EXPECT_EQ(held(folder / "in.mkv", 4, {"--to", "0.2"}) + held(folder / "in.mkv", 4, {"--from", "0.2", "--to", "0.32"}) +
                held(folder / "in.mkv", 4, {"--from", "0.32"}),
            whole);
}

TEST(SeamHold, SeamsMoveLess) {
  const ScratchFolder folder;
  write_clip(folder / "in.mkv", {}, walk(kFrames));
  const auto movement = [&](const char* hold) {
    const Finished finished = stitch_clip(folder / "in.mkv", folder / "out.mkv", {"--seam-hold", hold, "--json", "-"});
    const std::string name = "\"seam_movement\": ";
    return std::stod(finished.out.substr(finished.out.find(name) + name.size()));
  };
  const double free = movement("1"), some = movement("4"), none = movement("100");
  EXPECT_LT(some, free);
  EXPECT_EQ(none, 0);
}

TEST(SeamHold, ADamagedPictureWhereSeamsAreSearchedHasSeamsOfItsOwn) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.encoder = "mjpeg";
  spec.options = {{"global_quality", "236"}, {"flags", "+qscale"}};
  spec.format = AV_PIX_FMT_YUVJ420P;
  spec.colour.range = AVCOL_RANGE_JPEG;
  write_clip(folder / "in.mov", spec, walk(6));
  auto pictures = ClipProbe(folder / "in.mov").pictures;
  const PacketFacts packet = ClipProbe(folder / "in.mov").only(AVMEDIA_TYPE_VIDEO).packets[3];
  std::string bytes = read_bytes(folder / "in.mov");
  std::fill_n(bytes.begin() + std::ptrdiff_t(bytes.find(packet.bytes)), packet.bytes.size(), '\xff');
  write_bytes(folder / "in.mov", bytes);
  pictures[3] = pictures[2];
  EXPECT_EQ(held(folder / "in.mov", 3), stitch_by_library(pictures, {.siting = AVCHROMA_LOC_CENTER, .hold = 3}));
}

TEST(SeamHold, MustBeANumberOfFrames) {
  for (const char* wrong : {"0", "-1", "many"}) {
    EXPECT_EQ(run_stitch({"in.mkv", "-o", "out.mkv", "--seam-hold", wrong}).exit_code, 2);
  }
}

}  // namespace
}  // namespace biseam::tool
