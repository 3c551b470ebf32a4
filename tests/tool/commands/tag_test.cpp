#include <gtest/gtest.h>

#include "picture/gpano.hpp"
#include "picture/write_picture.hpp"
#include "tool/support/command_line.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::Outcome;
using test::run_tool;
using test::ScratchFolder;

bool is_marked(const std::string& path) {
  const std::string bytes = test::read_bytes(path);
  return read_gpano({bytes.begin(), bytes.end()}).projection == "equirectangular";
}

TEST(TagCommand, MarksACopyOrTheFileItself) {
  const ScratchFolder folder;
  write_picture(folder / "a.png", Rgb(64, 32));
  for (const char* option : {"-o", "--output"}) {
    std::filesystem::remove(folder / "b.png");
    const Outcome outcome = run_tool({"tag", folder / "a.png", option, folder / "b.png"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.message;
    EXPECT_EQ(outcome.output, "");
    EXPECT_TRUE(is_marked(folder / "b.png"));
    EXPECT_FALSE(is_marked(folder / "a.png"));
  }
  EXPECT_EQ(run_tool({"tag", folder / "a.png"}).exit_code, 0);
  EXPECT_TRUE(is_marked(folder / "a.png"));
}

TEST(TagCommand, AWrongCommandLineChangesNothing) {
  const ScratchFolder folder;
  write_picture(folder / "a.png", Rgb(64, 32));
  const std::string a = folder / "a.png";
  EXPECT_EQ(run_tool({"tag"}).exit_code, 2);
  EXPECT_EQ(run_tool({"tag", a, a}).exit_code, 2);
  EXPECT_EQ(run_tool({"tag", a, "-o"}).exit_code, 2);
  EXPECT_EQ(run_tool({"tag", a, "--nonsense"}).exit_code, 2);
  EXPECT_EQ(run_tool({"tag", folder / "none.png"}).exit_code, 3);
  EXPECT_FALSE(is_marked(a));
}

}  // namespace
}  // namespace biseam::tool
