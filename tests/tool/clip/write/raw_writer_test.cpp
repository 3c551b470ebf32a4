// Uncompressed panoramas of all depths and chroma sizes, read back by libav.
#include "clip/write/raw_writer.hpp"

#include <gtest/gtest.h>

#include "clip/write/panorama_pool.hpp"
#include "media/pixel_format.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/samples.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

constexpr Size kSize{36, 20};

class Written {
 public:
  Written() {
    write_clip(folder_ / "in.mkv", {}, {64, 32}, 1, [](int, AVFrame&) {});
    clips_.emplace(std::make_unique<ClipReader>(std::make_unique<Container>(folder_ / "in.mkv"), false), nullptr, 0);
  }

  std::string name(const char* name) const { return folder_ / name; }

  // One panorama of the format, under the name; what is told goes to told.
  Libav<AVFrame> write(const char* name, RawKind kind, AVPixelFormat format, const Colour& colour, std::string& told) {
    PanoramaPool pool(kSize, format, colour);
    Libav<AVFrame> frame = pool.frame();
    std::memset(frame->buf[0]->data, 0, frame->buf[0]->size);
    fill(*frame, [&](int component, int x, int y) {
      return (50u << (described(*frame).comp[0].depth - 8)) + unsigned(3 * x + 2 * y + 30 * component);
    });
    testing::internal::CaptureStderr();
    RawWriter writer({folder_ / name, kind, false}, {kSize, {1, 25}, {25, 1}, colour, format}, *clips_);
    writer.write(*frame, 0, 1);
    writer.finish();
    told = testing::internal::GetCapturedStderr();
    return frame;
  }

 private:
  ScratchFolder folder_;
  std::optional<PairReader> clips_;
};

struct Kind {
  const char *panoramas, *read;
};

class Y4m : public testing::TestWithParam<Kind> {};
INSTANTIATE_TEST_SUITE_P(RawWriter, Y4m,
                         testing::Values(Kind{"yuv420p", "yuv420p"}, Kind{"nv12", "yuv420p"}, Kind{"nv21", "yuv420p"},
                                         Kind{"yuv422p", "yuv422p"}, Kind{"nv16", "yuv422p"}, Kind{"nv24", "yuv444p"},
                                         Kind{"yuv444p", "yuv444p"}, Kind{"gray", "gray"}, Kind{"p010le", "yuv420p10le"},
                                         Kind{"yuv420p10le", "yuv420p10le"}, Kind{"p210le", "yuv422p10le"},
                                         Kind{"yuv422p10le", "yuv422p10le"}, Kind{"yuv444p10le", "yuv444p10le"},
                                         Kind{"yuv420p12le", "yuv420p12le"}, Kind{"yuv422p12le", "yuv422p12le"},
                                         Kind{"yuv444p12le", "yuv444p12le"}),
                         [](const auto& parameter) { return std::string(parameter.param.panoramas); });

TEST_P(Y4m, IsReadBackByLibav) {
  Written written;
  std::string told;
  const Colour colour{AVCOL_RANGE_MPEG, AVCOL_SPC_UNSPECIFIED, AVCOL_PRI_UNSPECIFIED, AVCOL_TRC_UNSPECIFIED, AVCHROMA_LOC_LEFT};
  const Libav<AVFrame> sent = written.write("out.y4m", RawKind::y4m, av_get_pix_fmt(GetParam().panoramas), colour, told);
  EXPECT_EQ(told, "");
  ClipReader reader(std::make_unique<Container>(written.name("out.y4m")), true);
  const std::optional<ClipFrame> got = reader.next();
  ASSERT_TRUE(got);
  EXPECT_STREQ(av_get_pix_fmt_name(AVPixelFormat(got->picture->format)), GetParam().read);
  for (int component = 0; component < described(*sent).nb_components; ++component) {
    for (int y = 0; y < rows_of(*sent, component); ++y) {
      for (int x = 0; x < columns_of(*sent, component); ++x) {
        ASSERT_EQ(get_sample(*got->picture, component, x, y), get_sample(*sent, component, x, y));
      }
    }
  }
  EXPECT_FALSE(reader.next());
}

TEST(RawWriter, RgbIsWrittenAsFullRangeYuvAndTold) {
  Written written;
  std::string told;
  written.write("out.y4m", RawKind::y4m, AV_PIX_FMT_GBRP12, {AVCOL_RANGE_JPEG}, told);
  EXPECT_EQ(told, "biseam: " + written.name("out.y4m") + ": RGB becomes BT.601 with full range\n");
  const std::string bytes = read_bytes(written.name("out.y4m"));
  EXPECT_EQ(bytes.substr(0, bytes.find('\n')), "YUV4MPEG2 W36 H20 F25:1 Ip A1:1 C444p12 XYSCSS=444P12 XCOLORRANGE=FULL");
}

TEST(RawWriter, RawFramesAreNv12AndTellWhatIsLost) {
  Written written;
  std::string told;
  const Libav<AVFrame> sent = written.write("out.nv12", RawKind::nv12, AV_PIX_FMT_YUV420P, {}, told);
  EXPECT_EQ(told, "");
  const std::string bytes = read_bytes(written.name("out.nv12"));
  ASSERT_EQ(bytes.size(), 36u * 20 * 3 / 2);
  EXPECT_EQ(std::uint8_t(bytes[36 * 3 + 5]), get_sample(*sent, 0, 5, 3));
  EXPECT_EQ(std::uint8_t(bytes[36 * 20 + 36 * 2 + 8]), get_sample(*sent, 1, 4, 2));
  EXPECT_EQ(std::uint8_t(bytes[36 * 20 + 36 * 2 + 9]), get_sample(*sent, 2, 4, 2));
  written.write("deep.nv12", RawKind::nv12, AV_PIX_FMT_YUV422P10, {}, told);
  EXPECT_EQ(told,
            "biseam: " + written.name("deep.nv12") + ": samples of 10 bits are rounded to 8, chroma is resampled to 4:2:0\n");
  EXPECT_EQ(read_bytes(written.name("deep.nv12")).size(), 36u * 20 * 3 / 2);
}

TEST(RawWriter, OtherStreamsAreNamedBeforeRawFramesAreWritten) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.sound = 0.2;
  write_clip(folder / "in.mp4", spec, walk(3));
  const Finished refused = run_stitch(with({folder / "in.mp4", "-o", "-"}, as_pictures()));
  EXPECT_EQ(refused.exit_code, 4);
  EXPECT_EQ(refused.out, "");
  EXPECT_NE(refused.err.find("stream 1 (audio, aac)"), std::string::npos) << refused.err;
  const Finished dropped = run_stitch(with({folder / "in.mp4", "-o", "-", "--drop-streams"}, as_pictures()));
  EXPECT_EQ(dropped.exit_code, 0) << dropped.err;
  EXPECT_EQ(dropped.out, stitch_singly(walk(3), unmatched()));
}

TEST(RawWriter, TimesThatY4mCantHoldAreTold) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.times = {0, 512, 4096, 4608};
  write_clip(folder / "in.mp4", spec, walk(4));
  const Finished finished = run_stitch(with({folder / "in.mp4", "-o", folder / "out.y4m"}, known_lenses()));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(finished.err.find("times of 3 frames"), std::string::npos) << finished.err;
}

}  // namespace
}  // namespace biseam::tool
