#include "base/share_work.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <latch>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace biseam::tool {
namespace {

TEST(ShareWork, EveryPieceIsDoneOnceByAnyNumberOfThreads) {
  for (const int threads : {-1, 0, 1, 2, 7, 40}) {
    for (const int pieces : {-1, 0, 1, 2, 33}) {
      std::vector<std::atomic<int>> done(64);
      share_work(pieces, threads, [&](int piece) { ++done.at(std::size_t(piece)); });
      for (int k = 0; k < 64; ++k) EXPECT_EQ(done[std::size_t(k)], k < pieces) << threads << " " << pieces << " " << k;
    }
  }
}

TEST(ShareWork, OneThreadIsTheCallersAndGoesInOrder) {
  std::vector<int> order;
  const auto caller = std::this_thread::get_id();
  share_work(20, 1, [&](int piece) {
    EXPECT_EQ(std::this_thread::get_id(), caller);
    order.push_back(piece);
  });
  EXPECT_EQ(order.size(), 20u);
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

// Each piece waits for the others, so that three threads have to be there at once; a fourth never is.
TEST(ShareWork, HasAsManyThreadsAtOnceAsWereAskedFor) {
  std::latch all(3);
  std::atomic<int> now{0}, most{0};
  share_work(3, 3, [&](int) { all.arrive_and_wait(); });
  share_work(200, 3, [&](int) {
    const int here = ++now;
    for (int seen = most; here > seen && !most.compare_exchange_weak(seen, here);) {
    }
    std::this_thread::yield();
    --now;
  });
  EXPECT_LE(most, 3);
}

TEST(ShareWork, ThePiecesAfterAnExceptionAreNotBegun) {
  std::vector<int> begun;
  const auto work = [&](int piece) {
    begun.push_back(piece);
    if (piece == 3) throw std::runtime_error("the third");
  };
  EXPECT_THROW(share_work(100, 1, work), std::runtime_error);
  EXPECT_EQ(begun, (std::vector<int>{0, 1, 2, 3}));
}

// Both throw; whichever is first comes out, once nobody works any more.
TEST(ShareWork, OneExceptionOfSeveralThreadsComesOutWhenAllHaveEnded) {
  for (int round = 0; round < 50; ++round) {
    std::latch both(2);
    std::atomic<int> begun{0}, ended{0};
    try {
      share_work(1000, 2, [&](int piece) {
        ++begun;
        both.arrive_and_wait();
        ++ended;
        throw std::runtime_error(std::to_string(piece));
      });
      ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& reason) {
      EXPECT_TRUE(std::string(reason.what()) == "0" || std::string(reason.what()) == "1") << reason.what();
    }
    EXPECT_EQ(begun, 2);
    EXPECT_EQ(ended, 2);
  }
}

}  // namespace
}  // namespace biseam::tool
