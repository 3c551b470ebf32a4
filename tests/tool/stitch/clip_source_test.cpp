// Clips of uncompressed frames, through pipes and from files.
#include "stitch/clip_source.hpp"

#include <gtest/gtest.h>

#include "tool/support/by_library.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/clip_probe.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

std::string y4m(const std::vector<Nv12>& pictures, const std::string& header = "F25:1 Ip A1:1 C420jpeg") {
  const Nv12& first = pictures.at(0);
  std::string out = "YUV4MPEG2 W" + std::to_string(first.width) + " H" + std::to_string(first.height) + " " + header + "\n";
  for (const Nv12& picture : pictures) {
    out += "FRAME\n";
    out.append(picture.luma.begin(), picture.luma.end());
    for (std::size_t plane = 0; plane < 2; ++plane) {
      for (std::size_t k = plane; k < picture.chroma.size(); k += 2) out += char(picture.chroma[k]);
    }
  }
  return out;
}

std::string size_of_walk() { return "240x120"; }

TEST(ClipSource, Y4mThroughAPipeIsTheSameAsFromAFile) {
  const ScratchFolder folder;
  const auto pairs = walk(5);
  write_bytes(folder / "in.y4m", y4m(pairs));
  const Finished file = run_stitch(with({folder / "in.y4m", "-o", "-", "--format", "y4m"}, known_lenses()));
  const Finished pipe = run_stitch(with({"-", "-o", "-", "--format", "y4m"}, known_lenses()), y4m(pairs));
  expect_success(file, 5);
  expect_success(pipe, 5);
  EXPECT_EQ(pipe.out, file.out);
  EXPECT_EQ(pipe.out.substr(0, pipe.out.find('\n')), "YUV4MPEG2 W240 H120 F25:1 Ip A1:1 C420jpeg");
}

TEST(ClipSource, ATurnedClipIsSpokenOfOnceThoughItIsAlsoReadForItsCamera) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.display = {-65536, 0, 0, 0, -65536, 0, 0, 0, 1 << 30};
  write_clip(folder / "in.mov", spec, walk(4));
  const Finished finished = run_stitch({folder / "in.mov", "-o", folder / "out.mp4"});
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  const std::string turned = "turned clockwise by 180 degrees\n";
  const std::size_t first = finished.err.find(turned);
  EXPECT_NE(first, std::string::npos) << finished.err;
  EXPECT_EQ(first, finished.err.rfind(turned)) << finished.err;
}

TEST(ClipSource, Y4mPicturesAreThoseOfSingleStitches) {
  const auto pairs = walk(4);
  const Finished raw = run_stitch(with({"-", "-o", "-", "--light", "off"}, known_lenses()), y4m(pairs));
  expect_success(raw, 4);
  EXPECT_EQ(raw.out, stitch_by_library(pairs, {.siting = AVCHROMA_LOC_CENTER, .rate = 25}));  // what its header says
}

TEST(ClipSource, RawFramesGoInAndOut) {
  const ScratchFolder folder;
  const auto pairs = walk(4);
  const std::string expected = stitch_singly(pairs, unmatched());
  const std::vector<std::string> clip = with({"--size", size_of_walk(), "--rate", "25"}, as_pictures());
  const Finished pipe = run_stitch(with({"-", "-o", "-"}, clip), raw_bytes(pairs));
  expect_success(pipe, 4);
  EXPECT_EQ(pipe.out, expected);
  write_bytes(folder / "in.nv12", raw_bytes(pairs));
  expect_success(run_stitch(with({folder / "in.nv12", "-o", folder / "out.nv12"}, clip)), 4);
  EXPECT_EQ(read_bytes(folder / "out.nv12"), expected);
  expect_success(run_stitch(with({folder / "in.nv12", "-o", folder / "out.mkv", "--encoder", "ffv1"}, clip)), 4);
  const ClipProbe probe(folder / "out.mkv");
  EXPECT_EQ(raw_bytes(probe.pictures), expected);
  EXPECT_EQ(probe.only(AVMEDIA_TYPE_VIDEO).times(), (std::vector<std::int64_t>{0, 40000, 80000, 120000}));
}

TEST(ClipSource, Y4mTellsRangeAndSiting) {
  const ScratchFolder folder;
  for (const auto& [header, range, siting] : {std::tuple("C420mpeg2 XCOLORRANGE=LIMITED", AVCOL_RANGE_MPEG, AVCHROMA_LOC_LEFT),
                                              std::tuple("C420paldv XCOLORRANGE=FULL", AVCOL_RANGE_JPEG, AVCHROMA_LOC_TOPLEFT),
                                              std::tuple("C420jpeg", AVCOL_RANGE_UNSPECIFIED, AVCHROMA_LOC_CENTER)}) {
    SCOPED_TRACE(header);
    const std::string in = y4m(walk(1), "F30000:1001 Ip A1:1 " + std::string(header));
    const Finished out = run_stitch(with({"-", "-o", folder / "out.y4m"}, known_lenses()), in);
    expect_success(out, 1);
    const std::string bytes = read_bytes(folder / "out.y4m");
    EXPECT_NE(bytes.substr(0, bytes.find('\n')).find(std::string("F30000:1001 Ip A1:1 ") + header), std::string::npos);
    const ClipProbe probe(folder / "out.y4m");
    EXPECT_EQ(probe.range, range);
    EXPECT_EQ(probe.siting, siting);
  }
}

TEST(ClipSource, ARawClipThatEndsInsideAFrameIsTold) {
  const auto pairs = walk(3);
  const std::vector<std::string> clip = with({"-", "-o", "-", "--size", size_of_walk(), "--rate", "25"}, as_pictures());
  const std::string all = raw_bytes(pairs);
  const Finished finished = run_stitch(clip, all.substr(0, all.size() - 100));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(finished.err.find("1 damaged packet, 1 picture replaced by the one before"), std::string::npos) << finished.err;
  const std::string expected = stitch_singly({pairs[0], pairs[1], pairs[1]}, unmatched());
  EXPECT_EQ(finished.out, expected);
  const Finished strict = run_stitch(with(clip, {"--strict"}), all.substr(0, all.size() - 100));
  EXPECT_EQ(strict.exit_code, 3) << strict.err;
  EXPECT_NE(strict.err.find("standard input"), std::string::npos) << strict.err;
}

TEST(ClipSource, ARawClipNeedsItsRate) {
  const ScratchFolder folder;
  const Finished finished = run_stitch({"-", "--size", size_of_walk(), "-o", folder / "out.mp4"}, raw_bytes(walk(1)));
  EXPECT_EQ(finished.exit_code, 2);
  EXPECT_NE(finished.err.find("--rate"), std::string::npos) << finished.err;
}

TEST(ClipSource, AClipMayComeThroughAPipe) {
  const ScratchFolder folder;
  write_clip(folder / "in.mkv", {}, walk(4));
  const Finished finished = run_stitch(with({"-", "-o", "-"}, as_pictures()), read_bytes(folder / "in.mkv"));
  expect_success(finished, 4);
  EXPECT_EQ(finished.out, stitch_singly(walk(4), unmatched()));
}

TEST(ClipSource, TheFirstPictureOfAClipBecomesAPicture) {
  const ScratchFolder folder;
  write_clip(folder / "in.mkv", {}, walk(2));
  const Finished finished = run_stitch(with({folder / "in.mkv", "-o", folder / "out.png"}, known_lenses()));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"in.mkv", "out.png"}));
}

}  // namespace
}  // namespace biseam::tool
