// Pictures of 16 bits a sample.
#include <gtest/gtest.h>

#include "picture/read_picture.hpp"
#include "tool/support/encoded.hpp"
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

TEST(DeepPictures, AreRoundedToTheNearestAndTold) {
  const test::ScratchFolder folder;
  for (const Format& format :
       {Format{"png", "a.png", AV_PIX_FMT_RGB48BE, 3, true}, Format{"png", "b.png", AV_PIX_FMT_RGBA64BE, 4, true},
        Format{"png", "c.png", AV_PIX_FMT_GRAY16BE, 1, true}, Format{"png", "d.png", AV_PIX_FMT_YA16BE, 2, true},
        Format{"tiff", "e.tif", AV_PIX_FMT_RGB48LE, 3, false}, Format{"tiff", "f.tif", AV_PIX_FMT_GRAY16LE, 1, false}}) {
    SCOPED_TRACE(format.name);
    test::write_bytes(folder / format.name, make(format));
    Rgb rounded(kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < kWidth; ++x) {
        for (int k = 0; k < 3; ++k) {
          const double value = sample(x, y, format.channels < 3 ? 0 : k) / 257.0;
          rounded.bytes[std::size_t((y * kWidth + x) * 3 + k)] = std::uint8_t(value + 0.5);
        }
      }
    }
    const Nv12 expected = to_nv12(rounded);
    testing::internal::CaptureStderr();
    const Nv12 got = read_picture(folder / format.name);
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_NE(told.find("biseam: " + (folder / format.name) + ": its samples of 16 bits are rounded to 8\n"), std::string::npos)
        << told;
    EXPECT_EQ(got.luma, expected.luma);
    EXPECT_EQ(got.chroma, expected.chroma);
  }
}

}  // namespace
}  // namespace biseam::tool
