#include "base/final_target.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

namespace fs = std::filesystem;

class FinalTarget : public testing::Test {
 protected:
  FinalTarget() { fs::create_directory(folder_ / "sub"); }

  // As the system names it: the scratch folder itself may lie behind a link.
  std::string real(const std::string& name) const { return (fs::canonical(folder_.path()) / name).string(); }

  test::ScratchFolder folder_;
};

TEST_F(FinalTarget, OfAFileIsTheFile) {
  test::write_bytes(folder_ / "sub/a", "");
  for (const char* name : {"sub/a", "./sub//a", "sub/../sub/a"}) EXPECT_EQ(final_target(folder_ / name), real("sub/a"));
}

TEST_F(FinalTarget, OfANewNameIsItsPlaceInTheFolder) {
  fs::create_directory_symlink("sub", folder_ / "other");
  for (const char* name : {"sub/new", "sub/../sub/new", "other/new"}) EXPECT_EQ(final_target(folder_ / name), real("sub/new"));
}

TEST_F(FinalTarget, LinksAreFollowedEvenToNothing) {
  test::write_bytes(folder_ / "a", "");
  fs::create_symlink("a", folder_ / "to_a");
  fs::create_symlink("../to_new", folder_ / "sub/far");
  fs::create_symlink("sub/new", folder_ / "to_new");
  fs::create_symlink(folder_ / "sub/far", folder_ / "absolute");
  EXPECT_EQ(final_target(folder_ / "to_a"), real("a"));
  for (const char* name : {"to_new", "sub/far", "absolute"}) EXPECT_EQ(final_target(folder_ / name), real("sub/new")) << name;
}

TEST_F(FinalTarget, OfABareNameLiesInTheCurrentFolder) {
  const fs::path before = fs::current_path();
  fs::current_path(folder_.path());
  EXPECT_EQ(final_target("new"), real("new"));
  fs::current_path(before);
}

TEST_F(FinalTarget, WhereNoFolderIsItIsThePathItself) {
  EXPECT_EQ(final_target(folder_ / "none/new"), folder_ / "none/new");
  EXPECT_EQ(final_target(""), (fs::current_path() / "").string());
}

TEST_F(FinalTarget, LinksInACircleEndSomewhere) {
  fs::create_symlink("b", folder_ / "a");
  fs::create_symlink("a", folder_ / "b");
  const std::string end = final_target(folder_ / "a");
  EXPECT_TRUE(end == real("a") || end == real("b")) << end;
}

}  // namespace
}  // namespace biseam::tool
