#include "media/frame_converter.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

#include "media/pixel_format.hpp"
#include "support/random_source.hpp"
#include "tool/support/samples.hpp"

namespace biseam::tool {
namespace {

using namespace test;

constexpr int kWidth = 40, kHeight = 24;

unsigned most(const AVFrame& frame, int component) { return (1u << described(frame).comp[component].depth) - 1; }

Libav<AVFrame> random_frame(AVPixelFormat format, RandomSource& random) {
  Libav<AVFrame> frame = make_frame(format, kWidth, kHeight);
  fill(*frame, [&](int component, int, int) { return unsigned(random.between(0, int(most(*frame, component)))); });
  return frame;
}

Libav<AVFrame> flat_frame(const char* format, std::initializer_list<unsigned> values) {
  Libav<AVFrame> frame = make_frame(av_get_pix_fmt(format), kWidth, kHeight);
  fill(*frame, [&](int component, int, int) { return component < int(values.size()) ? values.begin()[component] : 0; });
  return frame;
}

void expect_flat(const AVFrame& frame, std::initializer_list<unsigned> values, int tolerance = 0) {
  for (int component = 0; component < int(values.size()); ++component) {
    for (int y = 0; y < rows_of(frame, component); y += 3) {
      for (int x = 0; x < columns_of(frame, component); x += 3) {
        ASSERT_NEAR(int(get_sample(frame, component, x, y)), int(values.begin()[component]), tolerance)
            << "component " << component << " at " << x << ", " << y;
      }
    }
  }
}

TEST(FrameConverter, SharesWhatIsInAWorkingFormatAlready) {
  RandomSource random;
  FrameConverter converter;
  for (const AVPixelFormat format : {AV_PIX_FMT_NV12, AV_PIX_FMT_YUV422P10, AV_PIX_FMT_GBRP, AV_PIX_FMT_YUVJ420P}) {
    const Libav<AVFrame> frame = random_frame(format, random);
    frame->chroma_location = AVCHROMA_LOC_TOPLEFT;
    frame->colorspace = AVCOL_SPC_BT709;
    const Libav<AVFrame> got = converter.to_working(*frame);
    EXPECT_EQ(got->data[1], frame->data[1]);
    EXPECT_EQ(got->format, working_format(format));
    EXPECT_EQ(got->chroma_location, AVCHROMA_LOC_TOPLEFT);
    const bool is_full = format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_GBRP;
    EXPECT_EQ(got->color_range, is_full ? AVCOL_RANGE_JPEG : AVCOL_RANGE_UNSPECIFIED);
    EXPECT_EQ(got->colorspace, format == AV_PIX_FMT_GBRP ? AVCOL_SPC_RGB : AVCOL_SPC_BT709);
  }
}

class Exact : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(FrameConverter, Exact,
                         testing::Values("yuva420p", "yuva444p12le", "yuvj444p", "yuyv422", "uyvy422", "yvyu422", "nv42",
                                         "nv20le", "p410le", "y210le", "yuv420p10be", "rgb24", "bgr24", "rgba", "bgr0", "0rgb",
                                         "gbrap", "gbrap10le", "gbrap12le", "gbrp12be", "x2rgb10le", "ya8", "gray10le",
                                         "gray12le"),
                         [](const auto& parameter) { return std::string(parameter.param); });

TEST_P(Exact, EverySampleArrives) {
  RandomSource random;
  const Libav<AVFrame> frame = random_frame(av_get_pix_fmt(GetParam()), random);
  const Libav<AVFrame> got = FrameConverter().to_working(*frame);
  const int components = described(*frame).nb_components < 3 ? 1 : 3;  // the others are opacity, or none
  for (int component = 0; component < components; ++component) {
    ASSERT_EQ(described(*got).comp[component].depth, described(*frame).comp[component].depth);
    for (int y = 0; y < rows_of(*got, component); ++y) {
      for (int x = 0; x < columns_of(*got, component); ++x) {
        ASSERT_EQ(get_sample(*got, component, x, y), get_sample(*frame, component, x, y))
            << component << ": " << x << ", " << y;
      }
    }
  }
  const bool gets_chroma = components == 1 && described(*got).nb_components == 3;
  EXPECT_EQ(gets_chroma ? get_sample(*got, 1, 3, 3) : 0, gets_chroma ? most(*got, 1) / 2 + 1 : 0);
}

class Deep : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(FrameConverter, Deep,
                         testing::Values("rgb48be", "rgb48le", "bgr48le", "rgba64be", "gbrp16le", "gbrp14le", "gbrp9le",
                                         "gray16be", "ya16le", "rgb565le", "rgb444le", "bgr8"),
                         [](const auto& parameter) { return std::string(parameter.param); });

TEST_P(Deep, IsRoundedToTheNearest) {
  RandomSource random;
  const Libav<AVFrame> frame = random_frame(av_get_pix_fmt(GetParam()), random);
  const Libav<AVFrame> got = FrameConverter().to_working(*frame);
  for (int component = 0; component < 3; ++component) {
    const int source = described(*frame).nb_components < 3 ? 0 : component;
    const double scale = double(most(*got, component)) / most(*frame, source);
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < kWidth; ++x) {
        ASSERT_EQ(get_sample(*got, component, x, y), std::floor(get_sample(*frame, source, x, y) * scale + 0.5));
      }
    }
  }
  EXPECT_EQ(got->color_range, AVCOL_RANGE_JPEG);
}

