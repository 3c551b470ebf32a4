// Pictures of 16 bits a sample become those of 12.
#include "picture/decode.hpp"

#include <gtest/gtest.h>

#include "picture/read_picture.hpp"
#include "picture/write_picture.hpp"
#include "tool/support/encoded.hpp"
#include "tool/support/expect_failure.hpp"
#include "tool/support/samples.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

constexpr int kWidth = 256, kHeight = 64;

struct Format {
  const char *encoder, *name;
  AVPixelFormat format;
  int channels;
  bool high_first;
};

// Every step of the lower byte, and of the upper one.
std::uint32_t sample(int x, int y, int channel) { return std::uint32_t((x * 263 + y * 1021 + channel * 20011) & 0xffff); }

std::string make(const Format& format) {
  return test::encoded(format.encoder, format.format, kWidth, kHeight, [&](AVFrame& frame) {
    for (int y = 0; y < kHeight; ++y) {
      std::uint8_t* at = frame.data[0] + std::ptrdiff_t(y) * frame.linesize[0];
      for (int x = 0; x < kWidth; ++x) {
        for (int channel = 0; channel < format.channels; ++channel, at += 2) {
          const std::uint32_t value = sample(x, y, channel);
          at[format.high_first ? 0 : 1] = std::uint8_t(value >> 8);
          at[format.high_first ? 1 : 0] = std::uint8_t(value);
        }
      }
    }
  });
}

constexpr Format kFormats[] = {
    {"png", "a.png", AV_PIX_FMT_RGB48BE, 3, true},   {"png", "b.png", AV_PIX_FMT_RGBA64BE, 4, true},
    {"png", "c.png", AV_PIX_FMT_GRAY16BE, 1, true},  {"png", "d.png", AV_PIX_FMT_YA16BE, 2, true},
    {"tiff", "e.tif", AV_PIX_FMT_RGB48LE, 3, false}, {"tiff", "f.tif", AV_PIX_FMT_GRAY16LE, 1, false}};

TEST(DecodePicture, AreRoundedToTheNearestAndTold) {
  const test::ScratchFolder folder;
  for (const Format& format : kFormats) {
    SCOPED_TRACE(format.name);
    test::write_bytes(folder / format.name, make(format));
    testing::internal::CaptureStderr();
    const Libav<AVFrame> got = read_picture(folder / format.name);
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(told, "biseam: " + (folder / format.name) + ": its samples of 16 bits are rounded to 12\n");
    ASSERT_EQ(got->format, AV_PIX_FMT_GBRP12);
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < kWidth; ++x) {
        for (int k = 0; k < 3; ++k) {
          const double value = sample(x, y, format.channels < 3 ? 0 : k) * 4095.0 / 65535;
          ASSERT_EQ(test::get_sample(*got, k, x, y), unsigned(value + 0.5)) << k << ": " << x << ", " << y;
        }
      }
    }
  }
}

DecodedPicture decoded(const std::string& path) {
  Container source(path);
  return decode_picture(source);
}

// As JPEG files have it, which can't say so.
TEST(DecodePicture, ChromaWithoutAPlaceLiesInTheMiddle) {
  const test::ScratchFolder folder;
  write_picture(folder / "a.jpg", Nv12(32, 16));
  const DecodedPicture picture = decoded(folder / "a.jpg");
  EXPECT_EQ(picture.frame->chroma_location, AVCHROMA_LOC_CENTER);
  EXPECT_EQ(picture.frame->color_range, AVCOL_RANGE_JPEG);
  EXPECT_EQ(picture.loss, "");
}

TEST(DecodePicture, WhatIsSmallerThanTwoByTwoIsRefused) {
  const test::ScratchFolder folder;
  for (const Size size : {Size{1, 2}, Size{2, 1}}) {
    write_picture(folder / "a.png", Rgb(size.width, size.height));
    const auto [code, line] = test::failure_of([&] { decoded(folder / "a.png"); });
    EXPECT_EQ(code, ExitCode::input);
    EXPECT_EQ(line, (folder / "a.png") + ": is smaller than 2 x 2 pixels");
  }
  write_picture(folder / "a.png", Rgb(2, 2));
  EXPECT_EQ(decoded(folder / "a.png").frame->width, 2);
}

// A flat ramp of all 12-bit values goes through files of 16 bits without a step more or less.
TEST(DecodePicture, TwelveBitsComeBackFromPng) {
  const test::ScratchFolder folder;
  const Libav<AVFrame> ramp = test::make_frame(AV_PIX_FMT_GBRP12, 64, 64);
  test::fill(*ramp, [](int, int x, int y) { return unsigned(64 * y + x); });
  write_picture(folder / "ramp.png", *ramp);
  testing::internal::CaptureStderr();
  const Libav<AVFrame> got = read_picture(folder / "ramp.png");
  testing::internal::GetCapturedStderr();
  for (int component = 0; component < 3; ++component) {
    for (int y = 0; y < 64; ++y) {
      for (int x = 0; x < 64; ++x) ASSERT_EQ(test::get_sample(*got, component, x, y), unsigned(64 * y + x));
    }
  }
}

}  // namespace
}  // namespace biseam::tool
