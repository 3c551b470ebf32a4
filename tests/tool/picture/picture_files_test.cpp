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
  const Nv12 back = read_picture(folder / "a.nv12", Size{64, 48});
  EXPECT_EQ(back.luma, picture.luma);
  EXPECT_EQ(back.chroma, picture.chroma);
}

TEST(PictureFiles, PngKeepsEveryByteOfRgb) {
  const ScratchFolder folder;
  const Rgb picture = to_rgb(smooth_picture(62, 50));
  write_picture(folder / "a.png", picture);
  const Nv12 back = read_picture(folder / "a.png");
  const Nv12 expected = to_nv12(picture);
  EXPECT_EQ(back.luma, expected.luma);
  EXPECT_EQ(back.chroma, expected.chroma);
}

TEST(PictureFiles, PngOfOddSizeIsWrittenWholeAndReadEven) {
  const ScratchFolder folder;
  write_picture(folder / "a.png", Rgb(7, 5));
  const Nv12 back = read_picture(folder / "a.png");
  EXPECT_EQ(back.width, 6);
  EXPECT_EQ(back.height, 4);
}

TEST(PictureFiles, JpegOfBothKindsIsCloseAndFullRange) {
  const ScratchFolder folder;
  const Nv12 picture = smooth_picture(64, 48);
  write_picture(folder / "a.jpg", picture);
  write_picture(folder / "b.jpeg", to_rgb(picture));
  for (const char* name : {"a.jpg", "b.jpeg"}) {
    const Nv12 back = read_picture(folder / name);
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
      const auto [code, text] = failure_of([&] { read_picture(path); });
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
    const auto [code, text] = failure_of([&] { read_picture(folder / name); });
    EXPECT_EQ(code, ExitCode::input) << name;
    expect_one_line_naming(text, folder / name);
  }
}

TEST(PictureFiles, RawOfAnotherLengthIsRefused) {
  const ScratchFolder folder;
  for (const std::size_t bytes : {0u, 95u, 97u}) {
    write_bytes(folder / "a.nv12", std::string(bytes, 'x'));
    const auto [code, text] = failure_of([&] { read_picture(folder / "a.nv12", Size{8, 8}); });
    EXPECT_EQ(code, ExitCode::input) << bytes;
    expect_one_line_naming(text, folder / "a.nv12");
  }
}

TEST(PictureFiles, RawWithoutASizeSaysWhatIsMissing) {
  const ScratchFolder folder;
  write_bytes(folder / "a.nv12", "xx");
  const auto [code, text] = failure_of([&] { read_picture(folder / "a.nv12"); });
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
