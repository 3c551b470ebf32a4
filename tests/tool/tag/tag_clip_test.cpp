// Marked clips against what they were before, read back through libav.
#include <gtest/gtest.h>

#include <filesystem>
#include <random>

#include "tool/support/clip_maker.hpp"
#include "tool/support/clip_probe.hpp"
#include "tool/support/scratch_folder.hpp"
#include "tool/support/walk.hpp"
#include "tool/tag/run_tag.hpp"

namespace biseam::tool {
namespace {

using namespace test;

ClipSpec rich_clip(const std::string& kind) {
  ClipSpec spec;
  spec.options["bf"] = "2";
  spec.base = {1, 90000};
  for (int k = 0; k < 12; ++k) spec.times.push_back(k * 3003 + k * k * 7);
  spec.sound = 0.5;
  spec.sound_metadata = {{"language", "deu"}, {"handler_name", "Microphone"}};
  spec.subtitles = {"one", "two", "three"};
  spec.chapters = {{0, 200, "Start"}, {200, 480, "The end"}};
  spec.metadata = {{"title", "A walk"}, {"comment", "Sunday"}, {"creation_time", "2024-05-06T07:08:09.000000Z"}};
  spec.picture_metadata = {{"language", "fra"}};
  spec.colour = {AVCOL_RANGE_JPEG, AVCOL_SPC_BT709, AVCOL_PRI_BT709, AVCOL_TRC_BT709, AVCHROMA_LOC_LEFT};
  if (kind == "mp4") spec.motion_packets = 4;
  spec.cover = kind == "mp4";
  return spec;
}

void expect_same_but_marked(const std::string& before, const std::string& after) {
  const ClipProbe in(before), out(after);
  EXPECT_FALSE(in.spherical);
  EXPECT_TRUE(out.spherical);
  EXPECT_EQ(without_writer(out.metadata), without_writer(in.metadata));
  EXPECT_EQ(out.chapters, in.chapters);
  EXPECT_EQ(out.picture_times, in.picture_times);
  EXPECT_EQ(raw_bytes(out.pictures), raw_bytes(in.pictures));
  EXPECT_EQ(av_cmp_q(out.base, in.base), 0);
  EXPECT_EQ(std::tie(out.range, out.matrix, out.primaries, out.transfer, out.siting),
            std::tie(in.range, in.matrix, in.primaries, in.transfer, in.siting));
  ASSERT_EQ(out.streams.size(), in.streams.size());
  for (std::size_t k = 0; k < in.streams.size(); ++k) {
    SCOPED_TRACE("stream " + std::to_string(k));
    const bool may_be_empty = in.streams[k].type == AVMEDIA_TYPE_DATA;  // the titles of chapters, which are read as such
    EXPECT_TRUE(may_be_empty || !in.streams[k].packets.empty());
    EXPECT_EQ(out.streams[k].packets, in.streams[k].packets);
    EXPECT_EQ(out.streams[k].codec, in.streams[k].codec);
    EXPECT_EQ(out.streams[k].disposition, in.streams[k].disposition);
    auto metadata = out.streams[k].metadata, old = in.streams[k].metadata;
    metadata.erase("DURATION");  // which Matroska's muxer counts in its own way
    old.erase("DURATION");
    EXPECT_EQ(metadata, old);
  }
}

class Clips : public FilesOfAKind {};
INSTANTIATE_TEST_SUITE_P(Tag, Clips, testing::Values("mp4", "mov", "mkv"),
                         [](const auto& parameter) { return std::string(parameter.param); });

TEST_P(Clips, EverythingIsKeptPacketByPacket) {
  write_clip(name("a"), rich_clip(GetParam()), walk(12));
  const std::string before = read_bytes(name("a"));
  expect_done(run_tag({name("a"), "-o", name("b")}));
  EXPECT_EQ(read_bytes(name("a")), before);
  expect_same_but_marked(name("a"), name("b"));
  if (std::string(GetParam()) == "mp4") {
    std::size_t motion = 0;
    for (const StreamFacts& stream : ClipProbe(name("b")).streams) {
      if (stream.type == AVMEDIA_TYPE_DATA) motion += stream.packets.size();
    }
    EXPECT_EQ(motion, 4u);
  }
}

TEST_P(Clips, InPlaceAndOnceIsEnough) {
  write_clip(name("a"), rich_clip(GetParam()), walk(12));
  std::filesystem::copy(name("a"), name("before"));
  expect_done(run_tag({name("a")}));
  expect_same_but_marked(name("before"), name("a"));
  EXPECT_EQ(folder_.names().size(), 2u);
  const std::string marked = read_bytes(name("a")), notice = name("a") + ": is marked as a panorama already";
  expect_done(run_tag({name("a")}), notice);
  EXPECT_EQ(read_bytes(name("a")), marked);
  expect_done(run_tag({name("a"), "-o", name("copy")}), notice);
  EXPECT_EQ(read_bytes(name("copy")), marked);
}

TEST_P(Clips, StitchedWithoutAMarkTheyGetTheUsualOne) {
  write_clip(name("pairs"), {}, walk(2));
  const Finished stitched =
      run_stitch(with({name("pairs"), "-o", name("plain"), "--crf", "0", "--no-360-metadata"}, known_lenses()));
  EXPECT_EQ(stitched.exit_code, 0) << stitched.err;
  expect_done(run_tag({name("plain"), "-o", name("marked")}));
  expect_same_but_marked(name("plain"), name("marked"));
}

TEST_P(Clips, WhatCantBeMarkedIsRefusedAndUntouched) {
  write_clip(name("square"), {}, walk(2, false));
  expect_untouched({name("square")}, 3, name("square"), "120x240");
  write_clip(name("good"), rich_clip(GetParam()), walk(12));
  const std::string whole = read_bytes(name("good"));
  write_bytes(name("cut"), whole.substr(0, whole.size() - whole.size() / 3));
  expect_untouched({name("cut")}, 3, name("cut"), "");
  expect_untouched({name("good"), "-o", folder_ / "b.jpg"}, 2, "b.jpg", "must end in");
  expect_untouched({name("good"), "-o", folder_ / ("none/b." + std::string(GetParam()))}, 4, "none/b", "can't be created");
  std::filesystem::create_symlink("/dev/full", name("full"));
  expect_untouched({name("good"), "-o", name("full")}, 4, name("full"), "");
}

TEST_P(Clips, RandomDamageEndsInALine) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  write_clip(name("good"), rich_clip(GetParam()), walk(4));
  const std::string good = read_bytes(name("good"));
  for (int round = 0; round < 25; ++round) {
    std::string bad = good;
    for (unsigned k = 0; k <= random() % 4; ++k) bad[random() % bad.size()] = char(random());
    if (round % 5 == 0) bad.resize(random() % bad.size());
    write_bytes(name("bad"), bad);
    const Finished finished = run_tag({name("bad")});
    EXPECT_TRUE(finished.exit_code == 0 || finished.exit_code == 3 || finished.exit_code == 4)
        << finished.exit_code << finished.err;
    EXPECT_TRUE(finished.exit_code == 0 || read_bytes(name("bad")) == bad);
    EXPECT_EQ(folder_.names().size(), 2u);
  }
}

// The index stands first and tells of pictures that are not there any more.
TEST(TagClip, ACutFileWithItsIndexInFrontIsNoticed) {
  const ScratchFolder folder;
  ClipSpec spec = rich_clip("mp4");
  spec.muxer_options = {{"movflags", "+faststart"}};
  write_clip(folder / "a.mp4", spec, walk(12));
  const std::string whole = read_bytes(folder / "a.mp4");
  for (const std::size_t less : {std::size_t(1), whole.size() / 4}) {
    write_bytes(folder / "cut.mp4", whole.substr(0, whole.size() - less));
    expect_refused(run_tag({folder / "cut.mp4"}), 3, folder / "cut.mp4", "is cut short");
  }
  expect_done(run_tag({folder / "a.mp4", "-o", folder / "b.mp4"}));
  expect_same_but_marked(folder / "a.mp4", folder / "b.mp4");
}

TEST(TagClip, ACutMatroskaFileIsNoticed) {
  const ScratchFolder folder;
  write_clip(folder / "a.mkv", rich_clip("mkv"), walk(12));
  const std::string whole = read_bytes(folder / "a.mkv");
  write_bytes(folder / "cut.mkv", whole.substr(0, whole.size() - 1));
  expect_refused(run_tag({folder / "cut.mkv"}), 3, folder / "cut.mkv", "is cut short");
}

// The list of its pictures can't be read: a copy would hold none.
TEST(TagClip, AClipWithoutPicturesStaysAsItIs) {
  const ScratchFolder folder;
  const std::string clip = folder / "in.mp4";
  write_clip(clip, {}, walk(2));
  std::string bytes = read_bytes(clip);
  const std::size_t sizes = bytes.find("stsz");
  ASSERT_NE(sizes, bytes.npos);
  bytes.replace(sizes, 4, "free");
  write_bytes(clip, bytes);
  expect_refused(run_tag({clip}), 3, clip, "has no picture");
  EXPECT_EQ(read_bytes(clip), bytes);
}

TEST(TagClip, FragmentsBecomeOneMovie) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.sound = 0.5;
  spec.muxer_options = {{"movflags", "+frag_keyframe+empty_moov"}};
  write_clip(folder / "a.mp4", spec, walk(12));
  expect_done(run_tag({folder / "a.mp4", "-o", folder / "b.mp4"}));
  const ClipProbe in(folder / "a.mp4"), out(folder / "b.mp4");
  EXPECT_TRUE(out.spherical);
  for (const AVMediaType type : {AVMEDIA_TYPE_VIDEO, AVMEDIA_TYPE_AUDIO}) {
    EXPECT_EQ(out.only(type).bytes(), in.only(type).bytes());
    EXPECT_EQ(out.only(type).times(), in.only(type).times());
  }
}

// QuickTime's animations under the name of MP4, which has no place for them.
TEST(TagClip, WhatCantBeWrittenAgainIsNamed) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.encoder = "qtrle";
  spec.options = {};
  spec.format = AV_PIX_FMT_RGB24;
  spec.muxer_options = {{"brand", "isom"}};
  write_clip(folder / "a.mov", spec, {64, 32}, 2,
             [](int, AVFrame& frame) { std::fill_n(frame.data[0], std::size_t(frame.linesize[0]) * 32, std::uint8_t(90)); });
  const std::string before = read_bytes(folder / "a.mov");
  expect_refused(run_tag({folder / "a.mov"}), 4, folder / "a.mov", "stream 0 (video, qtrle) can't be written again");
  EXPECT_EQ(read_bytes(folder / "a.mov"), before);
  EXPECT_EQ(folder.names().size(), 1u);
}

TEST(TagClip, ContainersThatAreNoChoiceAreNamed) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.encoder = "rawvideo";
  spec.options = {};
  write_clip(folder / "a.avi", spec, walk(2));
  expect_refused(run_tag({folder / "a.avi"}), 3, folder / "a.avi", "is not a JPEG, PNG, MP4, MOV or MKV file");
}

}  // namespace
}  // namespace biseam::tool
