#include "base/distinct_files.hpp"

#include <gtest/gtest.h>

#include <filesystem>

#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

namespace fs = std::filesystem;

class DistinctFiles : public testing::Test {
 protected:
  void expect_clash(const std::string& first, const std::string& second) const {
    const NamedFile input{"the input", folder_ / first}, output{"-o", folder_ / second}, other{"--json", folder_ / first};
    for (const auto& files : {std::pair{std::vector{input}, std::vector{output}},
                              std::pair{std::vector<NamedFile>(), std::vector{output, other}}}) {
      const auto [code, text] = test::failure_of([&] { check_distinct(files.first, files.second); });
      EXPECT_EQ(code, ExitCode::usage);
      test::expect_one_line_naming(text, input.path);
      test::expect_one_line_naming(text, output.path);
    }
  }

  test::ScratchFolder folder_;
};

TEST_F(DistinctFiles, AFileIsTheSameByWhateverName) {
  test::write_bytes(folder_ / "a", "a");
  fs::create_directory(folder_ / "sub");
  fs::create_symlink("a", folder_ / "link");
  fs::create_symlink("link", folder_ / "link_to_link");
  fs::create_hard_link(folder_ / "a", folder_ / "hard");
  for (const char* name : {"a", "./a", "sub/../a", "link", "link_to_link", "hard"}) expect_clash("a", name);
}

TEST_F(DistinctFiles, WhatIsNotThereYetIsTheSameByItsPlace) {
  fs::create_directory(folder_ / "sub");
  fs::create_symlink("new", folder_ / "dangling");
  fs::create_symlink(folder_ / "dangling", folder_ / "dangling_twice");
  fs::create_directory_symlink("sub", folder_ / "other");
  for (const char* name : {"new", "./new", "sub/../new", "dangling", "dangling_twice"}) expect_clash("new", name);
  expect_clash("sub/new", "other/new");
}

TEST_F(DistinctFiles, OtherFilesDevicesAndEmptyNamesAreLetThrough) {
  test::write_bytes(folder_ / "a", "a");
  test::write_bytes(folder_ / "b", "a");
  check_distinct({{"the input", folder_ / "a"}, {"the input", folder_ / "a"}, {"--camera", ""}},
                 {{"-o", folder_ / "b"}, {"--json", folder_ / "c"}, {"--show-seams", ""}, {"--seam-layer", ""}});
  check_distinct({{"the input", "/dev/null"}}, {{"-o", "/dev/null"}, {"--json", "/dev/null"}});
}

}  // namespace
}  // namespace biseam::tool