// 12 bits are neither lost on the way to 16 nor on the way back.
TEST(FrameConverter, TwelveBitsGoThroughSixteen) {
  const Libav<AVFrame> frame = make_frame(AV_PIX_FMT_GBRP12, 64, 64);
  fill(*frame, [](int, int x, int y) { return unsigned(y * 64 + x); });
  FrameConverter there, back;
  const Libav<AVFrame> wide = there.convert(*frame, AV_PIX_FMT_RGB48BE);
  const Libav<AVFrame> again = back.to_working(*wide);
  for (int y = 0; y < 64; ++y) {
    for (int x = 0; x < 64; ++x) {
      ASSERT_EQ(get_sample(*wide, 0, x, y), std::floor((y * 64 + x) * 65535.0 / 4095 + 0.5));
      ASSERT_EQ(get_sample(*again, 2, x, y), unsigned(y * 64 + x));
    }
  }
}

TEST(FrameConverter, CoarserChromaIsSpreadOut) {
  FrameConverter converter;
  for (const char* format : {"yuv411p", "yuv410p", "yuv440p", "yuvj440p", "yuvj411p"}) {
    SCOPED_TRACE(format);
    const Libav<AVFrame> got = converter.to_working(*flat_frame(format, {90, 100, 170}));
    expect_flat(*got, {90, 100, 170});
    EXPECT_EQ(got->color_range, std::string(format).starts_with("yuvj") ? AVCOL_RANGE_JPEG : AVCOL_RANGE_UNSPECIFIED);
  }
}

// Limited ranges go by powers of two, full ones from the least to the most.
TEST(FrameConverter, DepthOfLumaAndChromaFollowsTheRange) {
  FrameConverter converter;
  expect_flat(*converter.to_working(*flat_frame("yuv420p16le", {235 << 8, 16 << 8, 240 << 8})), {235 << 4, 16 << 4, 240 << 4});
  expect_flat(*converter.to_working(*flat_frame("yuv422p9le", {235 << 1, 16 << 1, 240 << 1})), {235 << 2, 16 << 2, 240 << 2});
  const Libav<AVFrame> deep = flat_frame("yuv444p12le", {4095, 2048, 0});
  deep->color_range = AVCOL_RANGE_JPEG;
  expect_flat(*converter.convert(*deep, AV_PIX_FMT_YUV444P), {255, 128, 0}, 1);
}

TEST(FrameConverter, FewerBitsKeepTheMean) {
  FrameConverter converter;
  for (unsigned value = 400; value < 404; ++value) {
    const Libav<AVFrame> frame = flat_frame("yuv420p10le", {value, value, value});
    frame->color_range = AVCOL_RANGE_MPEG;
    const Libav<AVFrame> got = converter.convert(*frame, AV_PIX_FMT_YUV420P);
    double sum = 0;
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < kWidth; ++x) sum += get_sample(*got, 0, x, y);
    }
    EXPECT_NEAR(sum / (kWidth * kHeight), value / 4.0, 0.05);
  }
}

