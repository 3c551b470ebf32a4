#include "base/interrupt.hpp"

#include <gtest/gtest.h>

#include <csignal>

namespace biseam::tool {
namespace {

TEST(Interrupt, the_first_signal_is_remembered_until_the_next_watch) {
  {
    const InterruptWatch watch;
    EXPECT_FALSE(interrupted());
    std::raise(SIGTERM);
    EXPECT_TRUE(interrupted());
    EXPECT_TRUE(is_reading_stopped());
  }
  const InterruptWatch watch;
  EXPECT_FALSE(interrupted());
  EXPECT_FALSE(is_reading_stopped());
}

TEST(Interrupt, reading_that_is_given_up_is_no_interrupt) {
  const InterruptWatch watch;
  stop_reading();
  EXPECT_TRUE(is_reading_stopped());
  EXPECT_FALSE(interrupted());
}

TEST(Interrupt, a_signal_that_was_ignored_stays_so) {
  std::signal(SIGINT, SIG_IGN);
  {
    const InterruptWatch watch;
    std::raise(SIGINT);
    EXPECT_FALSE(interrupted());
  }
  EXPECT_EQ(std::signal(SIGINT, SIG_DFL), SIG_IGN);
}

}  // namespace
}  // namespace biseam::tool
