#include "base/failure.hpp"

#include <gtest/gtest.h>

#include <cerrno>

namespace biseam::tool {
namespace {

// Scripts rely on these numbers.
TEST(ExitCode, NumbersAreThoseOfTheManual) {
  EXPECT_EQ(int(ExitCode::done), 0);
  EXPECT_EQ(int(ExitCode::different), 1);
  EXPECT_EQ(int(ExitCode::usage), 2);
  EXPECT_EQ(int(ExitCode::input), 3);
  EXPECT_EQ(int(ExitCode::output), 4);
  EXPECT_EQ(int(ExitCode::settings), 5);
  EXPECT_EQ(int(ExitCode::system), 6);
  EXPECT_EQ(int(ExitCode::interrupted), 130);
}

TEST(SystemFailure, SaysWhatCantBeDoneAndWhy) {
  errno = ENOENT;
  const Failure failure = system_failure(ExitCode::input, "a.png", "can't be opened");
  EXPECT_EQ(failure.code(), ExitCode::input);
  EXPECT_STREQ(failure.what(), "a.png: can't be opened: No such file or directory");
}

// A name can hold what moves the cursor, ends the line or looks like a line of the tool's own.
TEST(Notice, IsOnePrintableLineOnStandardError) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  notice("a\nbiseam: b\x1b[2J.png: is odd");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  const std::string told = testing::internal::GetCapturedStderr();
  EXPECT_EQ(told.find('\n'), told.size() - 1) << told;
  EXPECT_EQ(told.find('\x1b'), told.npos) << told;
  EXPECT_EQ(told.rfind("biseam: a", 0), 0u) << told;
}

}  // namespace
}  // namespace biseam::tool
