// What a run shows while it goes on.
#include "stitch/progress.hpp"

#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <cstdio>

namespace biseam::tool {
namespace {

using namespace std::chrono_literals;

// 30 frames.
void run_of(std::optional<std::int64_t> frames, std::chrono::milliseconds frame) {
  Progress::Clock::time_point now;
  Progress progress(frames, [&now] { return now; });
  for (int done = 1; done <= 30; ++done) {
    now += frame;
    progress.count(done);
  }
}

// Standard error as a terminal, while it lives.
class Terminal {
 public:
  Terminal() : before_(::dup(STDERR_FILENO)) {
    int inner = -1;
    EXPECT_EQ(::openpty(&outer_, &inner, nullptr, nullptr, nullptr), 0);
    ::dup2(inner, STDERR_FILENO);
    ::close(inner);
  }
  ~Terminal() {
    restore();
    ::close(before_);
    ::close(outer_);
  }
  // All that was written.  What was is read in pieces of any size, up to the error that tells that the terminal is closed.
  std::string text() {
    std::fflush(stderr);
    restore();
    std::string text;
    char buffer[1 << 12];
    for (ssize_t count; (count = ::read(outer_, buffer, sizeof buffer)) > 0;) text.append(buffer, std::size_t(count));
    return text;
  }

 private:
  void restore() { ::dup2(before_, STDERR_FILENO); }
  int before_, outer_ = -1;
};

TEST(Progress, IsALineNowAndThenWhereNoTerminalIs) {
  testing::internal::CaptureStderr();
  run_of(60, 900ms);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "biseam: 12 of 60 frames, 1.1 fps, 0:00:43 left\n"
            "biseam: 24 of 60 frames, 1.1 fps, 0:00:32 left\n");
}

TEST(Progress, ShortRunsHaveNoneWhereNoTerminalIs) {
  testing::internal::CaptureStderr();
  run_of(30, 300ms);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Progress, ChangesOneLineOfATerminalAndLeavesItEmpty) {
  Terminal terminal;
  run_of(30, 20ms);
  const std::string start = "\r", end = "\x1b[K";
  EXPECT_EQ(terminal.text(), start + "10 of 30 frames, 50.0 fps, 0:00:00 left" + end + start +
                                 "20 of 30 frames, 50.0 fps, 0:00:00 left" + end + start +
                                 "30 of 30 frames, 50.0 fps, 0:00:00 left" + end + start + end);
}

TEST(Progress, HasNoTimeLeftWhereTheEndIsNotKnown) {
  for (const std::optional<std::int64_t> frames : {std::optional<std::int64_t>(), std::optional<std::int64_t>(5)}) {
    testing::internal::CaptureStderr();
    run_of(frames, 500ms);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "biseam: 20 frames, 2.0 fps\n");
  }
}

}  // namespace
}  // namespace biseam::tool
