#include "stages/seam/cut.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "stages/seam/images.hpp"
#include "stages/seam/reference_flow.hpp"
#include "support/failing_heap.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kUntouched = 7;

// Edge costs and terminals of the seam search, restated in integers: details stay small enough for them to be exact.
TestGraph plain_grid(const std::vector<int32_t>& a, const std::vector<int32_t>& b, int w, int h) {
  std::vector<int> squares;
  for (size_t i = 0; i < a.size(); ++i) squares.push_back((a[i] - b[i]) * (a[i] - b[i]));
  squares.insert(squares.end(), {0, 0});
  const auto end = [&](int i) {
    const auto p = static_cast<size_t>(i);
    return squares[p] + squares[p + 1] + squares[p + 2];
  };
  TestGraph grid;
  grid.node_count = w * h;
  const auto connect = [&](int i, int j, bool in_frame) {
    const int cost = end(i) + end(j) + 1 + (in_frame ? 1000 : 0);
    grid.edges.push_back({i, j, cost, cost});
  };
  for (int r = 0; r < h; ++r) {
    for (int c = 0; c < w; ++c) {
      const int here = r * w + c;
      if (c < w - 1) connect(here, here + 1, r < 2 || r >= h - 2 || c < 2 || c >= w - 3);
      if (r < h - 1) connect(here, here + w, r < 2 || r >= h - 3 || c < 2 || c >= w - 2);
      const bool tied = r >= 2 && r < h - 2;
      grid.terminal.push_back(!tied ? 0 : c < 2 ? 100000 : c >= w - 2 ? -100000 : 0);
    }
  }
  return grid;
}

using Samples = std::vector<int32_t>;

// The mask's steps sample by sample.  Places outside the mask are simply not there.
Samples plain_mask(Samples mask, int mask_w, int mask_h, const Samples& a, const Samples& b, int w, int h, int64_t offset) {
  const auto sample = [&](int64_t x, int64_t y, int64_t s) {
    if (x < 0 || x >= mask_w || y < 0 || y >= mask_h) return;
    mask[static_cast<size_t>((y * mask_w + x) * 3 + s)] = 64;
  };
  const auto pixel = [&](int64_t x, int64_t y) {
    for (int s = 0; s < 3; ++s) sample(x, y, s);
  };
  for (int x = 0; x < mask_w / 2; ++x) {
    pixel(x, 0);
    pixel(x, 1);
    for (const int y : {h - 2, h - 1}) {
      sample(x / 3, y, x % 3);
      sample(x, y, 1);
      sample(x, y, 2);
    }
  }
  if (offset >= -1) {
    for (int64_t x = 0; x <= offset + 1 && x < mask_w; ++x)
      for (int y = 0; y < h; ++y) pixel(x, y);
  }
  if (h > 4 && w > 4) {
    ReferenceTrees trees(plain_grid(a, b, w, h));
    trees.run();
    for (int r = 0; r <= h - 5; ++r)
      for (int j = 0; j <= w - 5; ++j)
        if (trees.on_source_side((r + 2) * w + j + 2)) pixel(offset + 2 + j, r + 2);
  }
  return mask;
}

Samples cut(int offset, int mask_w, int mask_h, const Samples& before, const Samples& a, const Samples& b, int w, int h) {
  ExactGray detail1(w, h, a);
  ExactGray detail2(w, h, b);
  GuardedSamples out(int64_t{3} * mask_w * mask_h);
  for (size_t i = 0; i < before.size(); ++i) out[static_cast<int64_t>(i)] = before[i];
  BlendImage mask = color_record(out.data(), mask_w, mask_h);
  EXPECT_EQ(cut_seam(offset, mask, detail1.record, detail2.record), Status::ok);
  return out.values();
}

Samples filled(int64_t count, int32_t value) { return Samples(static_cast<size_t>(count), value); }

bool is_weighted(const Samples& mask, int mask_w, int x, int y) {
  const auto i = static_cast<size_t>(3 * (y * mask_w + x));
  return mask[i] == 64 && mask[i + 1] == 64 && mask[i + 2] == 64;
}

TEST(CutSeam, DetailsOfDifferentSizesAreAMismatchAndWriteNothing) {
  GuardedSamples out(3 * 10 * 10, kUntouched), details(200);
  BlendImage mask = color_record(out.data(), 10, 10);
  const BlendGray detail = gray_record(details.data(), 8, 10);
  const FailingHeap heap;
  EXPECT_EQ(cut_seam(1, mask, detail, gray_record(details.data(), 9, 10)), Status::mismatch);
  EXPECT_EQ(cut_seam(1, mask, detail, gray_record(details.data(), 8, 9)), Status::mismatch);
  EXPECT_EQ(cut_seam(1, mask, gray_record(details.data(), 10, 8), detail), Status::mismatch);
  EXPECT_EQ(heap.requests(), 0);
  EXPECT_EQ(out.values(), filled(300, kUntouched));
}

