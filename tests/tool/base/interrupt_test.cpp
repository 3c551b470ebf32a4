#include "base/interrupt.hpp"

#include <gtest/gtest.h>

#include <csignal>

namespace biseam::tool {
namespace {

TEST(Interrupt, TheFirstSignalIsRememberedUntilTheNextWatch) {
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

TEST(Interrupt, ReadingThatIsGivenUpIsNoInterrupt) {
  const InterruptWatch watch;
  stop_reading();
  EXPECT_TRUE(is_reading_stopped());
  EXPECT_FALSE(interrupted());
}

TEST(Interrupt, ASignalThatWasIgnoredStaysSo) {
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
