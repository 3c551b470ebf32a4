#include "tag/tag_file.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "picture/write_picture.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

class TagFile : public testing::Test {
 protected:
  TagFile() {
    write_picture(folder_ / "a.png", Nv12(64, 32));
    write_picture(folder_ / "a.jpg", Nv12(64, 32));
  }

  // Refused in one line that names the file; nothing is changed or made.
  void expect_refused(const std::string& from, const std::string& to, ExitCode code, const std::string& what) {
    const auto names = folder_.names();
    const auto [told_code, line] = failure_of([&] { tag_file(from, to); });
    EXPECT_EQ(told_code, code) << line;
    EXPECT_NE(line.find(what), line.npos) << line;
    EXPECT_EQ(line.find('\n'), line.npos) << line;
    EXPECT_EQ(folder_.names(), names);
  }

  ScratchFolder folder_;
};

TEST_F(TagFile, OnlyRegularFilesCanBeMarked) {
  ASSERT_EQ(::mkfifo((folder_ / "pipe.png").c_str(), 0600), 0);
  expect_refused("-", "", ExitCode::usage, "-: only files can be marked");
  expect_refused(folder_ / "a.png", "-", ExitCode::usage, "-: only files can be marked");
  expect_refused(folder_ / "none.png", "", ExitCode::input, "none.png: can't be opened: No such file");
  expect_refused(folder_ / ".", "", ExitCode::input, "is not a regular file");
  expect_refused(folder_ / "pipe.png", "", ExitCode::input, "pipe.png: is not a regular file");
}

TEST_F(TagFile, TheContentDecidesWhatNamesFit) {
  const std::string png = folder_ / "a.png";
  for (const char* name : {"b.jpg", "b.mp4", "b", "b.png.jpeg"}) {
    expect_refused(png, folder_ / name, ExitCode::usage, "the name must end in .png, as " + png + " is a PNG picture");
  }
  expect_refused(folder_ / "a.jpg", folder_ / "b.png", ExitCode::usage, "the name must end in .jpg");
  EXPECT_TRUE(tag_file(png, folder_ / "b.PNG"));
  EXPECT_TRUE(tag_file(folder_ / "a.jpg", folder_ / "b.jpeg"));
}

// Who has given a file a false name may keep it.
TEST_F(TagFile, ANameThatWasFalseBeforeMayStay) {
  std::filesystem::rename(folder_ / "a.png", folder_ / "false.jpg");
  EXPECT_TRUE(tag_file(folder_ / "false.jpg", folder_ / "other.jpg"));
  EXPECT_TRUE(tag_file(folder_ / "false.jpg", ""));
  EXPECT_TRUE(read_bytes(folder_ / "false.jpg") == read_bytes(folder_ / "other.jpg"));
}

TEST_F(TagFile, TheSameFileByAnotherNameIsReplaced) {
  std::filesystem::create_symlink("a.png", folder_ / "link.jpg");
  EXPECT_TRUE(tag_file(folder_ / "a.png", folder_ / "link.jpg"));
  EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "link.jpg"));
  EXPECT_NE(read_bytes(folder_ / "a.png").find("equirectangular"), std::string::npos);
}

TEST_F(TagFile, OtherKindsAreNamed) {
  write_bytes(folder_ / "a.ppm", "P6\n64 32\n255\n" + std::string(64 * 32 * 3, 'x'));
  write_bytes(folder_ / "text.png", "This is a text.\n");
  ClipSpec spec;
  spec.encoder = "libvpx";
  spec.options = {};
  write_clip(folder_ / "a.webm", spec, std::vector<Nv12>(2, Nv12(64, 32)));
  for (const char* name : {"a.ppm", "a.webm"}) expect_refused(folder_ / name, "", ExitCode::input, "is not a JPEG, PNG, MP4");
  expect_refused(folder_ / "text.png", "", ExitCode::input, "text.png: holds no picture");
}

}  // namespace
}  // namespace biseam::tool
