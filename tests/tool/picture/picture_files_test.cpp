#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>

#include "base/failure.hpp"
#include "picture/encode.hpp"
#include "picture/read_picture.hpp"
#include "picture/write_picture.hpp"
#include "tool/support/expect_failure.hpp"
#include "tool/support/nv12_picture.hpp"
#include "tool/support/samples.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::expect_one_line_naming;
using test::failure_of;
using test::read_bytes;
using test::ScratchFolder;
using test::write_bytes;

Nv12 smooth_picture(int width, int height) {
  Nv12 picture(width, height);
  for (std::size_t i = 0; i < picture.luma.size(); ++i) {
    const double x = double(i % std::size_t(width)), y = double(i / std::size_t(width));
    picture.luma[i] = std::uint8_t(128 + 60 * std::sin(x / 17) + 50 * std::cos(y / 11));
  }
  for (std::size_t i = 0; i < picture.chroma.size(); ++i) picture.chroma[i] = std::uint8_t(118 + i % 2 * 20);
  return picture;
}

TEST(PictureFiles, RawComesBackByteForByte) {
  const ScratchFolder folder;
  const Nv12 picture = smooth_picture(64, 48);
  write_picture(folder / "a.nv12", picture);
  const Nv12 back = test::read_nv12(folder / "a.nv12", Size{64, 48});
  EXPECT_EQ(back.luma, picture.luma);
  EXPECT_EQ(back.chroma, picture.chroma);
}

TEST(PictureFiles, PngKeepsEveryByteOfRgb) {
  const ScratchFolder folder;
  const Rgb picture = to_rgb(smooth_picture(62, 50));
  write_picture(folder / "a.png", picture);
  const Nv12 back = test::read_nv12(folder / "a.png");
  const Nv12 expected = to_nv12(picture);
  EXPECT_EQ(back.luma, expected.luma);
  EXPECT_EQ(back.chroma, expected.chroma);
}

TEST(PictureFiles, PngOfOddSizeIsWrittenAndReadWhole) {
  const ScratchFolder folder;
  write_picture(folder / "a.png", Rgb(7, 5));
  const Libav<AVFrame> back = read_picture(folder / "a.png");
  EXPECT_EQ(back->width, 7);
  EXPECT_EQ(back->height, 5);
}

Libav<AVFrame> varied(AVPixelFormat format) {
  Libav<AVFrame> frame = test::make_frame(format, 32, 16);
  frame->color_range = AVCOL_RANGE_JPEG;
  frame->chroma_location = AVCHROMA_LOC_CENTER;
  test::fill(*frame, [&](int component, int x, int y) {
    return (60u << (test::described(*frame).comp[0].depth - 8)) + unsigned(40 * component + 2 * x + 3 * y);
  });
  return frame;
}

void expect_near(const AVFrame& got, const AVFrame& expected, int tolerance) {
  for (int component = 0; component < test::described(expected).nb_components; ++component) {
    for (int y = 0; y < test::rows_of(expected, component); ++y) {
      for (int x = 0; x < test::columns_of(expected, component); ++x) {
        ASSERT_NEAR(int(test::get_sample(got, component, x, y)), int(test::get_sample(expected, component, x, y)), tolerance)
            << component << ": " << x << ", " << y;
      }
    }
  }
}

TEST(PictureFiles, PngKeepsRgbAndGrayOfAllDepths) {
  const ScratchFolder folder;
  for (const AVPixelFormat format : {AV_PIX_FMT_GBRP, AV_PIX_FMT_GRAY8, AV_PIX_FMT_GBRP12}) {
    SCOPED_TRACE(av_get_pix_fmt_name(format));
    const Libav<AVFrame> picture = varied(format);
    write_picture(folder / "a.png", *picture);
    testing::internal::CaptureStderr();  // that 16 bits are rounded to 12
    const Libav<AVFrame> back = read_picture(folder / "a.png");
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(back->format, format);
    expect_near(*back, *picture, 0);
  }
}

