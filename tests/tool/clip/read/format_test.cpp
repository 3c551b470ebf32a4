// Pictures that are not 8 bits and 4:2:0.
#include <gtest/gtest.h>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <cstring>

#include "picture/to_nv12.hpp"
#include "support/random_source.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/clip_probe.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

Libav<AVFrame> make_frame(AVPixelFormat format, int width, int height) {
  Libav<AVFrame> frame(av_frame_alloc());
  frame->format = format;
  frame->width = width;
  frame->height = height;
  EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
  return frame;
}

int columns_of(const AVPixFmtDescriptor& format, int component, int width) {
  return component == 0 ? width : AV_CEIL_RSHIFT(width, format.log2_chroma_w);
}

int rows_of(const AVPixFmtDescriptor& format, int component, int height) {
  return component == 0 ? height : AV_CEIL_RSHIFT(height, format.log2_chroma_h);
}

// libav's own way to write single samples.
void set_sample(AVFrame& frame, int component, int x, int y, unsigned value) {
  const std::uint16_t sample = std::uint16_t(value);
  av_write_image_line(&sample, frame.data, frame.linesize, av_pix_fmt_desc_get(AVPixelFormat(frame.format)), x, y, component,
                      1);
}

unsigned get_sample(const AVFrame& frame, int component, int x, int y) {
  const std::uint8_t* const data[4] = {frame.data[0], frame.data[1], frame.data[2], frame.data[3]};
  std::uint16_t sample = 0;
  av_read_image_line(&sample, const_cast<const std::uint8_t**>(data), frame.linesize,
                     av_pix_fmt_desc_get(AVPixelFormat(frame.format)), x, y, component, 1, 0);
  return sample;
}

void fill(AVFrame& frame, const std::function<unsigned(int component)>& value) {
  for (const AVBufferRef* buffer : frame.buf) {
    if (buffer) std::memset(buffer->data, 0, buffer->size);  // samples are written by setting bits
  }
  const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(AVPixelFormat(frame.format));
  for (int component = 0; component < std::min<int>(format.nb_components, 3); ++component) {
    for (int y = 0; y < rows_of(format, component, frame.height); ++y) {
      for (int x = 0; x < columns_of(format, component, frame.width); ++x) {
        set_sample(frame, component, x, y, value(component));
      }
    }
  }
}

class Formats : public testing::TestWithParam<AVPixelFormat> {
 protected:
  const AVPixFmtDescriptor& format() const { return *av_pix_fmt_desc_get(GetParam()); }
};
INSTANTIATE_TEST_SUITE_P(ToNv12, Formats,
                         testing::Values(AV_PIX_FMT_YUV420P, AV_PIX_FMT_NV12, AV_PIX_FMT_NV21, AV_PIX_FMT_YUV422P,
                                         AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUYV422, AV_PIX_FMT_UYVY422, AV_PIX_FMT_YUV411P,
                                         AV_PIX_FMT_YUV440P, AV_PIX_FMT_NV16, AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_P010LE,
                                         AV_PIX_FMT_YUV422P10LE, AV_PIX_FMT_YUV444P10LE, AV_PIX_FMT_YUV420P12LE,
                                         AV_PIX_FMT_YUV444P12LE, AV_PIX_FMT_YUV420P16LE, AV_PIX_FMT_YUVA420P,
                                         AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUVJ444P),
                         [](const auto& parameter) { return std::string(av_get_pix_fmt_name(parameter.param)); });

