#include "commands/layout_options.hpp"

#include <gtest/gtest.h>

#include "tool/support/expect_failure.hpp"

namespace biseam::tool {
namespace {

TEST(ChooseStreams, NumbersWithAComma) {
  const StreamChoice choice = choose_streams("0,12", Layout::automatic, 1, false);
  ASSERT_TRUE(choice.wanted);
  EXPECT_EQ((*choice.wanted)[0], 0);
  EXPECT_EQ((*choice.wanted)[1], 12);
  for (const char* wrong : {"0", "0,", ",1", "1,1", "-1,0", "0,1,2", "0 1", "a,b"}) {
    const auto refused = test::failure_of([&] { choose_streams(wrong, Layout::automatic, 1, false); });
    EXPECT_EQ(refused.first, ExitCode::usage) << wrong;
  }
}

TEST(ChooseStreams, OnlyOfOneInputWithoutALayout) {
  EXPECT_FALSE(choose_streams("", Layout::side_by_side, 2, true).wanted);
  EXPECT_EQ(test::failure_of([] { choose_streams("0,1", Layout::side_by_side, 1, false); }).first, ExitCode::usage);
  EXPECT_EQ(test::failure_of([] { choose_streams("0,1", Layout::automatic, 2, false); }).first, ExitCode::usage);
  EXPECT_EQ(test::failure_of([] { choose_streams("0,1", Layout::automatic, 1, true); }).first, ExitCode::usage);
}

}  // namespace
}  // namespace biseam::tool
