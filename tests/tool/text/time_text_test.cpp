#include "text/time_text.hpp"

#include <gtest/gtest.h>

#include "tool/support/expect_failure.hpp"

namespace biseam::tool {
namespace {

TEST(TimeText, IsWhatPeopleWrite) {
  EXPECT_EQ(time_text(3723456, {1, 1000}), "1:02:03.456");
  EXPECT_EQ(time_text(-90, {1, 30}), "-0:00:03.000");
  EXPECT_EQ(parse_time("--from", "1:02:03.456"), 3723456000);
  EXPECT_EQ(parse_time("--from", "2.5"), 2500000);
  EXPECT_EQ(parse_time("--offset", "-0.04"), -40000);
}

TEST(TimeText, WhatIsNoTimeOrRateIsRefusedByTheOptionsName) {
  const auto [code, line] = test::failure_of([] { parse_time("--from", "soon"); });
  EXPECT_EQ(code, ExitCode::usage);
  EXPECT_EQ(line, "--from: 'soon': seconds or [HH:]MM:SS[.frac] are wanted");
  EXPECT_EQ(test::failure_of([] { parse_rate("--rate", "0"); }).first, ExitCode::usage);
  const AVRational rate = parse_rate("--rate", "30000/1001");
  EXPECT_EQ(rate.num, 30000);
  EXPECT_EQ(rate.den, 1001);
}

}  // namespace
}  // namespace biseam::tool
