#include "analysis/analysis_reader.hpp"

#include <gtest/gtest.h>

#include <random>

#include "tool/analysis/small_analysis.hpp"
#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::read_bytes;
using test::ScratchFolder;
using test::write_bytes;
using test::write_small;

TEST(AnalysisReader, FindsGuidesByTheirTimes) {
  const ScratchFolder folder;
  write_small(folder / "a.bsa", 5);
  AnalysisReader reader(folder / "a.bsa");
  EXPECT_EQ(reader.frames(), 5u);
  EXPECT_EQ(reader.head().guide_bytes, 20u);
  for (const int i : {4, 0, 2, 2, 3, 1}) {
    const std::span<const std::uint8_t> guide = reader.guide_at(512 * (i + 1));
    ASSERT_EQ(guide.size(), 20u);
    EXPECT_EQ(guide[19], i);
  }
  for (const std::int64_t time : {0, 511, 513, 3072, -512}) EXPECT_TRUE(reader.guide_at(time).empty()) << time;
}

TEST(AnalysisReader, OfAClipWithoutPicturesIsEmpty) {
  const ScratchFolder folder;
  write_small(folder / "a.bsa", 0);
  AnalysisReader reader(folder / "a.bsa");
  EXPECT_EQ(reader.frames(), 0u);
  EXPECT_TRUE(reader.guide_at(0).empty());
}

TEST(AnalysisReader, WhateverIsCutOffIsMissed) {
  const ScratchFolder folder;
  write_small(folder / "a.bsa", 3);
  const std::string whole = read_bytes(folder / "a.bsa");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    write_bytes(folder / "b.bsa", whole.substr(0, size));
    const auto [code, line] = test::failure_of([&] { AnalysisReader(folder / "b.bsa"); });
    EXPECT_EQ(code, ExitCode::input);
    const char* const wanted = size < kAnalysisHeadBytes ? "is no analysis of a clip" : "is cut short";
    EXPECT_EQ(line, folder / "b.bsa" + ": " + wanted) << size;
  }
  write_bytes(folder / "b.bsa", whole + "x");
  EXPECT_EQ(test::failure_of([&] { AnalysisReader(folder / "b.bsa"); }).second, folder / "b.bsa" + ": is cut short");
}

// Guides have sums of their own; all else is held by those of the file.
TEST(AnalysisReader, AnyOtherByteThatIsChangedIsNoticed) {
  const ScratchFolder folder;
  write_small(folder / "a.bsa", 3);
  const std::string whole = read_bytes(folder / "a.bsa");
  const std::size_t guides_end = kAnalysisHeadBytes + 3 * 20;
  for (std::size_t at = 0; at < whole.size(); ++at) {
    if (at >= kAnalysisHeadBytes && at < guides_end) continue;
    std::string bad = whole;
    bad[at] = char(bad[at] ^ 1);
    write_bytes(folder / "b.bsa", bad);
    const auto [code, line] = test::failure_of([&] { AnalysisReader(folder / "b.bsa"); });
    EXPECT_EQ(code, ExitCode::input) << at;
    test::expect_one_line_naming(line, folder / "b.bsa");
  }
}

// Refused in one line, or read without harm.
TEST(AnalysisReader, AnyDamageIsSurvived) {
  const ScratchFolder folder;
  write_small(folder / "a.bsa", 9);
  const std::string whole = read_bytes(folder / "a.bsa");
  std::mt19937 random(11);
  for (int turn = 0; turn < 500; ++turn) {
    std::string bad = whole;
    for (unsigned change = random() % 4; change-- > 0;) {
      const std::size_t at = random() % bad.size(), count = std::min<std::size_t>(1 + random() % 16, bad.size() - at);
      switch (random() % 3) {
        case 0:
          bad.erase(at, count);
          break;
        case 1:
          bad.insert(at, count, char(random()));
          break;
        default:
          for (std::size_t i = at; i < at + count; ++i) bad[i] = char(random());
      }
    }
    write_bytes(folder / "b.bsa", bad);
    try {
      AnalysisReader reader(folder / "b.bsa");
      for (int i = 0; i < 10; ++i) {
        const std::size_t size = reader.guide_at(512 * i).size();
        EXPECT_TRUE(size == 0 || size == reader.head().guide_bytes);
      }
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.code(), ExitCode::input);
      test::expect_one_line_naming(failure.what(), "b.bsa");
    }
  }
}

TEST(AnalysisReader, WhatIsNoFileIsRefused) {
  const ScratchFolder folder;
  const auto line_of = [](const std::string& path) { return test::failure_of([&] { AnalysisReader reader(path); }).second; };
  EXPECT_EQ(line_of(folder / "none.bsa"), folder / "none.bsa" + ": can't be opened: No such file or directory");
  EXPECT_EQ(line_of("/dev/null"), "/dev/null: is no file, which an analysis has to be");
}

}  // namespace
}  // namespace biseam::tool
