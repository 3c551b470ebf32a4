// Seams that are searched now and then and kept between.
#include <gtest/gtest.h>

#include "biseam/stitcher.hpp"
#include "camera/setup.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/clip_probe.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

constexpr int kFrames = 14;

Nv12 lens_half(const Nv12& pair, std::size_t index) {
  Nv12 lens(pair.width / 2, pair.height);
  const std::size_t width = std::size_t(lens.width);
  for (std::size_t y = 0; y * width < lens.luma.size(); ++y) {
    std::copy_n(&pair.luma[(2 * y + index) * width], width, &lens.luma[y * width]);
  }
  for (std::size_t y = 0; y * width < lens.chroma.size(); ++y) {
    std::copy_n(&pair.chroma[(2 * y + index) * width], width, &lens.chroma[y * width]);
  }
  return lens;
}

// One stitcher after the other frame.
std::string stitch_holding(const std::vector<Nv12>& pairs, int hold) {
  profile::CameraSettings settings;
  for (profile::LensSettings& lens : settings.lens) lens.p = std::stod(known_lenses()[1]);
  const Setup setup = make_setup("", settings, {{120, 120}, {120, 120}});
  LensPath path[2] = {LensPath(setup, 0, 1), LensPath(setup, 1, 1)};
  Result<Stitcher> stitcher = Stitcher::create(setup.plan.config);
  EXPECT_TRUE(stitcher);
  const auto planes = [](const Nv12View& v) {
    const std::size_t luma = std::size_t(v.luma_stride) * std::size_t(v.height);
    return FisheyePicture{{v.luma, luma}, {v.chroma, luma / 2}};
  };
  std::string all;
  for (std::size_t k = 0; k < pairs.size(); ++k) {
    const Nv12 lens[2] = {lens_half(pairs[k], 0), lens_half(pairs[k], 1)};
    Nv12 panorama(kWalkWidth, kWalkWidth / 2);
    const Seams seams = k % std::size_t(hold) == 0 ? Seams::fresh : Seams::kept;
    EXPECT_FALSE(stitcher->process(planes(path[0].apply(lens[0])), planes(path[1].apply(lens[1])),
                                   {panorama.luma, panorama.chroma}, seams));
    all += raw_bytes(panorama);
  }
  return all;
}

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
    EXPECT_EQ(held(folder / "in.mkv", hold), stitch_holding(pairs, hold));
  }
  EXPECT_NE(held(folder / "in.mkv", 5), held(folder / "in.mkv", 1));
}

TEST(SeamHold, FourEnginesGiveWhatOneGives) {
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
  EXPECT_EQ(held(folder / "in.mov", 3), stitch_holding(pictures, 3));
}

TEST(SeamHold, MustBeANumberOfFrames) {
  for (const char* wrong : {"0", "-1", "many"}) {
    EXPECT_EQ(run_stitch({"in.mkv", "-o", "out.mkv", "--seam-hold", wrong}).exit_code, 2);
  }
}

}  // namespace
}  // namespace biseam::tool
