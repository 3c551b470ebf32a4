// Files that are replaced keep these traits, which replace_file_test holds; here is what one of them alone shows.
#include "base/file_traits.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

mode_t mode_of(const std::string& path) {
  struct stat info = {};
  EXPECT_EQ(::stat(path.c_str(), &info), 0);
  return info.st_mode & mode_t(07777);
}

TEST(CopyTraits, OfAFileThatIsNotThereTellsWhy) {
  const test::ScratchFolder folder;
  test::write_bytes(folder / "new", "");
  const int to = ::open((folder / "new").c_str(), O_WRONLY | O_CLOEXEC);
  errno = 0;
  EXPECT_FALSE(copy_traits(folder / "old", to));
  EXPECT_EQ(errno, ENOENT);
  ::close(to);
}

TEST(CopyTraits, TheOwnersModeIsKeptToTheLastBit) {
  const test::ScratchFolder folder;
  test::write_bytes(folder / "old", "");
  test::write_bytes(folder / "new", "");
  for (const mode_t mode : {mode_t(0), mode_t(0400), mode_t(0777), mode_t(04755), mode_t(02750), mode_t(01640)}) {
    ASSERT_EQ(::chmod((folder / "old").c_str(), mode), 0);
    ASSERT_EQ(::chmod((folder / "new").c_str(), 0600), 0);
    const int to = ::open((folder / "new").c_str(), O_WRONLY | O_CLOEXEC);
    EXPECT_TRUE(copy_traits(folder / "old", to));
    ::close(to);
    EXPECT_EQ(mode_of(folder / "new"), mode_of(folder / "old"));
  }
}

// A program that ran with its owner's rights must not run with those of whoever wrote it anew.
TEST(CopyTraits, WhoMayNotGiveAFileAwayKeepsItWithoutItsOwnersRights) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs a user who can become another one";
  const test::ScratchFolder folder;
  constexpr uid_t kNobody = 65534;
  ASSERT_EQ(::chmod(folder.path().c_str(), 0777), 0);
  test::write_bytes(folder / "old", "");
  ASSERT_EQ(::chmod((folder / "old").c_str(), 06755), 0);
  const auto copy_as_nobody = [&] {
    if (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) ::_exit(2);
    const int to = ::open((folder / "new").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    ::_exit(to >= 0 && copy_traits(folder / "old", to) ? 0 : 1);
  };
  EXPECT_EXIT(copy_as_nobody(), testing::ExitedWithCode(0), "");
  EXPECT_EQ(mode_of(folder / "new"), mode_t(0755));
}

}  // namespace
}  // namespace biseam::tool
