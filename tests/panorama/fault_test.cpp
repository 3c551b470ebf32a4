#include <gtest/gtest.h>

#include <climits>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "biseam/stitcher.hpp"
#include "panorama/fixture.hpp"
#include "support/failing_heap.hpp"
#include "support/failing_threads.hpp"

namespace biseam {
namespace {

using test::FailingHeap;
using test::FailingThreads;

using Planes = std::vector<std::vector<uint8_t>>;

struct Variant {
  const char* name;
  bool search, odd_levels, low, all_later_fail;
};

// Test names hold it instead of the record's bytes.
void PrintTo(const Variant& variant, std::ostream* out) { *out << variant.name; }

class Faults : public testing::TestWithParam<Variant> {
 protected:
  Faults() : config_(test::valid_config()) {
    config_.findpath_enable = GetParam().search;
    if (GetParam().odd_levels) {
      config_.trans_width = 2;
      config_.pyr_level = 4;
    }
    if (GetParam().low) make_low();
  }

  // So low and wide a band that its strips have no room for a search: its frames take from the heap.  Others never do.
  void make_low() {
    config_.in_h = config_.in_w = config_.in_luma_stride = config_.in_chroma_stride = config_.out_h[0] = 16;
    config_.out_w[0] = config_.out_luma_stride[0] = config_.out_chroma_stride[0] = 1024;
    config_.p0 = config_.p1 = 3.5f;
    config_.cx0 = config_.cy0 = config_.cx1 = config_.cy1 = 7.5f;
    config_.feather = 20;
    config_.trans_width = 172;
    config_.findpath_width = 10;
  }

  Planes stitch(Stitcher& stitcher) {
    std::mt19937 random(1);
    test::Frame frame(stitcher.sizes(), random);
    const Error error = frame.stitch(stitcher);
    EXPECT_FALSE(error) << error.text();
    return {frame.luma.bytes(), frame.chroma.bytes()};
  }
  Planes expected() {
    Result<Stitcher> made = Stitcher::create(config_);
    return stitch(*made);
  }

  StitchConfig config_;
};

constexpr int kEndless = 100000;

TEST_P(Faults, EveryAllocationOfCreateEndsInAnErrorWithoutALeak) {
  int request = 0;
  for (;; ++request) {
    ASSERT_LT(request, kEndless);
    const FailingHeap heap(request, GetParam().all_later_fail);
    const bool complete = [&] {
      const Result<Stitcher> made = Stitcher::create(config_);
      if (heap.requests() <= request) {
        EXPECT_TRUE(made) << made.error().text();
        return true;
      }
      EXPECT_FALSE(made);
      EXPECT_EQ(made.error().code(), ErrorCode::out_of_memory);
      const std::string text = made.error().text();
      EXPECT_EQ(text.substr(0, 15), "out of memory: ");
      EXPECT_TRUE(request == 0 || text.find(" bytes and two blend blocks of ") != std::string::npos) << text;
      EXPECT_LT(text.size() + 1, static_cast<size_t>(Error::kTextSize)) << "cut short";
      return false;
    }();
    ASSERT_EQ(heap.held(), 0) << "request " << request;
    if (complete) break;
  }
  EXPECT_GE(request, 4) << "the stitcher, the working block, two blend blocks";
}

TEST_P(Faults, EveryAllocationOfAFrameEndsInAnErrorWithoutALeak) {
  const Planes good = expected();
  Result<Stitcher> made = Stitcher::create(config_);
  ASSERT_TRUE(made);
  int request = 0;
  for (;; ++request) {
    ASSERT_LT(request, kEndless);
    std::mt19937 random(1);
    test::Frame frame(made->sizes(), random);
    const FailingHeap heap(request, GetParam().all_later_fail);
    const Error error = frame.stitch(*made);
    ASSERT_EQ(heap.held(), 0) << "request " << request;
    if (heap.requests() <= request) {
      EXPECT_FALSE(error) << error.text();
      break;
    }
    ASSERT_EQ(error.code(), ErrorCode::out_of_memory) << "request " << request;
  }
  EXPECT_EQ(request > 0, GetParam().low) << request;
  EXPECT_EQ(stitch(*made), good);
}

TEST_P(Faults, FramesAfterAFailedOneAreGood) {
  const Planes good = expected();
  Result<Stitcher> made = Stitcher::create(config_);
  ASSERT_TRUE(made);
  std::mt19937 random(2);
  test::Frame frame(made->sizes(), random);
  for (int request = 0; request < kEndless; ++request) {
    {
      const FailingHeap heap(request, GetParam().all_later_fail);
      const Error error = frame.stitch(*made);
      if (heap.requests() <= request) break;
      ASSERT_TRUE(error);
    }
    ASSERT_EQ(stitch(*made), good) << "after request " << request;
  }
}

TEST_P(Faults, FailuresPrintNothing) {
  Result<Stitcher> made = Stitcher::create(config_);
  ASSERT_TRUE(made);
  std::mt19937 random(3);
  test::Frame frame(made->sizes(), random);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  for (int request = 0; request < kEndless; ++request) {
    const FailingHeap heap(request, GetParam().all_later_fail);
    if (Stitcher::create(config_)) break;
  }
  for (int request = 0; request < kEndless; ++request) {
    const FailingHeap heap(request, GetParam().all_later_fail);
    if (!frame.stitch(*made)) break;
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_P(Faults, AThreadThatCannotStartChangesNothing) {
  const Planes good = expected();
  int thread = 0;
  for (; thread < kEndless; ++thread) {
    const FailingThreads threads(thread, GetParam().all_later_fail ? INT_MAX : thread + 1);
    Result<Stitcher> made = Stitcher::create(config_);
    ASSERT_TRUE(made);
    const Planes planes = stitch(*made);
    if (threads.refused() == 0) break;
    ASSERT_EQ(planes, good) << "thread " << thread;
  }
  EXPECT_EQ(thread, 18) << "4 for the tables, then 4 to remap, 4 to convert, 2 to blend and 2 in each blend";
}

// Those whose frames can fail.
class FrameFaults : public Faults {};

TEST_P(FrameFaults, AFailedFrameLeavesNoSeamsToKeep) {
  const Planes good = expected();
  Result<Stitcher> made = Stitcher::create(config_);
  ASSERT_TRUE(made);
  std::mt19937 random(2);
  test::Frame failing(made->sizes(), random);
  EXPECT_FALSE(failing.stitch(*made));
  {
    const FailingHeap heap(0, GetParam().all_later_fail);
    EXPECT_TRUE(failing.stitch(*made));
  }
  std::mt19937 same(1);
  test::Frame frame(made->sizes(), same);
  EXPECT_FALSE(
      made->process({frame.luma0, frame.chroma0}, {frame.luma1, frame.chroma1}, {frame.luma, frame.chroma}, Seams::kept));
  EXPECT_EQ((Planes{frame.luma.bytes(), frame.chroma.bytes()}), good);
}

const Variant kLow{"low", true, false, true, false}, kLowFromThenOn{"low_from_then_on", true, false, true, true};
std::string name_of(const testing::TestParamInfo<Variant>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(variants, Faults,
                         testing::Values(Variant{"search", true, false, false, false},
                                         Variant{"fixed_seam", false, false, false, false},
                                         Variant{"odd_levels", true, true, false, false},
                                         Variant{"odd_levels_from_then_on", true, true, false, true}, kLow, kLowFromThenOn),
                         name_of);
INSTANTIATE_TEST_SUITE_P(variants, FrameFaults, testing::Values(kLow, kLowFromThenOn), name_of);

}  // namespace
}  // namespace biseam