TEST(FrameConverter, RgbBecomesFullRangeBt601) {
  const Libav<AVFrame> frame = flat_frame("gbrp", {100, 50, 200});  // green, blue, red as planes; as components R, G, B
  FrameConverter converter;
  const Libav<AVFrame> got = converter.convert(*frame, AV_PIX_FMT_YUV444P);
  const double r = 100, g = 50, b = 200, y = 0.299 * r + 0.587 * g + 0.114 * b;
  expect_flat(
      *got,
      {unsigned(std::lround(y)), unsigned(std::lround(128 + (b - y) / 1.772)), unsigned(std::lround(128 + (r - y) / 1.402))},
      1);
  EXPECT_EQ(got->color_range, AVCOL_RANGE_JPEG);
  EXPECT_EQ(got->colorspace, AVCOL_SPC_BT470BG);
}

TEST(FrameConverter, YuvBecomesRgbByItsMatrixAndRange) {
  FrameConverter converter;
  const Libav<AVFrame> limited = flat_frame("yuv420p", {235, 128, 128}), full = flat_frame("yuvj420p", {235, 128, 128});
  expect_flat(*converter.convert(*limited, AV_PIX_FMT_RGB24), {255, 255, 255});
  expect_flat(*converter.convert(*full, AV_PIX_FMT_RGB24), {235, 235, 235});
  const Libav<AVFrame> deep = flat_frame("yuv444p10le", {940, 512, 512});
  expect_flat(*converter.convert(*deep, AV_PIX_FMT_RGB48LE), {65535, 65535, 65535});
  const Libav<AVFrame> hd = flat_frame("yuv444p", {63, 102, 240});  // red
  hd->colorspace = AVCOL_SPC_BT709;
  expect_flat(*converter.convert(*hd, AV_PIX_FMT_RGB24), {255, 0, 0}, 2);
}

// Against the same formulas the other way round.
TEST(FrameConverter, DeepYuvBecomesDeepRgb) {
  FrameConverter converter;
  for (const bool is_full : {true, false}) {
    const double r = 0.7, g = 0.25, b = 0.4, y = 0.2627 * r + 0.678 * g + 0.0593 * b;
    const double cb = (b - y) / (2 * (1 - 0.0593)), cr = (r - y) / (2 * (1 - 0.2627));
    const auto sample = [&](double value, double least, double range) { return unsigned(std::lround(least + range * value)); };
    const Libav<AVFrame> frame =
        is_full ? flat_frame("yuv422p12le", {sample(y, 0, 4095), sample(cb, 2048, 4095), sample(cr, 2048, 4095)})
                : flat_frame("yuv422p12le", {sample(y, 256, 3504), sample(cb, 2048, 3584), sample(cr, 2048, 3584)});
    frame->color_range = is_full ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    frame->colorspace = AVCOL_SPC_BT2020_NCL;
    expect_flat(*converter.convert(*frame, AV_PIX_FMT_RGB48BE), {sample(r, 0, 65535), sample(g, 0, 65535), sample(b, 0, 65535)},
                24);  // half a value of 3504, thrice
  }
}

TEST(FrameConverter, EveryFormatBecomesAWorkingOne) {
  FrameConverter converter;
  for (const AVPixFmtDescriptor* known = nullptr; (known = av_pix_fmt_desc_next(known)) != nullptr;) {
    if (working_format(av_pix_fmt_desc_get_id(known)) == AV_PIX_FMT_NONE) continue;
    SCOPED_TRACE(known->name);
    const Libav<AVFrame> frame = make_frame(av_pix_fmt_desc_get_id(known), kWidth, kHeight);
    ASSERT_NO_THROW(EXPECT_TRUE(engine_format(AVPixelFormat(converter.to_working(*frame)->format))));
  }
}

TEST(FrameConverter, OddSizesAreWhole) {
  const Libav<AVFrame> frame = make_frame(AV_PIX_FMT_YUVA420P, 9, 7);
  fill(*frame, [](int component, int x, int y) { return unsigned(50 * component + 9 * y + x); });
  const Libav<AVFrame> got = FrameConverter().to_working(*frame);
  EXPECT_EQ(got->width, 9);
  EXPECT_EQ(got->height, 7);
  EXPECT_EQ(get_sample(*got, 0, 8, 6), get_sample(*frame, 0, 8, 6));
  EXPECT_EQ(get_sample(*got, 2, 4, 3), get_sample(*frame, 2, 4, 3));
}

TEST(FrameConverter, RefusesPicturesOfDevices) {
  AVFrame frame{};
  frame.format = AV_PIX_FMT_VAAPI;
  EXPECT_THROW(FrameConverter().to_working(frame), std::runtime_error);
}

}  // namespace
}  // namespace biseam::tool
