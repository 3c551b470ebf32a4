#include "base/memory.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "stitch/frames_in_memory.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

class Memory : public testing::Test {
 protected:
  void tell(const std::string& path, const std::string& text) {
    std::filesystem::create_directories((root_.path() / path).parent_path());
    test::write_bytes(root_ / path, text);
  }
  std::uint64_t available() const { return available_memory(root_.path().string()); }
  test::ScratchFolder root_;
};

TEST_F(Memory, IsAnyWhereNothingIsTold) { EXPECT_EQ(available(), std::numeric_limits<std::uint64_t>::max()); }

TEST_F(Memory, IsWhatTheSystemHas) {
  tell("proc/meminfo", "MemTotal:  9000 kB\nMemFree:  100 kB\nMemAvailable:  2000 kB\n");
  EXPECT_EQ(available(), 2000u * 1024);
}

TEST_F(Memory, IsWhatTheTightestGroupLeaves) {
  tell("proc/meminfo", "MemAvailable:  2000 kB\n");
  tell("proc/self/cgroup", "0::/a/b\n");
  tell("sys/fs/cgroup/a/b/memory.max", "max\n");
  tell("sys/fs/cgroup/a/b/memory.current", "100\n");
  tell("sys/fs/cgroup/a/memory.max", "1000\n");
  tell("sys/fs/cgroup/a/memory.current", "300\n");
  EXPECT_EQ(available(), 700u);
  tell("sys/fs/cgroup/a/b/memory.max", "150\n");
  EXPECT_EQ(available(), 50u);
  tell("sys/fs/cgroup/a/b/memory.current", "200\n");
  EXPECT_EQ(available(), 0u);
}

TEST_F(Memory, OfTheOlderKindOfGroupsCounts) {
  tell("proc/self/cgroup", "5:cpu:/x\n4:memory:/\n");
  tell("sys/fs/cgroup/memory/memory.limit_in_bytes", "900\n");
  tell("sys/fs/cgroup/memory/memory.usage_in_bytes", "200\n");
  EXPECT_EQ(available(), 700u);
}

TEST_F(Memory, BoundsTheFramesThatWaitAndLeavesOne) {
  constexpr std::uint64_t kFrame = 25u << 20;
  EXPECT_EQ(frames_that_may_wait(kFrame, std::numeric_limits<std::uint64_t>::max()), 3u);
  EXPECT_EQ(frames_that_may_wait(kFrame, 5 * kFrame), 2u);
  EXPECT_EQ(frames_that_may_wait(kFrame, kFrame), 1u);
  EXPECT_EQ(frames_that_may_wait(kFrame, 0), 1u);
}

}  // namespace
}  // namespace biseam::tool