TEST(CutSeam, RandomDetailsMasksAndOffsets) {
  const unsigned seed = 32021;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  for (int round = 0; round < 600; ++round) {
    const int w = 1 + static_cast<int>(random() % 20);
    const int h = 1 + static_cast<int>(random() % 20);
    const int mask_w = 1 + static_cast<int>(random() % 30);
    const int mask_h = random() % 2 == 0 ? h : 1 + static_cast<int>(random() % 20);
    const int offset = static_cast<int>(random() % 40) - 15;
    SCOPED_TRACE(testing::Message() << "round " << round << ": " << w << " x " << h << " at " << offset << " in " << mask_w
                                    << " x " << mask_h);
    Samples a, b, before;
    const unsigned most = 1 + random() % 60;
    for (int i = 0; i < w * h; ++i) {
      a.push_back(static_cast<int32_t>(random() % most));
      b.push_back(static_cast<int32_t>(random() % most));
    }
    for (int i = 0; i < 3 * mask_w * mask_h; ++i) before.push_back(random() % 5 == 0 ? 64 : 0);
    ASSERT_EQ(cut(offset, mask_w, mask_h, before, a, b, w, h), plain_mask(before, mask_w, mask_h, a, b, w, h, offset));
  }
}

// Every row is cut once, where both details agree; everywhere else a step across costs much.
TEST(CutSeam, FollowsTheColumnWhereTheDetailsAgree) {
  constexpr int w = 24;
  constexpr int h = 16;
  Samples a = filled(w * h, 0);
  for (int r = 0; r < h; ++r)
    for (int c = 0; c < w; ++c)
      if (c < 10 || c > 15) a[static_cast<size_t>(r * w + c)] = 40;
  constexpr int offset = 5;
  constexpr int mask_w = 34;
  const Samples mask = cut(offset, mask_w, h, filled(3 * mask_w * h, 0), a, filled(w * h, 0), w, h);
  for (int r = 2; r < h - 2; ++r) {
    int weighted = 0;
    while (weighted < mask_w && is_weighted(mask, mask_w, weighted, r)) ++weighted;
    EXPECT_GT(weighted, offset + 10) << r;
    EXPECT_LE(weighted, offset + 16) << r;
    for (int x = weighted; x < mask_w; ++x) EXPECT_EQ(mask[static_cast<size_t>(3 * (r * mask_w + x))], 0);
  }
}

// All edges cost 1, so every column between the borders is as cheap: nodes that end free keep the side they were last on, and
// the seam may shift by a column from row to row.
TEST(CutSeam, IdenticalDetailsAreCutOnceInEveryRow) {
  for (const auto& [w, h] : {std::pair{14, 12}, {9, 9}, {20, 30}, {31, 8}}) {
    SCOPED_TRACE(testing::Message() << w << " x " << h);
    const Samples detail = filled(w * h, 9);
    const Samples mask = cut(0, w, h, filled(3 * w * h, 0), detail, detail, w, h);
    int above = 0;
    for (int r = 2; r < h - 2; ++r) {
      int first = 0;
      while (first < w && is_weighted(mask, w, first, r)) ++first;
      EXPECT_GT(first, 2) << r;
      EXPECT_LT(first, w - 2) << r;
      for (int x = first; x < w; ++x) EXPECT_EQ(mask[static_cast<size_t>(3 * (r * w + x))], 0) << x << ", " << r;
      if (r > 2) {
        EXPECT_LE(std::abs(first - above), 1) << r;
      }
      above = first;
    }
  }
}

TEST(CutSeam, StripsNarrowerOrLowerThanFiveGetNoLabelsAndNoGraph) {
  for (const auto& [w, h] : {std::pair{4, 9}, {9, 4}, {1, 1}, {4, 4}, {2, 30}}) {
    const Samples zeros = filled(w * h, 0);
    const FailingHeap heap;
    const Samples mask = cut(2, 16, 30, filled(3 * 16 * 30, 0), zeros, zeros, w, h);
    EXPECT_EQ(heap.requests(), 0);
    EXPECT_EQ(mask, plain_mask(filled(3 * 16 * 30, 0), 16, 30, zeros, zeros, w, h, 2));
  }
}

