// A clip from end to end: pictures, times, tags and everything that is copied.
#include "clip/write/clip_writer.hpp"

#include <gtest/gtest.h>

#include "tool/support/by_library.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/clip_probe.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

ClipSpec rich_clip() {
  ClipSpec spec;
  spec.sound = 0.5;
  spec.sound_metadata = {{"language", "deu"}, {"handler_name", "Microphone"}};
  spec.subtitles = {"one", "two", "three"};
  spec.chapters = {{0, 200, "Start"}, {200, 480, "The end"}};
  spec.metadata = {{"title", "A walk"}, {"comment", "Sunday"}, {"creation_time", "2024-05-06T07:08:09.000000Z"}};
  spec.picture_metadata = {{"language", "fra"}};
  spec.sound_disposition = AV_DISPOSITION_DEFAULT | AV_DISPOSITION_ORIGINAL;
  spec.subtitle_disposition = AV_DISPOSITION_HEARING_IMPAIRED;
  return spec;
}

class Containers : public testing::TestWithParam<const char*> {
 protected:
  std::string name(const char* stem) const { return folder_ / (std::string(stem) + "." + GetParam()); }
  ScratchFolder folder_;
};
INSTANTIATE_TEST_SUITE_P(Clip, Containers, testing::Values("mp4", "mov", "mkv"),
                         [](const auto& parameter) { return std::string(parameter.param); });

TEST_P(Containers, PicturesAreThoseOfSingleStitches) {
  const auto pairs = walk(6);
  write_clip(name("in"), {}, pairs);
  expect_success(stitch_clip(name("in"), name("out"), {"--seams", "free", "--near", "off", "--light", "off"}), 6);
  EXPECT_EQ(raw_bytes(ClipProbe(name("out")).pictures), stitch_singly(pairs, unmatched()));
}

TEST_P(Containers, OddTimesAreKept) {
  ClipSpec spec;
  spec.base = {1, 90000};
  spec.times = {0, 3003, 6006, 20000, 20090, 50000, 90000, 90450};
  spec.options["bf"] = "2";
  write_clip(name("in"), spec, walk(8));
  expect_success(stitch_clip(name("in"), name("out")), 8);
  const ClipProbe in(name("in")), out(name("out"));
  EXPECT_EQ(av_cmp_q(out.base, in.base), 0);
  EXPECT_EQ(out.picture_times, in.picture_times);
  // Only there has the last picture a duration.
  if (std::string(GetParam()) != "mkv") {
    EXPECT_NEAR(double(out.duration), double(in.duration), 1000);
  }
}

TEST_P(Containers, AClipThatBeginsLateStaysLate) {
  ClipSpec spec;
  spec.sound = 1;
  spec.times = {12800, 13312, 13824, 14336};
  write_clip(name("in"), spec, walk(4));
  expect_success(stitch_clip(name("in"), name("out")), 4);
  const ClipProbe in(name("in")), out(name("out"));
  EXPECT_EQ(out.only(AVMEDIA_TYPE_VIDEO).times(), in.only(AVMEDIA_TYPE_VIDEO).times());
  EXPECT_EQ(out.only(AVMEDIA_TYPE_AUDIO).times(), in.only(AVMEDIA_TYPE_AUDIO).times());
}

TEST_P(Containers, SoundAndSubtitlesAreCopiedPacketByPacket) {
  write_clip(name("in"), rich_clip(), walk(12));
  expect_success(stitch_clip(name("in"), name("out")), 12);
  const ClipProbe in(name("in")), out(name("out"));
  for (const AVMediaType type : {AVMEDIA_TYPE_AUDIO, AVMEDIA_TYPE_SUBTITLE}) {
    const StreamFacts &from = in.only(type), &to = out.only(type);
    EXPECT_FALSE(from.packets.empty());
    EXPECT_EQ(to.codec, from.codec);
    EXPECT_EQ(to.disposition, from.disposition);
    EXPECT_EQ(to.packets, from.packets);
  }
}

TEST_P(Containers, MetadataLanguagesAndChaptersAreKept) {
  write_clip(name("in"), rich_clip(), walk(12));
  expect_success(stitch_clip(name("in"), name("out")), 12);
  ClipProbe in(name("in")), out(name("out"));
  EXPECT_EQ(without_writer(out.metadata), without_writer(in.metadata));
  EXPECT_EQ(out.chapters, in.chapters);
  ASSERT_EQ(out.streams.size(), in.streams.size());
  for (std::size_t k = 0; k < in.streams.size(); ++k) {
    if (in.streams[k].type == AVMEDIA_TYPE_VIDEO) in.streams[k].metadata.erase("encoder");
    if (in.streams[k].type == AVMEDIA_TYPE_VIDEO) in.streams[k].metadata.erase("ENCODER");
    EXPECT_EQ(out.streams[k].metadata, in.streams[k].metadata) << k;
  }
}

