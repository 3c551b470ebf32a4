#include "picture/write_picture.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::expect_one_line_naming;
using test::failure_of;
using test::read_bytes;
using test::ScratchFolder;
using test::write_bytes;

TEST(WritePicture, AFailedWriteLeavesNothing) {
  const ScratchFolder folder;
  std::filesystem::create_directory(folder / "taken.png");
  for (const char* name : {"no_such_folder/a.png", "taken.png"}) {
    const auto [code, text] = failure_of([&] { write_picture(folder / name, Rgb(4, 4)); });
    EXPECT_EQ(code, ExitCode::output);
    expect_one_line_naming(text, folder / name);
  }
  EXPECT_EQ(folder.names(), std::vector<std::string>{"taken.png"});
}

TEST(WritePicture, AnUnknownExtensionIsRefusedBeforeAnythingIsMade) {
  const ScratchFolder folder;
  for (const char* name : {"a", "a.bmp", "a.png.txt"}) {
    EXPECT_EQ(failure_of([&] { write_picture(folder / name, Rgb(4, 4)); }).first, ExitCode::usage) << name;
  }
  EXPECT_TRUE(folder.names().empty());
}

TEST(WritePicture, APictureReplacesAnOlderOneAndKeepsItsModeAndLinks) {
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

TEST(WritePicture, ANewFileHasTheUsualMode) {
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
