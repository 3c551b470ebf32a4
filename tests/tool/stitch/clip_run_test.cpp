#include "stitch/clip_run.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include "base/interrupt.hpp"
#include "stitch/queue.hpp"

namespace biseam::tool {
namespace {

constexpr int kFrames = 50;

// Counts what passes; each of its steps can fail at a frame.
struct Line {
  int read_fails = -1, stitch_fails = -1, write_fails = -1;
  std::int64_t next = 0;
  std::vector<std::int64_t> written;
  std::atomic<int> ahead = 0, most_ahead = 0;

  ClipRun run() {
    return {[this]() -> std::optional<FramePair> {
              if (next == read_fails) throw std::runtime_error("read");
              if (next == kFrames) return std::nullopt;
              if (++ahead > most_ahead) most_ahead = ahead.load();
              FramePair pair;
              pair.number = next++;
              return pair;
            },
            [this](FramePair pair) {
              if (pair.number == stitch_fails) throw std::runtime_error("stitch");
              StitchedFrame frame;
              frame.pair = std::move(pair);
              return frame;
            },
            [this](StitchedFrame frame) {
              if (frame.pair.number == write_fails) throw std::runtime_error("write");
              written.push_back(frame.pair.number);
              --ahead;
            },
            2};
  }

  std::string trouble() {
    try {
      run_clip(run());
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "";
  }
};

std::vector<std::int64_t> first(int count) {
  std::vector<std::int64_t> numbers;
  for (int k = 0; k < count; ++k) numbers.push_back(k);
  return numbers;
}

TEST(ClipRun, EverythingComesInOrder) {
  Line line;
  EXPECT_EQ(line.trouble(), "");
  EXPECT_EQ(line.written, first(kFrames));
}

// Two wait on either side, and each step has one in its hands.
TEST(ClipRun, HoldsFewFramesWhenWritingIsSlow) {
  Line line;
  ClipRun run = line.run();
  run.write = [slow = run.write](StitchedFrame frame) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    slow(std::move(frame));
  };
  run_clip(run);
  EXPECT_LE(line.most_ahead, 2 + 2 + 3);
  EXPECT_EQ(line.written, first(kFrames));
}

TEST(ClipRun, WhatCameBeforeAnErrorIsWritten) {
  for (const int number : {0, 1, 20, kFrames - 1}) {
    Line read, stitch;
    read.read_fails = stitch.stitch_fails = number;
    EXPECT_EQ(read.trouble(), "read");
    EXPECT_EQ(read.written, first(number));
    EXPECT_EQ(stitch.trouble(), "stitch");
    EXPECT_EQ(stitch.written, first(number));
  }
}

TEST(ClipRun, AnErrorOfWritingEndsTheOthers) {
  for (const int number : {0, 1, 20, kFrames - 1}) {
    Line line;
    line.write_fails = number;
    EXPECT_EQ(line.trouble(), "write");
    EXPECT_EQ(line.written, first(number));
    EXPECT_LE(line.next, std::min(kFrames, number + 1 + 2 + 2 + 3));
  }
}

TEST(ClipRun, OthersCanReadAfterwards) {
  Line line, fails;
  fails.write_fails = 3;
  EXPECT_EQ(line.trouble() + fails.trouble(), "write");
  EXPECT_FALSE(is_reading_stopped());
}

// The earliest frame's error counts.
TEST(ClipRun, AnErrorOfWritingComesBeforeThatOfALaterFrame) {
  Line line;
  line.write_fails = 10;
  line.stitch_fails = 11;
  line.read_fails = 12;
  EXPECT_EQ(line.trouble(), "write");
}

TEST(Queue, TakesNothingMoreOnceItIsClosed) {
  Queue<int> queue(1);
  EXPECT_TRUE(queue.put(1));
  queue.close();
  EXPECT_FALSE(queue.put(2));
  EXPECT_EQ(queue.take(), 1);
}

TEST(Queue, EndsAfterWhatItHolds) {
  Queue<int> queue(3);
  queue.put(1);
  queue.put(2);
  queue.end();
  EXPECT_EQ(queue.take(), 1);
  EXPECT_EQ(queue.take(), 2);
  EXPECT_EQ(queue.take(), std::nullopt);
}

}  // namespace
}  // namespace biseam::tool
