#include "base/replace_file.hpp"

#include <gtest/gtest.h>

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

TEST(ReplacementFile, takes_its_name_when_it_is_whole) {
  const test::ScratchFolder folder;
  std::ofstream(folder / "file") << "old";
  ReplacementFile file(folder / "file");
  file.write(bytes_of("new"));
  EXPECT_EQ(content(folder / "file"), "old");
  file.commit();
  EXPECT_EQ(content(folder / "file"), "new");
  EXPECT_EQ(folder.names(), std::vector<std::string>{"file"});
}

TEST(ReplacementFile, leaves_nothing_when_it_is_given_up) {
  const test::ScratchFolder folder;
  std::ofstream(folder / "file") << "old";
  { ReplacementFile(folder / "file").write(bytes_of("half")); }
  EXPECT_EQ(content(folder / "file"), "old");
  EXPECT_EQ(folder.names(), std::vector<std::string>{"file"});
}

TEST(ReplacementFile, a_link_is_followed) {
  const test::ScratchFolder folder;
  std::ofstream(folder / "file") << "old";
  std::filesystem::create_symlink("file", folder / "link");
  replace_file(folder / "link", bytes_of("new"));
  EXPECT_EQ(content(folder / "file"), "new");
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
}

TEST(ReplacementFile, a_place_that_cant_be_written_is_refused_by_its_name) {
  const test::ScratchFolder folder;
  const auto [code, line] = test::failure_of([&] { ReplacementFile(folder / "none/file"); });
  EXPECT_EQ(code, ExitCode::output);
  test::expect_one_line_naming(line, folder / "none/file");
}

}  // namespace
}  // namespace biseam::tool
