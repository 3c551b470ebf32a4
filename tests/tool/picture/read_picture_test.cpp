#include "picture/read_picture.hpp"

#include <gtest/gtest.h>

#include "base/failure.hpp"
#include "picture/encode.hpp"
#include "picture/write_picture.hpp"
#include "tool/picture/smooth_picture.hpp"
#include "tool/support/expect_failure.hpp"
#include "tool/support/nv12_picture.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::expect_one_line_naming;
using test::failure_of;
using test::ScratchFolder;
using test::smooth_picture;
using test::write_bytes;

TEST(ReadPicture, RawComesBackByteForByte) {
  const ScratchFolder folder;
  const Nv12 picture = smooth_picture(64, 48);
  write_picture(folder / "a.nv12", picture);
  const Nv12 back = test::read_nv12(folder / "a.nv12", Size{64, 48});
  EXPECT_EQ(back.luma, picture.luma);
  EXPECT_EQ(back.chroma, picture.chroma);
}

TEST(ReadPicture, PngKeepsEveryByteOfRgb) {
  const ScratchFolder folder;
  const Rgb picture = to_rgb(smooth_picture(62, 50));
  write_picture(folder / "a.png", picture);
  const Nv12 back = test::read_nv12(folder / "a.png");
  const Nv12 expected = to_nv12(picture);
  EXPECT_EQ(back.luma, expected.luma);
  EXPECT_EQ(back.chroma, expected.chroma);
}

TEST(ReadPicture, PngOfOddSizeIsWrittenAndReadWhole) {
  const ScratchFolder folder;
  write_picture(folder / "a.png", Rgb(7, 5));
  const Libav<AVFrame> back = read_picture(folder / "a.png");
  EXPECT_EQ(back->width, 7);
  EXPECT_EQ(back->height, 5);
}

TEST(ReadPicture, TruncatedFilesAreRefusedNamingTheFile) {
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

TEST(ReadPicture, NoPictureIsRefusedNamingTheFile) {
  const ScratchFolder folder;
  write_bytes(folder / "text.png", "this is no picture\n");
  write_bytes(folder / "empty.png", "");
  for (const char* name : {"text.png", "empty.png", "missing.png", "."}) {
    const auto [code, text] = failure_of([&] { test::read_nv12(folder / name); });
    EXPECT_EQ(code, ExitCode::input) << name;
    expect_one_line_naming(text, folder / name);
  }
}

TEST(ReadPicture, RawOfAnotherLengthIsRefused) {
  const ScratchFolder folder;
  for (const std::size_t bytes : {0u, 95u, 97u}) {
    write_bytes(folder / "a.nv12", std::string(bytes, 'x'));
    const auto [code, text] = failure_of([&] { test::read_nv12(folder / "a.nv12", Size{8, 8}); });
    EXPECT_EQ(code, ExitCode::input) << bytes;
    expect_one_line_naming(text, folder / "a.nv12");
  }
}

TEST(ReadPicture, RawWithoutASizeSaysWhatIsMissing) {
  const ScratchFolder folder;
  write_bytes(folder / "a.nv12", "xx");
  const auto [code, text] = failure_of([&] { test::read_nv12(folder / "a.nv12"); });
  EXPECT_EQ(code, ExitCode::usage);
  EXPECT_NE(text.find("--size"), std::string::npos);
}

TEST(ReadPicture, SizesAreParsedStrictly) {
  EXPECT_EQ(parse_size("1920x960"), (Size{1920, 960}));
  for (const char* text :
       {"", "x", "12", "12x", "x12", "12x13", "13x12", "0x2", "-2x2", "2x2x", "2 x2", "99999999999x2", "40000x2"}) {
    EXPECT_EQ(failure_of([&] { parse_size(text); }).first, ExitCode::usage) << text;
  }
}

}  // namespace
}  // namespace biseam::tool