// Every result is within one of the exact mean, rounded up or down by the dither.
TEST_P(Formats, SamplesKeepTheirValues) {
  ASSERT_TRUE(plan_format(GetParam()).usable);
  constexpr int kWidth = 20, kHeight = 12;
  const int depth = format().comp[0].depth;
  RandomSource random;
  const Libav<AVFrame> frame = make_frame(GetParam(), kWidth, kHeight);
  fill(*frame, [&](int) { return unsigned(random.between(0, (1 << depth) - 1)); });
  Nv12 memory;
  const Nv12View view = nv12_of(*frame, memory);
  ASSERT_EQ(view.width, kWidth);
  ASSERT_EQ(view.height, kHeight);
  const auto expect_near = [&](int got, double exact) {
    if (depth == 8) {
      EXPECT_EQ(got, int(exact + 0.5));
    } else {
      EXPECT_TRUE(got == int(exact) || got == std::min(255, int(exact) + 1)) << got << " for " << exact;
    }
  };
  const double scale = 1 << (depth - 8);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) expect_near(view.luma[y * view.luma_stride + x], get_sample(*frame, 0, x, y) / scale);
  }
  for (int component = 1; component < 3; ++component) {
    for (int y = 0; y < kHeight / 2; ++y) {
      for (int x = 0; x < kWidth / 2; ++x) {
        double sum = 0;
        for (int k = 0; k < 4; ++k) {
          sum += get_sample(*frame, component, (2 * x + k % 2) >> format().log2_chroma_w,
                            (2 * y + k / 2) >> format().log2_chroma_h);
        }
        expect_near(view.chroma[y * view.chroma_stride + 2 * x + component - 1], sum / 4 / scale);
      }
    }
  }
}

class DeepFormats : public testing::TestWithParam<AVPixelFormat> {};
INSTANTIATE_TEST_SUITE_P(ToNv12, DeepFormats,
                         testing::Values(AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_P010LE, AV_PIX_FMT_YUV422P10LE,
                                         AV_PIX_FMT_YUV444P10LE, AV_PIX_FMT_YUV420P12LE, AV_PIX_FMT_YUV444P12LE,
                                         AV_PIX_FMT_YUV420P16LE),
                         [](const auto& parameter) { return std::string(av_get_pix_fmt_name(parameter.param)); });

TEST_P(DeepFormats, ADitherKeepsTheMean) {
  const int depth = av_pix_fmt_desc_get(GetParam())->comp[0].depth;
  constexpr int kSide = 64;
  for (int k = 0; k < 1 << std::min(depth - 8, 4); ++k) {
    const unsigned value = (100u << (depth - 8)) + (unsigned(k) << std::max(0, depth - 12));
    const Libav<AVFrame> frame = make_frame(GetParam(), kSide, kSide);
    fill(*frame, [&](int) { return value; });
    Nv12 memory;
    const Nv12View view = nv12_of(*frame, memory);
    double luma = 0, chroma = 0;
    for (int y = 0; y < kSide; ++y) {
      for (int x = 0; x < kSide; ++x) luma += view.luma[y * view.luma_stride + x];
    }
    for (int y = 0; y < kSide / 2; ++y) {
      for (int x = 0; x < kSide; ++x) chroma += view.chroma[y * view.chroma_stride + x];
    }
    const double exact = value / double(1 << (depth - 8));
    EXPECT_NEAR(luma / (kSide * kSide), exact, 0.01) << value;
    EXPECT_NEAR(chroma / (kSide * kSide / 2), exact, 0.01) << value;
  }
}

TEST(ToNv12, ExtremesStayInside) {
  for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_YUV444P16LE}) {
    const int depth = av_pix_fmt_desc_get(format)->comp[0].depth;
    const Libav<AVFrame> frame = make_frame(format, 16, 16);
    fill(*frame, [&](int component) { return component == 0 ? (1u << depth) - 1 : 0; });
    Nv12 memory;
    const Nv12View view = nv12_of(*frame, memory);
    for (int k = 0; k < 16; ++k) {
      EXPECT_EQ(view.luma[k * view.luma_stride + k], 255);
      EXPECT_EQ(view.chroma[k / 2 * view.chroma_stride + k], 0);
    }
  }
}

TEST(ToNv12, GrayHasNoColour) {
  const Libav<AVFrame> frame = make_frame(AV_PIX_FMT_GRAY8, 8, 8);
  fill(*frame, [](int) { return 77u; });
  Nv12 memory;
  const Nv12View view = nv12_of(*frame, memory);
  EXPECT_EQ(view.luma[9], 77);
  EXPECT_EQ(view.chroma[9], 128);
}

