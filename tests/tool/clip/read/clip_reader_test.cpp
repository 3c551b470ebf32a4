// Clips that are damaged, cut short, or none at all.
#include "clip/read/clip_reader.hpp"

#include <gtest/gtest.h>

#include "support/random_source.hpp"
#include "tool/support/by_library.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/clip_probe.hpp"
#include "tool/support/places.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

constexpr int kFrames = 20;

// Pictures on their own, so that one damaged packet is one damaged picture.
ClipSpec single_pictures() {
  ClipSpec spec;
  spec.encoder = "mjpeg";
  spec.options = {{"global_quality", "236"}, {"flags", "+qscale"}};
  spec.format = AV_PIX_FMT_YUVJ420P;
  spec.colour.range = AVCOL_RANGE_JPEG;
  return spec;
}

ClipSpec related_pictures() {
  ClipSpec spec;
  spec.options = {{"crf", "18"}, {"preset", "ultrafast"}, {"g", "5"}, {"bf", "2"}};
  spec.sound = 0.5;
  return spec;
}

// Where a packet lies in the file.
std::size_t place_of(const std::string& file, const PacketFacts& packet) { return file.find(packet.bytes); }

void expect_refusal(const Finished& finished, int exit_code, const std::string& name) {
  EXPECT_EQ(finished.exit_code, exit_code) << finished.err;
  EXPECT_NE(finished.err.find(name), std::string::npos) << finished.err;
}

void overwrite_packet(const std::string& path, std::size_t number) {
  const ClipProbe probe(path);
  std::string bytes = read_bytes(path);
  const PacketFacts& packet = probe.only(AVMEDIA_TYPE_VIDEO).packets.at(number);
  std::fill_n(bytes.begin() + std::ptrdiff_t(place_of(bytes, packet)), packet.bytes.size(), '\xff');
  write_bytes(path, bytes);
}

TEST(ClipReader, ADamagedPacketIsCountedAndBridgedByThePictureBefore) {
  const ScratchFolder folder;
  write_clip(folder / "in.mov", single_pictures(), walk(6));
  const ClipProbe whole(folder / "in.mov");
  overwrite_packet(folder / "in.mov", 2);
  const Finished finished = stitch_clip(folder / "in.mov", folder / "out.mov", {"--json", "-", "--light", "off"});
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(finished.err.find("in.mov: 1 damaged packet, 1 picture replaced by the one before"), std::string::npos)
      << finished.err;
  EXPECT_NE(finished.out.find("\"repeated\": 1, \"damaged_packets\": 1"), std::string::npos) << finished.out;
  auto expected = whole.pictures;
  expected[2] = expected[1];
  const ClipProbe out(folder / "out.mov");
  EXPECT_EQ(raw_bytes(out.pictures), stitch_by_library(expected, {.siting = AVCHROMA_LOC_CENTER}));
  EXPECT_EQ(out.picture_times, whole.picture_times);
}

TEST(ClipReader, StrictStopsAtDamageAndLeavesNothing) {
  const ScratchFolder folder;
  write_clip(folder / "in.mov", single_pictures(), walk(6));
  overwrite_packet(folder / "in.mov", 3);
  const Finished finished = stitch_clip(folder / "in.mov", folder / "out.mov", {"--strict"});
  expect_refusal(finished, 3, "in.mov: damaged after 0:00:00.080");
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"in.mov"}));
}

TEST(ClipReader, PicturesDamagedAtTheBeginningAreLeftOut) {
  const ScratchFolder folder;
  write_clip(folder / "in.mov", single_pictures(), walk(6));
  const ClipProbe whole(folder / "in.mov");
  overwrite_packet(folder / "in.mov", 0);
  const Finished finished = stitch_clip(folder / "in.mov", folder / "out.mov");
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(finished.err.find("1 left out at the beginning"), std::string::npos) << finished.err;
  const ClipProbe out(folder / "out.mov");
  EXPECT_EQ(out.picture_times, std::vector<std::int64_t>(whole.picture_times.begin() + 1, whole.picture_times.end()));
}

