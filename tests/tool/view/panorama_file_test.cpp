#include "view/panorama_file.hpp"

#include <gtest/gtest.h>

#include "picture/encode.hpp"
#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::ScratchFolder;
using test::write_bytes;

std::string text(const std::vector<std::uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

void expect_refusal(const std::string& path, const std::string& what) {
  const auto [code, line] = test::failure_of([&] { inspect_panorama(path); });
  EXPECT_EQ(code, ExitCode::input);
  test::expect_one_line_naming(line, path);
  EXPECT_NE(line.find(what), line.npos) << line;
}

TEST(PanoramaFile, PicturesAreKnownByTheirContent) {
  const ScratchFolder folder;
  write_bytes(folder / "a", text(encode_png(Rgb(64, 32))));
  write_bytes(folder / "b", text(encode_jpeg(Nv12(64, 32))));
  write_bytes(folder / "c", text(encode_png(Rgba(64, 32))));
  const PanoramaFile png = inspect_panorama(folder / "a"), jpeg = inspect_panorama(folder / "b"),
                     layer = inspect_panorama(folder / "c");
  EXPECT_EQ(png.media, Media::png);
  EXPECT_EQ(jpeg.media, Media::jpeg);
  EXPECT_EQ(png.size, (Size{64, 32}));
  EXPECT_FALSE(png.transparent);
  EXPECT_TRUE(layer.transparent);
  EXPECT_TRUE(png.notices.empty());
}

TEST(PanoramaFile, AnotherShapeThanTwoToOneIsTold) {
  const ScratchFolder folder;
  write_bytes(folder / "a.png", text(encode_png(Rgb(64, 64))));
  const PanoramaFile file = inspect_panorama(folder / "a.png");
  ASSERT_EQ(file.notices.size(), 1u);
  test::expect_one_line_naming(file.notices.front(), "a.png: 64x64 pixels");
}

TEST(PanoramaFile, WhatCanNotBeShownIsRefused) {
  const ScratchFolder folder;
  expect_refusal(folder / "missing.png", "can't be opened");
  expect_refusal(folder / ".", "not a regular file");
  write_bytes(folder / "empty.png", "");
  expect_refusal(folder / "empty.png", "is not a JPEG, PNG, MP4 or WebM file");
  write_bytes(folder / "text.mp4", "hello");
  expect_refusal(folder / "text.mp4", "is not a JPEG, PNG, MP4 or WebM file");
  const std::string png = text(encode_png(Rgb(64, 32)));
  write_bytes(folder / "short.png", png.substr(0, png.size() / 2));
  expect_refusal(folder / "short.png", "short.png");
  std::string head(
      "\0\0\0\x10"
      "ftypisom",
      12);
  write_bytes(folder / "head.mp4", head.append(100, '\0'));
  expect_refusal(folder / "head.mp4", "head.mp4");
}

PanoramaFile file_of(Media media, Size size, bool transparent = false) {
  PanoramaFile file;
  file.path = "seams.png";
  file.media = media;
  file.size = size;
  file.transparent = transparent;
  return file;
}

void expect_seams_refused(const PanoramaFile& seams, const PanoramaFile& panorama, const std::string& what) {
  const auto [code, line] = test::failure_of([&] { check_seams(seams, panorama); });
  EXPECT_EQ(code, ExitCode::input);
  test::expect_one_line_naming(line, "seams.png");
  EXPECT_NE(line.find(what), line.npos) << line;
}

TEST(PanoramaFile, SeamsFitThePanoramaTheyLieOver) {
  const PanoramaFile picture = file_of(Media::jpeg, {64, 32}), video = file_of(Media::mp4, {64, 32});
  check_seams(file_of(Media::png, {64, 32}), picture);
  check_seams(file_of(Media::png, {128, 64}), picture);
  check_seams(file_of(Media::png, {64, 32}, true), video);
  expect_seams_refused(file_of(Media::png, {64, 64}), picture, "64x64");
  expect_seams_refused(file_of(Media::png, {64, 32}), video, "--seam-layer");
  expect_seams_refused(video, picture, "is a video");
}

}  // namespace
}  // namespace biseam::tool