TEST_P(Containers, KeysOfAnyNameAreKept) {
  ClipSpec spec;
  spec.metadata = {{"title", "A walk"}, {"my camera's name", "Two Eyes"}};
  if (std::string(GetParam()) != "mkv") spec.muxer_options = {{"movflags", "+use_metadata_tags"}};
  write_clip(name("in"), spec, walk(2));
  expect_success(stitch_clip(name("in"), name("out")), 2);
  ClipProbe in(name("in")), out(name("out"));
  EXPECT_EQ(without_writer(out.metadata), without_writer(in.metadata));
}

TEST_P(Containers, PlayersAreToldThatItIsASphereUnlessUnwanted) {
  write_clip(name("in"), {}, walk(2));
  expect_success(stitch_clip(name("in"), name("out")), 2);
  EXPECT_FALSE(ClipProbe(name("in")).spherical);
  EXPECT_TRUE(ClipProbe(name("out")).spherical);
  expect_success(stitch_clip(name("in"), name("plain"), {"--no-360-metadata"}), 2);
  EXPECT_FALSE(ClipProbe(name("plain")).spherical);
}

// MJPEG says by its pictures' format that they have full range, the panorama by a tag.
TEST(ClipWriter, FullRangeOfJpegFormatsIsKept) {
  for (const std::string extension : {"mov", "mkv"}) {
    SCOPED_TRACE(extension);
    const ScratchFolder folder;
    ClipSpec spec;
    spec.encoder = "mjpeg";
    spec.options = {{"global_quality", "236"}, {"flags", "+qscale"}};
    spec.format = AV_PIX_FMT_YUVJ420P;
    spec.colour.range = AVCOL_RANGE_JPEG;
    write_clip(folder / ("in." + extension), spec, walk(2));
    expect_success(stitch_clip(folder / ("in." + extension), folder / ("out." + extension), {"--light", "off"}), 2);
    const ClipProbe in(folder / ("in." + extension)), out(folder / ("out." + extension));
    EXPECT_EQ(out.range, AVCOL_RANGE_JPEG);
    EXPECT_EQ(out.matrix, in.matrix);
    EXPECT_EQ(out.siting, in.siting);
    EXPECT_EQ(raw_bytes(out.pictures), stitch_by_library(in.pictures, {.siting = AVCHROMA_LOC_CENTER}));
  }
}

struct Tags {
  const char* name;
  Colour colour;
};

class ColourTags : public testing::TestWithParam<Tags> {};
INSTANTIATE_TEST_SUITE_P(
    Clip, ColourTags,
    testing::Values(
        Tags{"bt709", {AVCOL_RANGE_MPEG, AVCOL_SPC_BT709, AVCOL_PRI_BT709, AVCOL_TRC_BT709, AVCHROMA_LOC_LEFT}},
        Tags{"full_range", {AVCOL_RANGE_JPEG, AVCOL_SPC_BT709, AVCOL_PRI_BT709, AVCOL_TRC_BT709, AVCHROMA_LOC_LEFT}},
        Tags{"bt601", {AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE170M, AVCOL_PRI_SMPTE170M, AVCOL_TRC_SMPTE170M, AVCHROMA_LOC_CENTER}},
        Tags{"bt2020_pq",
             {AVCOL_RANGE_MPEG, AVCOL_SPC_BT2020_NCL, AVCOL_PRI_BT2020, AVCOL_TRC_SMPTE2084, AVCHROMA_LOC_TOPLEFT}},
        Tags{"hlg", {AVCOL_RANGE_JPEG, AVCOL_SPC_BT2020_NCL, AVCOL_PRI_BT2020, AVCOL_TRC_ARIB_STD_B67, AVCHROMA_LOC_LEFT}},
        Tags{"none", {}}),
    [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_P(ColourTags, PassThroughAndSamplesStay) {
  for (const std::string extension : {"mp4", "mov", "mkv"}) {
    SCOPED_TRACE(extension);
    const ScratchFolder folder;
    const std::string in_path = folder / ("in." + extension), out_path = folder / ("out." + extension);
    ClipSpec spec;
    spec.colour = GetParam().colour;
    const auto pairs = walk(2);
    write_clip(in_path, spec, pairs);
    expect_success(stitch_clip(in_path, out_path, {"--light", "off"}), 2);
    const ClipProbe in(in_path), out(out_path);
    EXPECT_EQ(in.matrix, spec.colour.matrix);
    EXPECT_EQ(out.range, in.range);
    EXPECT_EQ(out.matrix, in.matrix);
    EXPECT_EQ(out.primaries, in.primaries);
    EXPECT_EQ(out.transfer, in.transfer);
    EXPECT_EQ(out.siting, in.siting);
    EXPECT_EQ(raw_bytes(out.pictures), stitch_by_library(pairs, {.siting = in.siting}));
  }
}

TEST(ClipWriter, MotionDataAndACoverAreCopied) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.motion_packets = 5;
  spec.cover = true;
  write_clip(folder / "in.mp4", spec, walk(12));
  expect_success(stitch_clip(folder / "in.mp4", folder / "out.mp4"), 12);
  const ClipProbe in(folder / "in.mp4"), out(folder / "out.mp4");
  EXPECT_EQ(in.only(AVMEDIA_TYPE_DATA).packets.size(), 5u);
  EXPECT_EQ(out.only(AVMEDIA_TYPE_DATA).packets, in.only(AVMEDIA_TYPE_DATA).packets);
  ASSERT_EQ(out.streams.size(), 3u);
  EXPECT_EQ(out.streams[2].disposition, AV_DISPOSITION_ATTACHED_PIC);
  EXPECT_EQ(out.streams[2].bytes(), in.streams[2].bytes());
}

TEST(ClipWriter, AttachmentsAreCopied) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.attachment = "not really a font";
  write_clip(folder / "in.mkv", spec, walk(2));
  expect_success(stitch_clip(folder / "in.mkv", folder / "out.mkv"), 2);
  const ClipProbe out(folder / "out.mkv");
  ASSERT_EQ(out.streams.size(), 2u);
  EXPECT_EQ(out.streams[1].extradata, spec.attachment);
  EXPECT_EQ(out.streams[1].metadata, ClipProbe(folder / "in.mkv").streams[1].metadata);
  const Finished refused = stitch_clip(folder / "in.mkv", folder / "out.mp4");
  EXPECT_EQ(refused.exit_code, 4);
  EXPECT_NE(refused.err.find("stream 1 (attachment, letters.ttf) can't be held by"), std::string::npos) << refused.err;
}

