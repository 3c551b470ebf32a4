#include "base/shortage.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include "base/unfinished.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

TEST(EndWithoutMemory, SaysHowMuchWasMissingAndLeavesNothing) {
  const test::ScratchFolder folder;
  const auto run_out = [&] {
    UnfinishedFile file;
    std::string name = folder / "a.XXXXXX";
    file.create(name);
    if (folder.names().size() != 1) ::_exit(1);
    end_without_memory(12345678901);
  };
  EXPECT_EXIT(run_out(), testing::ExitedWithCode(6), "^biseam: not enough memory, 12345678901 bytes more can't be had\n$");
  EXPECT_TRUE(folder.names().empty());
}

TEST(EndWithoutMemory, EndsWhereNobodyCanBeTold) {
  const auto run_out = [] {
    ::close(STDERR_FILENO);
    end_without_memory(1);
  };
  EXPECT_EXIT(run_out(), testing::ExitedWithCode(6), "");
}

TEST(RefusedThreads, AreRemembered) {
  const auto note = [] {
    if (was_thread_refused()) ::_exit(1);
    note_refused_thread();
    ::_exit(was_thread_refused() ? 0 : 2);
  };
  EXPECT_EXIT(note(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace biseam::tool