TEST(CutSeam, FiveByFiveStripLabelsOnlyItsMiddle) {
  const Samples zeros = filled(25, 0);
  const Samples before = filled(3 * 9 * 5, 0);
  const Samples mask = cut(3, 9, 5, before, zeros, zeros, 5, 5);
  EXPECT_EQ(mask, plain_mask(before, 9, 5, zeros, zeros, 5, 5, 3));
  for (int x = 6; x < 9; ++x) EXPECT_FALSE(is_weighted(mask, 9, x, 2));
}

TEST(CutSeam, EmptyStripsWriteOnlyWhatDoesNotDependOnThem) {
  for (const auto& [w, h] : {std::pair{0, 6}, {6, 0}, {0, 0}, {-3, 6}, {6, -3}}) {
    BlendGray detail = gray_record(nullptr, w, h);
    GuardedSamples out(3 * 8 * 6, 0);
    BlendImage mask = color_record(out.data(), 8, 6);
    EXPECT_EQ(cut_seam(1, mask, detail, detail), Status::ok);
    EXPECT_EQ(out.values(), plain_mask(filled(3 * 8 * 6, 0), 8, 6, {}, {}, w, h, 1));
  }
}

TEST(CutSeam, WeightsOfEarlierCutsStay) {
  const Samples detail = filled(8 * 9, 3);
  const Samples mask = cut(1, 12, 9, filled(3 * 12 * 9, 64), detail, detail, 8, 9);
  EXPECT_EQ(mask, filled(3 * 12 * 9, 64));
  const Samples other = cut(1, 12, 9, filled(3 * 12 * 9, kUntouched), detail, detail, 8, 9);
  for (const int32_t sample : other) EXPECT_TRUE(sample == 64 || sample == kUntouched);
  EXPECT_EQ(other.back(), kUntouched);
}

TEST(CutSeam, FarOffsetsStayInsideTheirRows) {
  const Samples detail = filled(8 * 9, 3);
  const Samples before = filled(3 * 12 * 9, 0);
  for (const int offset : {std::numeric_limits<int>::max(), std::numeric_limits<int>::max() - 8, 1000, 12, 11, 10, -3, -7, -8,
                           -9, -10, -1000, std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(offset);
    EXPECT_EQ(cut(offset, 12, 9, before, detail, detail, 8, 9), plain_mask(before, 12, 9, detail, detail, 8, 9, offset));
  }
}

TEST(CutSeam, MaskWithoutPixelsIsLeftAlone) {
  ExactGray detail(8, 9, filled(72, 3));
  for (const auto& [w, h] : {std::pair{0, 9}, {12, 0}, {-12, 9}, {12, -9}}) {
    GuardedSamples out(8, kUntouched);
    BlendImage mask = color_record(out.data(), w, h);
    EXPECT_EQ(cut_seam(1, mask, detail.record, detail.record), Status::ok);
    EXPECT_EQ(out.values(), filled(8, kUntouched));
  }
}

TEST(CutSeam, EveryFailedAllocationLeavesTheMaskAlone) {
  ExactGray detail(8, 9, filled(72, 3));
  for (int request = 0; request < 3; ++request) {
    GuardedSamples out(3 * 12 * 9, kUntouched);
    BlendImage mask = color_record(out.data(), 12, 9);
    {
      const FailingHeap heap(request);
      EXPECT_EQ(cut_seam(1, mask, detail.record, detail.record), Status::no_memory);
      EXPECT_EQ(heap.held(), 0);
    }
    EXPECT_EQ(out.values(), filled(3 * 12 * 9, kUntouched));
  }
  GuardedSamples out(3 * 12 * 9, kUntouched);
  BlendImage mask = color_record(out.data(), 12, 9);
  const FailingHeap heap;
  EXPECT_EQ(cut_seam(1, mask, detail.record, detail.record), Status::ok);
  EXPECT_EQ(heap.requests(), 3);
  EXPECT_EQ(heap.held(), 0);
}

TEST(CutSeam, BlocksBeyond31BitsCountAsMissingMemory) {
  GuardedSamples out(3 * 12 * 9, kUntouched);
  BlendImage mask = color_record(out.data(), 12, 9);
  const FailingHeap heap;
  // 48 bytes of arcs a pixel: the first is just too large, the last overflows every product of 32 bits.
  for (const auto& [w, h] : {std::pair{6690, 6690}, {8760, 8760}, {46341, 46341}, {65536, 65536}, {1 << 30, 1 << 30}}) {
    const BlendGray detail = gray_record(nullptr, w, h);
    EXPECT_EQ(cut_seam(1, mask, detail, detail), Status::no_memory);
  }
  EXPECT_EQ(heap.requests(), 0);
  EXPECT_EQ(out.values(), filled(3 * 12 * 9, kUntouched));
}

}  // namespace
}  // namespace biseam::test
