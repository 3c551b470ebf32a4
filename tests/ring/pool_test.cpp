#include "ring/pool.hpp"

#include <gtest/gtest.h>
#include <sched.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <vector>

#include "support/failing_threads.hpp"

namespace biseam::test {
namespace {

using ring::kMostThreads;
using ring::Pool;

// Counts how often each part was done, without help by atomics: a part done twice at a time is a race.
struct Counts {
  std::vector<int> parts;
  std::atomic<bool> in_use[kMostThreads] = {};
  int threads;
  bool shared_thread = false, wrong_thread = false;

  Counts(int count, int thread_count) : parts(static_cast<std::size_t>(count)), threads(thread_count) {}

  static void job(void* context, int part, int thread) noexcept {
    Counts& counts = *static_cast<Counts*>(context);
    if (thread < 0 || thread >= counts.threads) counts.wrong_thread = true;
    if (counts.in_use[thread].exchange(true)) counts.shared_thread = true;
    ++counts.parts[static_cast<std::size_t>(part)];
    counts.in_use[thread] = false;
  }
};

void expect_every_part_once(Pool& pool, int parts) {
  Counts counts(parts, pool.size());
  pool.run(Counts::job, &counts, parts);
  // What workers did is seen here: run() has returned.
  EXPECT_EQ(std::count(counts.parts.begin(), counts.parts.end(), 1), parts);
  EXPECT_FALSE(counts.wrong_thread);
  EXPECT_FALSE(counts.shared_thread);
}

TEST(Pool, DoesEveryPartOnce) {
  for (const int threads : {1, 2, 3, 8}) {
    Pool pool;
    pool.start(threads);
    EXPECT_EQ(pool.size(), threads);
    for (const int parts : {0, 1, 2, threads, 100}) expect_every_part_once(pool, parts);
  }
}

TEST(Pool, GoesOnForManyRounds) {
  Pool pool;
  pool.start(4);
  for (int round = 0; round < 300; ++round) expect_every_part_once(pool, round % 7);
}

TEST(Pool, WorksAloneBeforeItIsStarted) {
  Pool pool;
  EXPECT_EQ(pool.size(), 1);
  expect_every_part_once(pool, 10);
}

TEST(Pool, HoldsCountsWithinItsLimits) {
  for (const int count : {-5, 0, 1}) {
    Pool pool;
    pool.start(count);
    EXPECT_EQ(pool.size(), 1);
  }
  Pool most;
  most.start(kMostThreads + 1);
  EXPECT_EQ(most.size(), kMostThreads);
  expect_every_part_once(most, 200);
}

TEST(Pool, DoesWithoutThreadsThatAreRefused) {
  for (const int started : {0, 1, 2}) {
    const FailingThreads refused(started);
    Pool pool;
    pool.start(4);
    EXPECT_EQ(pool.size(), started + 1);
    for (int round = 0; round < 20; ++round) expect_every_part_once(pool, 9);
  }
}

// Parts are begun in order, so that long ones can be put first.
TEST(Pool, BeginsPartsInOrder) {
  std::vector<int> begun;
  Pool pool;
  pool.run([](void* list, int part, int) noexcept { static_cast<std::vector<int>*>(list)->push_back(part); }, &begun, 50);
  EXPECT_TRUE(std::is_sorted(begun.begin(), begun.end()));
  EXPECT_EQ(begun.size(), 50u);
}

// The caller's thread takes parts too, and others' parts may take as long as they like.
TEST(Pool, SharesARound) {
  struct Meeting {
    std::atomic<int> arrived{0};
  } meeting;
  Pool pool;
  pool.start(3);
  pool.run(
      [](void* context, int, int) noexcept {
        Meeting& m = *static_cast<Meeting*>(context);
        ++m.arrived;
        while (m.arrived < 3) sched_yield();  // only ends when three threads are in the round
      },
      &meeting, 3);
  EXPECT_EQ(meeting.arrived, 3);
}

}  // namespace
}  // namespace biseam::test