TEST(PictureFiles, JpegKeepsItsChroma) {
  const ScratchFolder folder;
  for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV444P}) {
    SCOPED_TRACE(av_get_pix_fmt_name(format));
    const Libav<AVFrame> picture = varied(format);
    write_picture(folder / "a.jpg", *picture);
    const Libav<AVFrame> back = read_picture(folder / "a.jpg");
    ASSERT_EQ(back->format, format);
    EXPECT_EQ(back->color_range, AVCOL_RANGE_JPEG);
    EXPECT_EQ(back->chroma_location, AVCHROMA_LOC_CENTER);
    expect_near(*back, *picture, 6);
  }
  write_picture(folder / "a.jpg", *varied(AV_PIX_FMT_GBRP));
  EXPECT_EQ(read_picture(folder / "a.jpg")->format, AV_PIX_FMT_YUV444P);
}

// JPEG files can't say that they are something else.
TEST(PictureFiles, JpegIsAlwaysFullRangeBt601) {
  const ScratchFolder folder;
  const Libav<AVFrame> picture = test::make_frame(AV_PIX_FMT_YUV420P, 32, 16);
  picture->color_range = AVCOL_RANGE_MPEG;
  picture->colorspace = AVCOL_SPC_BT709;
  test::fill(*picture, [](int component, int, int) { return component == 0 ? 63u : component == 1 ? 102u : 240u; });  // red
  write_picture(folder / "a.jpg", *picture);
  const Libav<AVFrame> back = read_picture(folder / "a.jpg");
  EXPECT_NEAR(int(test::get_sample(*back, 0, 9, 9)), 76, 2);
  EXPECT_NEAR(int(test::get_sample(*back, 1, 9, 9)), 85, 2);
  EXPECT_NEAR(int(test::get_sample(*back, 2, 9, 9)), 255, 2);
}

TEST(PictureFiles, YuvOfTenBitsBecomesPngOfSixteen) {
  const ScratchFolder folder;
  const Libav<AVFrame> picture = test::make_frame(AV_PIX_FMT_YUV422P10, 32, 16);
  picture->color_range = AVCOL_RANGE_MPEG;
  test::fill(*picture, [](int component, int x, int) { return component == 0 ? 64u + 13 * unsigned(x) : 512u; });
  write_picture(folder / "a.png", *picture);
  testing::internal::CaptureStderr();
  const Libav<AVFrame> back = read_picture(folder / "a.png");
  testing::internal::GetCapturedStderr();
  ASSERT_EQ(back->format, AV_PIX_FMT_GBRP12);
  for (int x = 0; x < 32; ++x) {
    for (int component = 0; component < 3; ++component) {
      EXPECT_NEAR(test::get_sample(*back, component, x, 5), 13 * x * 4095 / 876.0, 1);
    }
  }
}

TEST(PictureFiles, JpegOfBothKindsIsCloseAndFullRange) {
  const ScratchFolder folder;
  const Nv12 picture = smooth_picture(64, 48);
  write_picture(folder / "a.jpg", picture);
  write_picture(folder / "b.jpeg", to_rgb(picture));
  for (const char* name : {"a.jpg", "b.jpeg"}) {
    const Nv12 back = test::read_nv12(folder / name);
    ASSERT_EQ(back.luma.size(), picture.luma.size());
    for (std::size_t i = 0; i < back.luma.size(); ++i) ASSERT_LE(std::abs(back.luma[i] - picture.luma[i]), 6) << name << i;
    for (std::size_t i = 0; i < back.chroma.size(); ++i) ASSERT_LE(std::abs(back.chroma[i] - picture.chroma[i]), 6) << name;
  }
}

TEST(PictureFiles, TruncatedFilesAreRefusedNamingTheFile) {
  const ScratchFolder folder;
  const Rgb picture = to_rgb(smooth_picture(320, 200));
  const auto png = encode_png(picture), jpeg = encode_jpeg(picture);
  for (const auto& [name, bytes] : {std::pair{"cut.png", png}, std::pair{"cut.jpg", jpeg}}) {
    for (const std::size_t part : {2u, 4u, 10u}) {
      write_bytes(folder / name, std::string(bytes.begin(), bytes.begin() + std::ptrdiff_t(bytes.size() / part)));
      const std::string path = folder / name;
      const auto [code, text] = failure_of([&] { test::read_nv12(path); });
      EXPECT_EQ(code, ExitCode::input);
      expect_one_line_naming(text, path);
    }
  }
}