TEST(ToNv12, AnOddRowAndColumnAreLeftOut) {
  const Libav<AVFrame> frame = make_frame(AV_PIX_FMT_YUV420P, 9, 7);
  Nv12 memory;
  const Nv12View view = nv12_of(*frame, memory);
  EXPECT_EQ(view.width, 8);
  EXPECT_EQ(view.height, 6);
}

struct Source {
  const char *name, *encoder;
  AVPixelFormat format;
  const char* told;
};

class LossySources : public testing::TestWithParam<Source> {};
INSTANTIATE_TEST_SUITE_P(
    Clip, LossySources,
    testing::Values(Source{"ten_bits", "libx264", AV_PIX_FMT_YUV420P10LE, "its pictures of 10 bits are dithered to 8"},
                    Source{"wide_chroma", "libx264", AV_PIX_FMT_YUV422P, "its chroma is resampled to 4:2:0"},
                    Source{"full_chroma", "libx264", AV_PIX_FMT_YUV444P, "its chroma is resampled to 4:2:0"},
                    Source{"both", "libx264", AV_PIX_FMT_YUV422P10LE,
                           "its pictures of 10 bits are dithered to 8, their chroma is resampled to 4:2:0"}),
    [](const auto& parameter) { return std::string(parameter.param.name); });

// The middle of a flat colour must come out as it went in, and the loss be told.
TEST_P(LossySources, AreStitchedWithANotice) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.encoder = GetParam().encoder;
  spec.format = GetParam().format;
  spec.colour = {AVCOL_RANGE_MPEG, AVCOL_SPC_BT709, AVCOL_PRI_BT709, AVCOL_TRC_BT709, AVCHROMA_LOC_LEFT};
  const int depth = av_pix_fmt_desc_get(spec.format)->comp[0].depth;
  write_clip(folder / "in.mp4", spec, {240, 120}, 3, [&](int index, AVFrame& frame) {
    fill(frame, [&](int component) { return unsigned(100 + 20 * component + index) << (depth - 8); });
  });
  const Finished finished = stitch_clip(folder / "in.mp4", folder / "out.mp4");
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(finished.err.find("in.mp4: " + std::string(GetParam().told) + "\n"), std::string::npos) << finished.err;
  const ClipProbe out(folder / "out.mp4");
  ASSERT_EQ(out.pictures.size(), 3u);
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_EQ(out.pictures[k].luma[60 * 240 + 120], 100 + k);
    EXPECT_EQ(out.pictures[k].chroma[30 * 240 + 120], 120 + k);
    EXPECT_EQ(out.pictures[k].chroma[30 * 240 + 121], 140 + k);
  }
  EXPECT_EQ(out.matrix, AVCOL_SPC_BT709);
  EXPECT_EQ(out.range, AVCOL_RANGE_MPEG);
}

TEST(Clip, RgbPicturesBecomeFullRangeAndAreTaggedSo) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.encoder = "png";
  spec.options.clear();
  spec.format = AV_PIX_FMT_RGB24;
  write_clip(folder / "in.mov", spec, {240, 120}, 2, [](int, AVFrame& frame) {
    for (int y = 0; y < frame.height; ++y)
      std::memset(frame.data[0] + y * frame.linesize[0], 200, std::size_t(frame.width) * 3);
  });
  const Finished finished = stitch_clip(folder / "in.mov", folder / "out.mov");
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(finished.err.find("its RGB pictures become BT.601 with full range"), std::string::npos) << finished.err;
  const ClipProbe out(folder / "out.mov");
  EXPECT_EQ(out.range, AVCOL_RANGE_JPEG);
  EXPECT_EQ(out.matrix, AVCOL_SPC_BT470BG);
  EXPECT_EQ(out.pictures.at(1).luma[60 * 240 + 120], 200);
}

}  // namespace
}  // namespace biseam::tool
