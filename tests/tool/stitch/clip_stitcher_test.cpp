// Clips keep the depth and the chroma of their pictures; seams are searched now and then and kept between.
#include "stitch/clip_stitcher.hpp"

#include <gtest/gtest.h>

#include "tool/support/by_library.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/clip_probe.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/samples.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

struct Source {
  const char *name, *encoder;
  AVPixelFormat format;
  const char* to;  // the encoder of the panoramas
  AVPixelFormat expected;
  const char* told = "";
};

class Formats : public testing::TestWithParam<Source> {};
INSTANTIATE_TEST_SUITE_P(
    ClipStitcher, Formats,
    testing::Values(Source{"x264_10", "libx264", AV_PIX_FMT_YUV420P10LE, "libx264", AV_PIX_FMT_YUV420P10LE},
                    Source{"x265_10", "libx264", AV_PIX_FMT_YUV420P10LE, "libx265", AV_PIX_FMT_YUV420P10LE},
                    Source{"x264_422", "libx264", AV_PIX_FMT_YUV422P, "libx264", AV_PIX_FMT_YUV422P},
                    Source{"x264_444", "libx264", AV_PIX_FMT_YUV444P, "libx264", AV_PIX_FMT_YUV444P},
                    Source{"x264_422_10", "libx264", AV_PIX_FMT_YUV422P10LE, "libx264", AV_PIX_FMT_YUV422P10LE},
                    Source{"x265_444_12", "ffv1", AV_PIX_FMT_YUV444P12LE, "libx265", AV_PIX_FMT_YUV444P12LE},
                    Source{"ffv1_12", "ffv1", AV_PIX_FMT_YUV420P12LE, "ffv1", AV_PIX_FMT_YUV420P12LE},
                    Source{"ffv1_16", "ffv1", AV_PIX_FMT_YUV420P16LE, "ffv1", AV_PIX_FMT_YUV420P12LE,
                           "in.mkv: its samples of 16 bits are rounded to 12"},
                    Source{"mpeg4_10", "libx264", AV_PIX_FMT_YUV420P10LE, "mpeg4", AV_PIX_FMT_YUV420P,
                           "encoder mpeg4: samples of 10 bits are rounded to 8"},
                    Source{"mpeg4_422_10", "libx264", AV_PIX_FMT_YUV422P10LE, "mpeg4", AV_PIX_FMT_YUV420P,
                           "encoder mpeg4: samples of 10 bits are rounded to 8, chroma is resampled to 4:2:0"}),
    [](const auto& parameter) { return std::string(parameter.param.name); });

// Flat colours that only the full depth can show come out as they went in; what is lost on the way is told in one line.
TEST_P(Formats, AreKeptOrTold) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.encoder = GetParam().encoder;
  if (spec.encoder == "ffv1") spec.options.clear();
  spec.format = GetParam().format;
  spec.colour = {AVCOL_RANGE_MPEG, AVCOL_SPC_BT709, AVCOL_PRI_BT709, AVCOL_TRC_BT709, AVCHROMA_LOC_LEFT};
  const int depth = av_pix_fmt_desc_get(spec.format)->comp[0].depth;
  const auto value = [&](int index, int component) {
    return unsigned(100 + 20 * component + index) * (1u << (depth - 8)) +
           (depth > 8 ? (1u << (depth - 8)) / 4 * unsigned(index + 1) : 0);
  };
  write_clip(folder / "in.mkv", spec, {240, 120}, 3, [&](int index, AVFrame& frame) {
    for (const AVBufferRef* buffer : frame.buf) {
      if (buffer) std::memset(buffer->data, 0, buffer->size);
    }
    fill(frame, [&](int component, int, int) { return value(index, component); });
  });
  const std::string to = GetParam().to;
  std::vector<std::string> options = with({folder / "in.mkv", "-o", folder / "out.mkv", "--encoder", to}, known_lenses());
  if (to.starts_with("libx26")) options = with(options, {"--crf", "1", "--preset", "ultrafast"});
  if (to == "mpeg4") options = with(options, {"--bitrate", "20M"});
  const Finished finished = run_stitch(options);
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), *GetParam().told ? 2 : 1) << finished.err;
  EXPECT_NE(finished.err.find(GetParam().told), std::string::npos) << finished.err;
  const ClipProbe out(folder / "out.mkv");
  ASSERT_EQ(out.frames.size(), 3u);
  for (int index = 0; index < 3; ++index) {
    const AVFrame& frame = *out.frames[std::size_t(index)];
    ASSERT_STREQ(av_get_pix_fmt_name(AVPixelFormat(frame.format)), av_get_pix_fmt_name(GetParam().expected));
    const int bits = described(frame).comp[0].depth;
    for (int component = 0; component < 3; ++component) {
      const double exact = value(index, component) * double(1 << bits) / double(1 << depth);
      const unsigned got = get_sample(frame, component, columns_of(frame, component) / 2, rows_of(frame, component) / 2);
      EXPECT_NEAR(got, exact, 1) << index << ", " << component;
    }
  }
  EXPECT_EQ(out.matrix, AVCOL_SPC_BT709);
  EXPECT_EQ(out.range, AVCOL_RANGE_MPEG);
}