TEST(PictureFiles, NoPictureIsRefusedNamingTheFile) {
  const ScratchFolder folder;
  write_bytes(folder / "text.png", "this is no picture\n");
  write_bytes(folder / "empty.png", "");
  for (const char* name : {"text.png", "empty.png", "missing.png", "."}) {
    const auto [code, text] = failure_of([&] { test::read_nv12(folder / name); });
    EXPECT_EQ(code, ExitCode::input) << name;
    expect_one_line_naming(text, folder / name);
  }
}

TEST(PictureFiles, RawOfAnotherLengthIsRefused) {
  const ScratchFolder folder;
  for (const std::size_t bytes : {0u, 95u, 97u}) {
    write_bytes(folder / "a.nv12", std::string(bytes, 'x'));
    const auto [code, text] = failure_of([&] { test::read_nv12(folder / "a.nv12", Size{8, 8}); });
    EXPECT_EQ(code, ExitCode::input) << bytes;
    expect_one_line_naming(text, folder / "a.nv12");
  }
}

TEST(PictureFiles, RawWithoutASizeSaysWhatIsMissing) {
  const ScratchFolder folder;
  write_bytes(folder / "a.nv12", "xx");
  const auto [code, text] = failure_of([&] { test::read_nv12(folder / "a.nv12"); });
  EXPECT_EQ(code, ExitCode::usage);
  EXPECT_NE(text.find("--size"), std::string::npos);
}

TEST(PictureFiles, SizesAreParsedStrictly) {
  EXPECT_EQ(parse_size("1920x960"), (Size{1920, 960}));
  for (const char* text :
       {"", "x", "12", "12x", "x12", "12x13", "13x12", "0x2", "-2x2", "2x2x", "2 x2", "99999999999x2", "40000x2"}) {
    EXPECT_EQ(failure_of([&] { parse_size(text); }).first, ExitCode::usage) << text;
  }
}

TEST(PictureFiles, AFailedWriteLeavesNothing) {
  const ScratchFolder folder;
  std::filesystem::create_directory(folder / "taken.png");
  for (const char* name : {"no_such_folder/a.png", "taken.png"}) {
    const auto [code, text] = failure_of([&] { write_picture(folder / name, Rgb(4, 4)); });
    EXPECT_EQ(code, ExitCode::output);
    expect_one_line_naming(text, folder / name);
  }
  EXPECT_EQ(folder.names(), std::vector<std::string>{"taken.png"});
}

TEST(PictureFiles, AnUnknownExtensionIsRefusedBeforeAnythingIsMade) {
  const ScratchFolder folder;
  for (const char* name : {"a", "a.bmp", "a.png.txt"}) {
    EXPECT_EQ(failure_of([&] { write_picture(folder / name, Rgb(4, 4)); }).first, ExitCode::usage) << name;
  }
  EXPECT_TRUE(folder.names().empty());
}

TEST(PictureFiles, APictureReplacesAnOlderOneAndKeepsItsModeAndLinks) {
  const ScratchFolder folder;
  write_bytes(folder / "real.nv12", "old");
  ASSERT_EQ(::chmod((folder / "real.nv12").c_str(), 0640), 0);
  std::filesystem::create_symlink("real.nv12", folder / "link.nv12");
  write_picture(folder / "link.nv12", Nv12(4, 4));
  EXPECT_EQ(read_bytes(folder / "real.nv12").size(), 24u);
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.nv12"));
  struct stat info = {};
  ASSERT_EQ(::stat((folder / "real.nv12").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777u, 0640u);
}

TEST(PictureFiles, ANewFileHasTheUsualMode) {
  const ScratchFolder folder;
  const mode_t before = ::umask(027);
  write_picture(folder / "a.nv12", Nv12(4, 4));
  ::umask(before);
  struct stat info = {};
  ASSERT_EQ(::stat((folder / "a.nv12").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777u, 0640u);
}

}  // namespace
}  // namespace biseam::tool
