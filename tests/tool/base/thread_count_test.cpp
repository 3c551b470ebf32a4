#include "base/thread_count.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>

namespace biseam::tool {
namespace {

TEST(ThreadCount, ProcessorsAreThoseOfTheMachine) { EXPECT_EQ(processors(), std::max(1L, ::sysconf(_SC_NPROCESSORS_ONLN))); }

TEST(ThreadCount, APictureIsSharedByOneForEachProcessorUpTo16) {
  EXPECT_EQ(usual_threads(), processors() < 16 ? processors() : 16);
}

}  // namespace
}  // namespace biseam::tool