// Its track is made anew by what writes QuickTime files, and the others keep it as metadata.
TEST(ClipWriter, TimeCodeIsKept) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.picture_metadata = {{"timecode", "01:02:03:04"}};
  write_clip(folder / "in.mov", spec, walk(2));
  const StreamFacts track = ClipProbe(folder / "in.mov").only(AVMEDIA_TYPE_DATA);
  for (const std::string name : {"out.mov", "out.mp4"}) {
    expect_success(stitch_clip(folder / "in.mov", folder / name), 2);
    ClipProbe out(folder / name);
    EXPECT_EQ(out.only(AVMEDIA_TYPE_DATA).bytes(), track.bytes());
    EXPECT_EQ(out.streams[0].metadata["timecode"], "01:02:03:04");
  }
  expect_success(stitch_clip(folder / "in.mov", folder / "out.mkv"), 2);
  EXPECT_EQ(ClipProbe(folder / "out.mkv").streams[0].metadata["TIMECODE"], "01:02:03:04");
}

TEST(ClipWriter, AStreamThatCantBeHeldIsNamed) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.motion_packets = 2;
  write_clip(folder / "in.mp4", spec, walk(4));
  const Finished refused = stitch_clip(folder / "in.mp4", folder / "out.mkv");
  EXPECT_EQ(refused.exit_code, 4);
  EXPECT_NE(refused.err.find("stream 1 (data, gpmd)"), std::string::npos) << refused.err;
  EXPECT_NE(refused.err.find("--drop-streams"), std::string::npos) << refused.err;
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"in.mp4"}));
  const Finished dropped = stitch_clip(folder / "in.mp4", folder / "out.mkv", {"--drop-streams"});
  EXPECT_EQ(dropped.exit_code, 0) << dropped.err;
  EXPECT_NE(dropped.err.find("stream 1 (data, gpmd)"), std::string::npos) << dropped.err;
  EXPECT_EQ(ClipProbe(folder / "out.mkv").streams.size(), 1u);
}

TEST(ClipWriter, FourEnginesGiveWhatOneGives) {
  const ScratchFolder folder;
  write_clip(folder / "in.mp4", rich_clip(), walk(20));
  expect_success(stitch_clip(folder / "in.mp4", folder / "one.mp4", {"--jobs", "1"}), 20);
  expect_success(stitch_clip(folder / "in.mp4", folder / "four.mp4", {"--jobs", "4"}), 20);
  EXPECT_EQ(read_bytes(folder / "one.mp4"), read_bytes(folder / "four.mp4"));
}

// Matroska's numbers of streams and files could be random.
TEST(ClipWriter, TheSameBytesFromRunToRun) {
  for (const std::string extension : {"mp4", "mov", "mkv"}) {
    SCOPED_TRACE(extension);
    const ScratchFolder folder;
    const std::string in = folder / ("in." + extension), one = folder / ("1." + extension), two = folder / ("2." + extension);
    write_clip(in, rich_clip(), walk(3));
    expect_success(stitch_clip(in, one), 3);
    expect_success(stitch_clip(in, two), 3);
    EXPECT_EQ(read_bytes(one), read_bytes(two));
  }
}

