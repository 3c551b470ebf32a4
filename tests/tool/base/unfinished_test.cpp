// What a signal leaves that comes when a file has just been made: mkostemp is this file's, for the whole program.
#include "base/unfinished.hpp"

#include <gtest/gtest.h>
#include <pthread.h>
#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "base/interrupt.hpp"
#include "tool/support/scratch_folder.hpp"

namespace {

pthread_t interrupted_thread;
bool interrupts = false;

}  // namespace

extern "C" int mkostemp(char* pattern, int flags) {
  const int descriptor = ::mkostemps(pattern, 0, flags);
  if (!interrupts) return descriptor;
  pthread_kill(interrupted_thread, SIGTERM);
  std::this_thread::sleep_for(std::chrono::milliseconds(100));  // time for a handler in another thread
  return descriptor;
}

namespace biseam::tool {
namespace {

void create_under_a_signal(const std::string& folder) {
  leave_nothing_on_signals();
  interrupts = true;
  UnfinishedFile file;
  std::string pattern = folder + "/a.XXXXXX";
  file.create(pattern);
  std::this_thread::sleep_for(std::chrono::seconds(10));
  ::_exit(0);
}

TEST(UnfinishedFile, ASignalToItsThreadLeavesNothing) {
  const test::ScratchFolder folder;
  interrupted_thread = pthread_self();
  EXPECT_EXIT(create_under_a_signal(folder.path()), testing::KilledBySignal(SIGTERM), "");
  EXPECT_EQ(folder.names(), std::vector<std::string>{});
}

TEST(UnfinishedFile, ASignalToAnotherThreadLeavesNothing) {
  const test::ScratchFolder folder;
  const auto create_beside_a_thread = [&folder] {
    std::thread other([] { std::this_thread::sleep_for(std::chrono::seconds(10)); });
    interrupted_thread = other.native_handle();
    create_under_a_signal(folder.path());
  };
  EXPECT_EXIT(create_beside_a_thread(), testing::KilledBySignal(SIGTERM), "");
  EXPECT_EQ(folder.names(), std::vector<std::string>{});
}

TEST(UnfinishedFile, IsForgotten) {
  const test::ScratchFolder folder;
  const auto forget_one = [&folder] {
    std::string kept = folder / "a.XXXXXX", removed = folder / "b.XXXXXX";
    UnfinishedFile first, second;
    ::close(first.create(kept));
    ::close(second.create(removed));
    first.forget();
    remove_unfinished_files();
    ::_exit(folder / folder.names().at(0) == kept ? 0 : 1);
  };
  EXPECT_EXIT(forget_one(), testing::ExitedWithCode(0), "");
  EXPECT_EQ(folder.names().size(), 1u);
}

// Another thread may want a file while the program ends.
TEST(UnfinishedFile, IsNotMadeAnyMoreWhenTheProgramEnds) {
  const test::ScratchFolder folder;
  const auto create_at_the_end = [&folder] {
    remove_unfinished_files();
    std::thread other([&folder] {
      UnfinishedFile file;
      std::string pattern = folder / "a.XXXXXX";
      file.create(pattern);
      ::_exit(1);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    ::_exit(0);
  };
  EXPECT_EXIT(create_at_the_end(), testing::ExitedWithCode(0), "");
  EXPECT_EQ(folder.names(), std::vector<std::string>{});
}

}  // namespace
}  // namespace biseam::tool
