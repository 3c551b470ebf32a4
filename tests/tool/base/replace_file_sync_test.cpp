// That a new name is on disk when commit() returns: fsync is this file's, for the whole program.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <vector>

#include "base/replace_file.hpp"
#include "tool/support/scratch_folder.hpp"

namespace {

std::vector<ino_t> synced;

}  // namespace

extern "C" int fsync(int descriptor) {
  struct stat info = {};
  if (::fstat(descriptor, &info) == 0) synced.push_back(info.st_ino);
  return int(::syscall(SYS_fsync, descriptor));
}

namespace biseam::tool {
namespace {

TEST(ReplacementFile, FileAndFolderAreSyncedInThisOrder) {
  const test::ScratchFolder folder;
  struct stat file = {}, around = {};
  synced.clear();
  replace_file(folder / "file", {});
  ASSERT_EQ(::stat((folder / "file").c_str(), &file), 0);
  ASSERT_EQ(::stat(folder.path().c_str(), &around), 0);
  EXPECT_EQ(synced, (std::vector<ino_t>{file.st_ino, around.st_ino}));
}

}  // namespace
}  // namespace biseam::tool
