#include "tag/tag_job.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

constexpr int kMost = std::numeric_limits<int>::max();

template <class Work>
std::string told_by(Work work) {
  testing::internal::CaptureStderr();
  work();
  return testing::internal::GetCapturedStderr();
}

TEST(CheckSides, AWholeSphereIsTwiceAsWideAsHigh) {
  for (const Size size : {Size{2, 1}, {1920, 960}, {kMost - 1, kMost / 2}}) check_sides({"a", "b"}, size);
  for (const Size size : {Size{1, 1}, {960, 1920}, {1921, 960}, {1919, 960}, {2, kMost / 2 + 2}, {kMost, kMost}}) {
    const auto [code, line] = test::failure_of([&] { check_sides({"a.jpg", "b"}, size); });
    EXPECT_EQ(code, ExitCode::input);
    test::expect_one_line_naming(line, "a.jpg: " + std::to_string(size.width) + "x" + std::to_string(size.height) + " pixels");
  }
}

TEST(OldProjection, IsToldOnlyWhereItWasAnotherOne) {
  EXPECT_EQ(told_by([] { tell_old_projection({"a.jpg", "b"}, ""); }), "");
  EXPECT_EQ(told_by([] { tell_old_projection({"a.jpg", "b"}, "equirectangular"); }), "");
  EXPECT_EQ(told_by([] {
              tell_old_projection({"a.jpg", "b"}, "cylindrical");
            }),
            "biseam: a.jpg: was marked as cylindrical, which equirectangular takes the place of\n");
}

// Longer than what is copied at once.
TEST(KeepMarked, IsACopyToTheByteOrTheFileItself) {
  const test::ScratchFolder folder;
  for (const std::size_t size : {std::size_t(0), std::size_t(1), (std::size_t(1) << 20), (std::size_t(5) << 19) + 3}) {
    std::string bytes(size, '\0');
    for (std::size_t k = 0; k < size; ++k) bytes[k] = char(k * k >> 3);
    test::write_bytes(folder / "a", bytes);
    const std::string notice = "biseam: " + folder / "a" + ": is marked as a panorama already\n";
    EXPECT_EQ(told_by([&] { keep_marked({folder / "a", folder / "b", false}); }), notice);
    EXPECT_EQ(told_by([&] { keep_marked({folder / "a", folder / "a", true}); }), notice);
    EXPECT_TRUE(test::read_bytes(folder / "a") == bytes);
    EXPECT_TRUE(test::read_bytes(folder / "b") == bytes);
  }
  EXPECT_EQ(folder.names().size(), 2u);
}

TEST(KeepMarked, WhatCantBeCopiedIsNamed) {
  const test::ScratchFolder folder;
  test::write_bytes(folder / "a", "a");
  EXPECT_EQ(test::failure_of([&] { keep_marked({folder / "a", folder / "none/b", false}); }).first, ExitCode::output);
  EXPECT_EQ(test::failure_of([&] { keep_marked({folder / "c", folder / "b", false}); }).first, ExitCode::input);
  EXPECT_EQ(folder.names(), std::vector<std::string>{"a"});
}

}  // namespace
}  // namespace biseam::tool
