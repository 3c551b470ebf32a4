#include "base/byte_source.hpp"

#include <gtest/gtest.h>

#include <fstream>

#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

std::string as_text(const std::vector<std::uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

TEST(ByteSource, IsReadUpToTheLimitAndFromThereOn) {
  const test::ScratchFolder folder;
  std::ofstream(folder / "file") << "abcdefg";
  ByteSource source(folder / "file");
  EXPECT_EQ(as_text(source.read_all(3)), "abc");
  EXPECT_EQ(as_text(source.read_all(100)), "defg");
  EXPECT_EQ(as_text(source.read_all(100)), "");
}

TEST(ByteSource, WhatCantBeReadIsRefusedByItsName) {
  const test::ScratchFolder folder;
  const auto [code, line] = test::failure_of([&] { ByteSource(folder / "none"); });
  EXPECT_EQ(code, ExitCode::input);
  test::expect_one_line_naming(line, folder / "none");
  EXPECT_EQ(test::failure_of([&] { ByteSource(folder / "."); }).second, folder / "." + ": is a folder, not a picture");
}

}  // namespace
}  // namespace biseam::tool
