#include "analysis/analysis_writer.hpp"

#include <gtest/gtest.h>

#include "base/little_endian.hpp"
#include "tool/analysis/small_analysis.hpp"
#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::ScratchFolder;
using test::small_head;

TEST(AnalysisWriter, WritesHeadGuidesTimesAndAnEnd) {
  const ScratchFolder folder;
  test::write_small(folder / "a.bsa", 2);
  const std::string written = test::read_bytes(folder / "a.bsa");
  const std::vector<std::uint8_t> head = head_bytes(small_head());
  std::string wanted(head.begin(), head.end());
  wanted += std::string(20, '\0') + std::string(20, '\1');
  std::vector<std::uint8_t> end;
  for (const std::uint64_t value : {512, 1024, 2}) append_number(end, value, 8);
  append_number(end, sum_of(end), 4);
  wanted += std::string(end.begin(), end.end()) + "end\n";
  EXPECT_EQ(written, wanted);
}

TEST(AnalysisWriter, OfTheSameIsTheSame) {
  const ScratchFolder folder;
  test::write_small(folder / "a.bsa", 30);
  test::write_small(folder / "b.bsa", 30);
  EXPECT_EQ(test::read_bytes(folder / "a.bsa"), test::read_bytes(folder / "b.bsa"));
}

TEST(AnalysisWriter, LeavesNothingThatIsNotFinished) {
  const ScratchFolder folder;
  {
    AnalysisWriter writer(folder / "a.bsa");
    writer.begin(small_head());
    writer.add(512, std::vector<std::uint8_t>(20));
    EXPECT_EQ(writer.frames(), 1);
    EXPECT_EQ(folder.names().size(), 1u);
  }
  EXPECT_TRUE(folder.names().empty());
  const auto [code, line] = test::failure_of([&] { AnalysisWriter(folder / "none/a.bsa"); });
  EXPECT_EQ(code, ExitCode::output);
  test::expect_one_line_naming(line, "none/a.bsa");
}

}  // namespace
}  // namespace biseam::tool
