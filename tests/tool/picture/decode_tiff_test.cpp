// TIFF as FFmpeg writes it, whose decoder for it either takes tags it doesn't know for damage, or damage for nothing.
#include "picture/decode_tiff.hpp"

#include <gtest/gtest.h>

#include <random>

#include "picture/read_picture.hpp"
#include "tool/support/encoded.hpp"
#include "tool/support/expect_failure.hpp"
#include "tool/support/nv12_picture.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

constexpr int kWidth = 320, kHeight = 200;
constexpr const char* kCompressions[] = {"raw", "packbits", "lzw", "deflate"};

Rgb picture() {
  Rgb all(kWidth, kHeight);
  std::mt19937 random(1);
  for (std::size_t k = 0; k < all.bytes.size(); ++k)
    all.bytes[k] = k % 960 < 480 ? std::uint8_t(random()) : std::uint8_t(k / 960);
  return all;
}

std::string tiff(const std::string& compression) {
  return test::encoded(
      "tiff", AV_PIX_FMT_RGB24, kWidth, kHeight,
      [](AVFrame& frame) {
        const Rgb from = picture();
        for (std::size_t y = 0; y < kHeight; ++y) {
          std::copy_n(&from.bytes[y * kWidth * 3], kWidth * 3, frame.data[0] + std::ptrdiff_t(y) * frame.linesize[0]);
        }
      },
      compression);
}

TEST(DecodeTiff, EveryCompressionIsRead) {
  const test::ScratchFolder folder;
  const Nv12 expected = to_nv12(picture());
  for (const char* compression : kCompressions) {
    SCOPED_TRACE(compression);
    test::write_bytes(folder / "a.tif", tiff(compression));
    const Nv12 got = test::read_nv12(folder / "a.tif");
    EXPECT_EQ(got.luma, expected.luma);
    EXPECT_EQ(got.chroma, expected.chroma);
  }
}

TEST(DecodeTiff, DamageIsRefused) {
  const test::ScratchFolder folder;
  const std::string path = folder / "a.tif";
  for (const char* compression : kCompressions) {
    SCOPED_TRACE(compression);
    const std::string whole = tiff(compression);
    std::vector<std::string> bad;
    for (const std::size_t part : {2u, 4u, 10u}) bad.push_back(whole.substr(0, whole.size() / part));
    // Samples of raw ones can't be wrong.
    if (std::string(compression) != "raw") bad.push_back(whole), std::fill_n(bad.back().begin() + 20000, 3000, '\xff');
    for (const std::string& bytes : bad) {
      test::write_bytes(path, bytes);
      const auto [code, text] = test::failure_of([&] { test::read_nv12(path); });
      EXPECT_EQ(code, ExitCode::input);
      test::expect_one_line_naming(text, path);
    }
  }
}

}  // namespace
}  // namespace biseam::tool
