#include "base/replace_file.hpp"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

std::span<const std::uint8_t> bytes_of(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string content(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(ReplacementFile, TakesItsNameWhenItIsWhole) {
  const test::ScratchFolder folder;
  std::ofstream(folder / "file") << "old";
  ReplacementFile file(folder / "file");
  file.write(bytes_of("new"));
  EXPECT_EQ(content(folder / "file"), "old");
  file.commit();
  EXPECT_EQ(content(folder / "file"), "new");
  EXPECT_EQ(folder.names(), std::vector<std::string>{"file"});
}

TEST(ReplacementFile, LeavesNothingWhenItIsGivenUp) {
  const test::ScratchFolder folder;
  std::ofstream(folder / "file") << "old";
  { ReplacementFile(folder / "file").write(bytes_of("half")); }
  EXPECT_EQ(content(folder / "file"), "old");
  EXPECT_EQ(folder.names(), std::vector<std::string>{"file"});
}

TEST(ReplacementFile, ALinkIsFollowed) {
  const test::ScratchFolder folder;
  std::ofstream(folder / "file") << "old";
  std::filesystem::create_symlink("file", folder / "link");
  replace_file(folder / "link", bytes_of("new"));
  EXPECT_EQ(content(folder / "file"), "new");
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
}

TEST(ReplacementFile, APlaceThatCantBeWrittenIsRefusedByItsName) {
  const test::ScratchFolder folder;
  const auto [code, line] = test::failure_of([&] { ReplacementFile(folder / "none/file"); });
  EXPECT_EQ(code, ExitCode::output);
  test::expect_one_line_naming(line, folder / "none/file");
}

TEST(ReplacementFile, ALinkThatLeadsToNothingYetIsFollowed) {
  const test::ScratchFolder folder;
  std::filesystem::create_directory(folder / "sub");
  std::filesystem::create_symlink("sub/link", folder / "link");
  std::filesystem::create_symlink("file", folder / "sub/link");
  replace_file(folder / "link", bytes_of("new"));
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "sub/link"));
  EXPECT_FALSE(std::filesystem::is_symlink(folder / "sub/file"));
  EXPECT_EQ(content(folder / "sub/file"), "new");
}

TEST(ReplacementFile, LinksThatLeadNowhereAreRefusedAndStay) {
  const test::ScratchFolder folder;
  std::filesystem::create_symlink("none/file", folder / "lost");
  std::filesystem::create_symlink("circle", folder / "circle");
  for (const char* name : {"lost", "circle"}) {
    EXPECT_EQ(test::failure_of([&] { ReplacementFile(folder / name); }).first, ExitCode::output);
    EXPECT_TRUE(std::filesystem::is_symlink(folder / name));
  }
}

TEST(ReplacementFile, FurtherNamesOfAFileStayItsNames) {
  const test::ScratchFolder folder;
  for (const char* text : {"longer than before", "short", ""}) {
    test::write_bytes(folder / "file", "before");
    std::filesystem::remove(folder / "other");
    std::filesystem::create_hard_link(folder / "file", folder / "other");
    ReplacementFile file(folder / "file");
    file.write(bytes_of(text));
    EXPECT_EQ(content(folder / "other"), "before");
    file.commit();
    EXPECT_EQ(content(folder / "file"), text);
    EXPECT_EQ(content(folder / "other"), text);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"file", "other"}));
  }
}

// Longer than may be written at once: what is there stays.
TEST(ReplacementFile, AFileWithFurtherNamesIsWholeWhereThereIsNoRoom) {
  const test::ScratchFolder folder;
  const std::string much(3u << 20, 'x');
  test::write_bytes(folder / "file", "before");
  std::filesystem::create_hard_link(folder / "file", folder / "other");
  ReplacementFile file(folder / "file");
  file.write(bytes_of(much));
  rlimit before = {};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit little{1u << 20, before.rlim_max};
  const auto old_handler = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &little), 0);
  const auto [code, line] = test::failure_of([&] { file.commit(); });
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
  std::signal(SIGXFSZ, old_handler);
  EXPECT_EQ(code, ExitCode::output);
  test::expect_one_line_naming(line, folder / "file");
  EXPECT_EQ(content(folder / "file"), "before");
}

TEST(ReplacementFile, ModeAndOwnerAreKept) {
  const test::ScratchFolder folder;
  test::write_bytes(folder / "file", "old");
  const bool may_give_away = ::chown((folder / "file").c_str(), 12345, 54321) == 0;
  ASSERT_EQ(::chmod((folder / "file").c_str(), 02741), 0);
  struct stat old = {}, now = {};
  ASSERT_EQ(::stat((folder / "file").c_str(), &old), 0);
  replace_file(folder / "file", bytes_of("new"));
  ASSERT_EQ(::stat((folder / "file").c_str(), &now), 0);
  EXPECT_NE(now.st_ino, old.st_ino);
  EXPECT_EQ(now.st_mode, old.st_mode);
  EXPECT_EQ(now.st_uid, old.st_uid);
  EXPECT_EQ(now.st_gid, old.st_gid);
  if (!may_give_away) GTEST_SKIP() << "the owner can't be changed by this user";
}

TEST(ReplacementFile, AttributesAndAccessListsAreKept) {
  const test::ScratchFolder folder;
  const std::string path = folder / "file", own = folder / "own_list";
  test::write_bytes(path, "old");
  test::write_bytes(own, "old");
  // The version and five entries of tag, rights and id: owner, user 12345, group, mask, others.
  const std::string list(
      "\2\0\0\0\1\0\6\0\xff\xff\xff\xff\2\0\6\0\x39\x30\0\0\4\0\4\0\xff\xff\xff\xff\x10\0\6\0\xff\xff\xff\xff"
      "\x20\0\0\0\xff\xff\xff\xff",
      44);
  const std::string text = "of the\0camera";
  if (::setxattr(path.c_str(), "user.note", text.data(), text.size(), 0) != 0)
    GTEST_SKIP() << "no attributes on this file system";
  const char* const kList = "system.posix_acl_access";
  if (::setxattr(path.c_str(), kList, list.data(), list.size(), 0) != 0) GTEST_SKIP() << "no access lists on this file system";
  ASSERT_EQ(::setxattr(folder.path().c_str(), "system.posix_acl_default", list.data(), list.size(), 0), 0);
  replace_file(path, bytes_of("new"));
  replace_file(own, bytes_of("new"));
  char value[128];
  ASSERT_EQ(::getxattr(path.c_str(), "user.note", value, sizeof value), ssize_t(text.size()));
  EXPECT_EQ(std::string(value, text.size()), text);
  ASSERT_EQ(::getxattr(path.c_str(), kList, value, sizeof value), ssize_t(list.size()));
  EXPECT_EQ(std::string(value, list.size()), list);
  EXPECT_LT(::getxattr(own.c_str(), kList, value, sizeof value), 0) << "the folder's list was put on a file that had none";
}

TEST(ReplacementFile, NamesAsLongAsTheyMayBeWork) {
  const test::ScratchFolder folder;
  std::string umlauts;
  while (umlauts.size() < 254) umlauts += "\xc3\xa4";
  for (const std::string& name : {std::string(255, 'n'), std::string(249, 'n'), umlauts}) {
    replace_file(folder / name, bytes_of("new"));
    EXPECT_EQ(content(folder / name), "new");
  }
  EXPECT_EQ(test::failure_of([&] { ReplacementFile(folder / std::string(256, 'n')); }).first, ExitCode::output);
}

}  // namespace
}  // namespace biseam::tool