// By turns half a frame's time and one and a half: never far from what the mean rate says.
TEST(ClipWriter, TimesThatRawFramesCantHoldAreTold) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.times = {0, 256, 1024, 1280, 2048, 2304};
  write_clip(folder / "in.mp4", spec, walk(6));
  const Finished finished = stitch_clip(folder / "in.mp4", folder / "out.y4m");
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(finished.err.find("out.y4m: the times of 5 frames can't be held by raw frames"), std::string::npos) << finished.err;
}

// Encoders write it only beside a matrix.
TEST(ClipWriter, ARangeWithoutOtherTagsIsKept) {
  for (const std::string extension : {"mp4", "mov", "mkv"}) {
    SCOPED_TRACE(extension);
    const ScratchFolder folder;
    ClipSpec spec;
    spec.colour.range = AVCOL_RANGE_MPEG;
    write_clip(folder / "in.mkv", spec, walk(2));
    ASSERT_EQ(ClipProbe(folder / "in.mkv").range, AVCOL_RANGE_MPEG);
    for (const std::string encoder : {"libx264", "libx265"}) {
      const std::string out = folder / (encoder + "." + extension);
      expect_success(run_stitch(with({folder / "in.mkv", "-o", out, "--encoder", encoder}, known_lenses())), 2);
      EXPECT_EQ(ClipProbe(out).range, AVCOL_RANGE_MPEG);
    }
  }
}

TEST(ClipWriter, HevcHasTheTagThatAllPlayersKnowAndAnyNumberOfFrames) {
  const ScratchFolder folder;
  write_clip(folder / "in.mp4", {}, walk(3));
  for (const std::string name : {"out.mp4", "out.mov", "out.mkv"}) {
    for (const int frames : {1, 2, 3}) {
      const Finished finished =
          run_stitch(with({folder / "in.mp4", "-o", folder / name, "--encoder", "libx265", "--frames", std::to_string(frames)},
                          known_lenses()));
      expect_success(finished, frames);
      EXPECT_EQ(ClipProbe(folder / name).pictures.size(), std::size_t(frames));
      if (name != "out.mkv") {
        EXPECT_NE(read_bytes(folder / name).find("hvc1"), std::string::npos);
      }
    }
  }
}

TEST(ClipWriter, ACoverIsKeptBesideATimeCodeAndToldWhereItCantBe) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.cover = true;
  spec.picture_metadata = {{"timecode", "01:02:03:04"}};
  write_clip(folder / "in.mp4", spec, walk(2));
  expect_success(stitch_clip(folder / "in.mp4", folder / "out.mp4"), 2);
  const ClipProbe in(folder / "in.mp4"), out(folder / "out.mp4");
  const auto cover_of = [](const ClipProbe& clip) {
    std::string bytes;
    for (const StreamFacts& stream : clip.streams)
      bytes += stream.disposition == AV_DISPOSITION_ATTACHED_PIC ? stream.bytes() : "";
    return bytes;
  };
  ASSERT_FALSE(cover_of(in).empty());
  EXPECT_EQ(cover_of(out), cover_of(in));
  EXPECT_EQ(out.only(AVMEDIA_TYPE_DATA).bytes(), in.only(AVMEDIA_TYPE_DATA).bytes());
  const Finished refused = stitch_clip(folder / "in.mp4", folder / "out.mov");
  EXPECT_EQ(refused.exit_code, 4);
  EXPECT_NE(refused.err.find("out.mov: a cover picture (--drop-streams"), std::string::npos) << refused.err;
}

TEST(ClipWriter, AnotherEncoderAndItsSettings) {
  const ScratchFolder folder;
  const auto pairs = walk(3);
  write_clip(folder / "in.mkv", {}, pairs);
  const std::vector<std::string> lenses = unmatched();
  expect_success(run_stitch(with({folder / "in.mkv", "-o", folder / "ffv1.mkv", "--encoder", "ffv1"}, as_pictures())), 3);
  const ClipProbe ffv1(folder / "ffv1.mkv");
  EXPECT_EQ(ffv1.only(AVMEDIA_TYPE_VIDEO).codec, "ffv1");
  EXPECT_EQ(raw_bytes(ffv1.pictures), stitch_singly(pairs, lenses));
  expect_success(run_stitch(with({folder / "in.mkv", "-o", folder / "small.mkv", "--bitrate", "50k"}, lenses)), 3);
  expect_success(run_stitch(with({folder / "in.mkv", "-o", folder / "usual.mkv"}, lenses)), 3);
  EXPECT_LT(read_bytes(folder / "small.mkv").size(), read_bytes(folder / "usual.mkv").size());
}

}  // namespace
}  // namespace biseam::tool