// Whatever a decoder makes of flipped bytes, every picture has its time and the tool an orderly end.
TEST(ClipReader, FlippedBytesNeverChangeTheTimes) {
  const ScratchFolder folder;
  write_clip(folder / "in.mp4", related_pictures(), walk(kFrames));
  const ClipProbe whole(folder / "in.mp4");
  const std::string clean = read_bytes(folder / "in.mp4");
  RandomSource random;
  int reports = 0;
  for (int round = 0; round < 6; ++round) {
    std::string bytes = clean;
    for (int flip = 0; flip < 5; ++flip) {
      const auto& packets = whole.only(AVMEDIA_TYPE_VIDEO).packets;
      const PacketFacts& packet = packets[std::size_t(random.between(1, int(packets.size()) - 1))];
      bytes[place_of(clean, packet) + std::size_t(random.between(0, int(packet.bytes.size()) - 1))] ^=
          char(random.between(1, 255));
    }
    write_bytes(folder / "bad.mp4", bytes);
    const Finished finished = stitch_clip(folder / "bad.mp4", folder / "out.mp4");
    ASSERT_EQ(finished.exit_code, 0) << finished.err;
    const ClipProbe out(folder / "out.mp4");
    EXPECT_EQ(out.picture_times, whole.picture_times);
    EXPECT_EQ(out.only(AVMEDIA_TYPE_AUDIO).packets, whole.only(AVMEDIA_TYPE_AUDIO).packets);
    if (finished.err.find("damaged packet") != std::string::npos) ++reports;
  }
  EXPECT_GT(reports, 0);
}

TEST(ClipReader, ALostKeyPictureFreezesUntilTheNextOne) {
  const ScratchFolder folder;
  ClipSpec spec = related_pictures();
  spec.options["bf"] = "0";
  write_clip(folder / "in.mp4", spec, walk(15));
  const ClipProbe whole(folder / "in.mp4");
  overwrite_packet(folder / "in.mp4", 5);
  const Finished finished = stitch_clip(folder / "in.mp4", folder / "out.mp4");
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(finished.err.find("damaged packet"), std::string::npos) << finished.err;
  EXPECT_EQ(ClipProbe(folder / "out.mp4").picture_times, whole.picture_times);
}

TEST(ClipReader, ATruncatedFileIsStitchedAsFarAsItGoesAndTold) {
  for (const std::string extension : {"mkv", "mp4"}) {
    SCOPED_TRACE(extension);
    const ScratchFolder folder;
    const std::string in = folder / ("in." + extension), out = folder / ("out." + extension);
    ClipSpec spec = related_pictures();
    if (extension == "mp4") spec.muxer_options = {{"movflags", "+faststart"}};
    spec.times = {};
    for (int k = 0; k < 50; ++k) spec.times.push_back(k * 512);
    write_clip(in, spec, walk(50));
    const std::string all = read_bytes(in);
    write_bytes(in, all.substr(0, all.size() / 2));
    const Finished finished = stitch_clip(in, out);
    EXPECT_EQ(finished.exit_code, 0) << finished.err;
    EXPECT_NE(finished.err.find("in." + extension + ": is cut short"), std::string::npos) << finished.err;
    const std::size_t frames = ClipProbe(out).pictures.size();
    EXPECT_GT(frames, 10u);
    EXPECT_LT(frames, 40u);
    expect_refusal(stitch_clip(in, folder / ("strict." + extension), {"--strict"}), 3, "in." + extension);
  }
}

