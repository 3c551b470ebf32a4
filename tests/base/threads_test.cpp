#include "base/threads.hpp"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>

namespace biseam::test {
namespace {

struct Visit {
  std::atomic<int> times{0};
  pthread_t thread{};
};

void* visit(void* args) {
  Visit& v = *static_cast<Visit*>(args);
  ++v.times;
  v.thread = pthread_self();
  return nullptr;
}

TEST(Threads, EveryTaskRunsOnceAndHasEnded) {
  for (const int count : {0, 1, 2, 4, 8, 9, 12}) {
    Visit visits[12];
    ThreadTask tasks[12];
    for (int i = 0; i < 12; ++i) tasks[i] = {visit, &visits[i]};
    run_together(tasks, count);
    for (int i = 0; i < 12; ++i) EXPECT_EQ(i < count ? 1 : 0, visits[i].times) << i << " of " << count;
  }
}

struct Meeting {
  pthread_barrier_t barrier;
};

void* meet(void* args) {
  pthread_barrier_wait(&static_cast<Meeting*>(args)->barrier);
  return nullptr;
}

// Ends only when four tasks are under way at once.
TEST(Threads, TasksRunAtTheSameTime) {
  Meeting meeting;
  ASSERT_EQ(0, pthread_barrier_init(&meeting.barrier, nullptr, 4));
  const ThreadTask tasks[] = {{meet, &meeting}, {meet, &meeting}, {meet, &meeting}, {meet, &meeting}};
  run_together(tasks, 4);
  pthread_barrier_destroy(&meeting.barrier);
}

}  // namespace
}  // namespace biseam::test