TEST(ClipStitcher, Y4mOfTenBitsStaysSo) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.format = AV_PIX_FMT_YUV422P10LE;
  write_clip(folder / "in.mkv", spec, {240, 120}, 2, [](int index, AVFrame& frame) {
    for (const AVBufferRef* buffer : frame.buf) {
      if (buffer) std::memset(buffer->data, 0, buffer->size);
    }
    fill(frame, [&](int component, int, int) { return 403u + 50 * unsigned(component) + unsigned(index); });
  });
  expect_success(run_stitch(with({folder / "in.mkv", "-o", folder / "out.y4m"}, known_lenses())), 2);
  const ClipProbe out(folder / "out.y4m");
  ASSERT_EQ(out.frames.size(), 2u);
  for (unsigned index = 0; index < 2; ++index) {
    ASSERT_EQ(out.frames[index]->format, AV_PIX_FMT_YUV422P10LE);
    for (unsigned component = 0; component < 3; ++component) {
      EXPECT_EQ(get_sample(*out.frames[index], int(component), 50, 60), 403 + 50 * component + index);
    }
  }
}

TEST(ClipStitcher, RgbPicturesStaySoWhereTheEncoderTakesThem) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.encoder = "png";
  spec.options.clear();
  spec.format = AV_PIX_FMT_RGB24;
  write_clip(folder / "in.mov", spec, {240, 120}, 2, [](int, AVFrame& frame) {
    for (int y = 0; y < frame.height; ++y) {
      for (int x = 0; x < 3 * frame.width; ++x) frame.data[0][y * frame.linesize[0] + x] = std::uint8_t(200 + x % 3);
    }
  });
  const auto stitched = [&](const char* name, const std::vector<std::string>& encoder) {
    return run_stitch(with(with({folder / "in.mov", "-o", folder / name}, known_lenses()), encoder));
  };
  expect_success(stitched("rgb.mkv", {"--encoder", "libx264rgb", "--crf", "0"}), 2);
  const ClipProbe rgb(folder / "rgb.mkv");
  for (int component = 0; component < 3; ++component) {
    EXPECT_EQ(get_sample(*rgb.frames.at(1), component, 120, 60), 200u + unsigned(component));
  }
  const Finished finished = stitched("yuv.mkv", {"--crf", "0"});
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(finished.err.find("encoder libx264: RGB becomes BT.601 with full range\n"), std::string::npos) << finished.err;
  const ClipProbe yuv(folder / "yuv.mkv");
  EXPECT_EQ(yuv.range, AVCOL_RANGE_JPEG);
  EXPECT_EQ(yuv.matrix, AVCOL_SPC_BT470BG);
  EXPECT_EQ(described(*yuv.frames.at(1)).log2_chroma_w, 0);
  EXPECT_NEAR(get_sample(*yuv.frames.at(1), 0, 120, 60), 200.8, 1);
}

constexpr int kFrames = 14;

std::string held(const std::string& input, int hold, const std::vector<std::string>& more = {}) {
  const Finished finished =
      run_stitch(with(with({input, "-o", "-", "--light", "off", "--seam-hold", std::to_string(hold)}, known_lenses()), more));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  return finished.out;
}

TEST(SeamHold, SeamsAreThoseOfEveryNthFrame) {
  const ScratchFolder folder;
  const auto pairs = walk(kFrames);
  write_clip(folder / "in.mkv", {}, pairs);
  for (const int hold : {1, 2, 5, 100}) {
    SCOPED_TRACE(hold);
    EXPECT_EQ(held(folder / "in.mkv", hold), stitch_by_library(pairs, {.hold = hold, .rate = 25}));
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
    const Finished finished =
        stitch_clip(folder / "in.mkv", folder / "out.mkv", {"--seams", "free", "--seam-hold", hold, "--json", "-"});
    const std::string name = "\"seam_movement\": ";
    return std::stod(finished.out.substr(finished.out.find(name) + name.size()));
  };
  const double free = movement("1"), some = movement("4"), none = movement("100");
  EXPECT_LT(some, free / 2);
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
  EXPECT_EQ(held(folder / "in.mov", 3), stitch_by_library(pictures, {.siting = AVCHROMA_LOC_CENTER, .hold = 3, .rate = 25}));
}

TEST(SeamHold, MustBeANumberOfFrames) {
  for (const char* wrong : {"0", "-1", "many"}) {
    EXPECT_EQ(run_stitch({"in.mkv", "-o", "out.mkv", "--seam-hold", wrong}).exit_code, 2);
  }
}

}  // namespace
}  // namespace biseam::tool