TEST(ClipReader, FilesThatAreNoClipsAreNamed) {
  const ScratchFolder folder;
  write_clip(folder / "in.mp4", related_pictures(), walk(4));
  const std::string all = read_bytes(folder / "in.mp4");
  write_bytes(folder / "headless.mp4", all.substr(0, all.size() / 2));  // what describes it comes last
  write_bytes(folder / "empty.mp4", "");
  write_bytes(folder / "text.mp4", "no clip at all\n");
  for (const std::string name : {"headless.mp4", "empty.mp4", "text.mp4", "missing.mp4", "."}) {
    SCOPED_TRACE(name);
    const Finished finished = stitch_clip(folder / name, folder / "out.mp4");
    expect_refusal(finished, 3, folder / name);
    EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 1) << finished.err;
    EXPECT_FALSE(std::filesystem::exists(folder / "out.mp4"));
  }
}

TEST(ClipReader, ClipsOfOneColumnOrRowAreNamed) {
  const ScratchFolder folder;
  for (const auto& [width, height] : {std::pair(1, 120), std::pair(240, 1), std::pair(1, 1)}) {
    const std::string luma(std::size_t(width) * std::size_t(height), 'x');
    const std::string chroma(std::size_t((width + 1) / 2) * std::size_t((height + 1) / 2) * 2, 'y');
    write_bytes(folder / "in.y4m", "YUV4MPEG2 W" + std::to_string(width) + " H" + std::to_string(height) +
                                       " F25:1 C420jpeg\nFRAME\n" + luma + chroma);
    for (const std::vector<std::string>& inputs :
         {std::vector{folder / "in.y4m"}, std::vector{folder / "in.y4m", folder / "in.y4m"}}) {
      expect_refusal(run_stitch(with(with(inputs, {"-o", folder / "out.mp4"}), known_lenses())), 3,
                     "in.y4m: its pictures are smaller than 2 x 2 pixels");
    }
  }
}

TEST(ClipReader, AnUnreadableFileIsNamed) {
  const ScratchFolder folder;
  write_clip(folder / "in.mp4", related_pictures(), walk(2));
  std::filesystem::permissions(folder / "in.mp4", std::filesystem::perms::none);
  std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
  std::filesystem::copy(kTool, folder / "tool");  // where any user can run it
  std::vector<std::string> command = {folder / "tool", "stitch", folder / "in.mp4", "-o", folder / "out.mp4"};
  if (geteuid() == 0) command = with({"/usr/bin/setpriv", "--reuid=65534", "--clear-groups"}, command);
  expect_refusal(run(command), 3, "in.mp4: can't be opened: Permission denied");
}

// A page of a process' memory that does not exist reads as an error.
TEST(ClipReader, AReadErrorIsToldWithItsReason) {
  const ScratchFolder folder;
  expect_refusal(stitch_clip("/proc/self/mem", folder / "out.mp4"), 3, "/proc/self/mem: can't be read");
}

TEST(ClipReader, ASizeThatChangesIsToldWithItsTime) {
  const ScratchFolder folder;
  ClipSpec spec = single_pictures();
  write_clip(folder / "a.mkv", spec, walk(3));
  std::vector<Nv12> smaller;
  for (const Nv12& picture : walk(2)) smaller.push_back(Nv12(picture.width / 2, picture.height / 2));
  write_clip(folder / "b.mkv", spec, smaller);
  // MJPEG pictures say their size themselves: a packet of the other clip in the place of a larger one.
  std::string bytes = read_bytes(folder / "a.mkv");
  const PacketFacts large = ClipProbe(folder / "a.mkv").only(AVMEDIA_TYPE_VIDEO).packets[1];
  std::string small = ClipProbe(folder / "b.mkv").only(AVMEDIA_TYPE_VIDEO).packets[0].bytes;
  ASSERT_LT(small.size(), large.bytes.size());
  small.resize(large.bytes.size());
  bytes.replace(place_of(bytes, large), small.size(), small);
  write_bytes(folder / "a.mkv", bytes);
  const Finished finished = stitch_clip(folder / "a.mkv", folder / "out.mkv");
  expect_refusal(finished, 3, "a.mkv: at 0:00:00.040 the pictures change from 240x120 to 120x60");
  EXPECT_FALSE(std::filesystem::exists(folder / "out.mkv"));
}

}  // namespace
}  // namespace biseam::tool
