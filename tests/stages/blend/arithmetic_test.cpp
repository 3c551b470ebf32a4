#include "stages/blend/arithmetic.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "biseam/biseam.h"
#include "support/test_image.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kOld = -777;
using Binary = int32_t (*)(BlendImage*, BlendImage*, BlendImage*);
constexpr Binary kBinaries[] = {SubImage, AddImage, MulImage};

int32_t combined(Binary binary, int32_t a, int32_t b) {
  const uint32_t x = static_cast<uint32_t>(a), y = static_cast<uint32_t>(b);
  return static_cast<int32_t>(binary == SubImage ? x - y : binary == AddImage ? x + y : x * y);
}

TEST(CreatImage, SetsEverySample) {
  TestImage image(5, 4, 3, 1);
  CreatImage(image.record(), -9);
  EXPECT_EQ(TestImage(5, 4, 3, -9).samples(), image.samples());
}

TEST(CreatImage, SkipsWhatLiesBetweenRowsAndPixels) {
  // Pixels of three samples, five apart, in rows of two pixels.
  TestImage image(2, 3, 5, kOld);
  BlendImage record = *image;
  record.channels = 3;
  CreatImage(&record, 8);
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 2; ++x) {
      for (int k = 0; k < 5; ++k) EXPECT_EQ(k < 3 ? 8 : kOld, image.at(x, y, k));
    }
  }
}

TEST(BinaryOperations, ChannelByChannelAndWrapping) {
  RandomSource random;
  for (const Binary binary : kBinaries) {
    for (const auto& [width, height] : {std::pair{1, 1}, {7, 3}, {16, 2}, {33, 5}}) {
      TestImage a(width, height), b(width, height), out(width, height);
      for (int32_t& sample : a.samples()) sample = static_cast<int32_t>(random.word());
      for (int32_t& sample : b.samples()) sample = static_cast<int32_t>(random.word());
      ASSERT_EQ(0, binary(a.record(), b.record(), out.record()));
      for (size_t i = 0; i < out.samples().size(); ++i) {
        ASSERT_EQ(combined(binary, a.samples()[i], b.samples()[i]), out.samples()[i]);
      }
    }
  }
}

TEST(BinaryOperations, OutMayBeAnOperand) {
  RandomSource random;
  for (const Binary binary : kBinaries) {
    TestImage a(9, 4), b(9, 4), out(9, 4);
    a.randomize(random, -300, 300);
    b.randomize(random, -300, 300);
    ASSERT_EQ(0, binary(a.record(), b.record(), out.record()));
    TestImage first = a, second = b;
    ASSERT_EQ(0, binary(first.record(), b.record(), first.record()));
    ASSERT_EQ(0, binary(a.record(), second.record(), second.record()));
    EXPECT_EQ(out.samples(), first.samples());
    EXPECT_EQ(out.samples(), second.samples());
  }
}

TEST(BinaryOperations, DifferentSizesAreRefusedUnwritten) {
  for (const Binary binary : kBinaries) {
    for (const auto& [width, height] : {std::pair{4, 5}, {5, 4}, {0, 4}}) {
      TestImage a(4, 4), b(width, height), out(5, 5, 3, kOld);
      EXPECT_EQ(-1, binary(a.record(), b.record(), out.record()));
      EXPECT_EQ(TestImage(5, 5, 3, kOld).samples(), out.samples());
    }
  }
}

TEST(BinaryOperations, ChannelCountsOtherThanOneAndThreeAreRefused) {
  for (const Binary binary : kBinaries) {
    for (int channels = -2; channels < 8; ++channels) {
      for (bool first : {true, false}) {
        TestImage a(2, 2), b(2, 2), out(2, 2, 3, kOld);
        (first ? a : b).record()->channels = channels;
        const bool taken = channels == 1 || channels == 3;
        EXPECT_EQ(taken ? 0 : -1, binary(a.record(), b.record(), out.record())) << channels;
        if (!taken) {
          EXPECT_EQ(TestImage(2, 2, 3, kOld).samples(), out.samples());
        }
      }
    }
  }
}

TEST(BinaryOperations, OutputRecordIsNotChecked) {
  for (const Binary binary : kBinaries) {
    TestImage a(2, 2, 3, 6), b(2, 2, 3, 2), out(2, 2, 3, kOld);
    BlendImage bare{};
    bare.data[0] = out.record()->data[0];
    EXPECT_EQ(0, binary(a.record(), b.record(), &bare));
    EXPECT_EQ(TestImage(2, 2, 3, combined(binary, 6, 2)).samples(), out.samples());
  }
}

TEST(BinaryOperations, TheFirstOperandsStrideAndStepServeAllThree) {
  TestImage a(3, 2, 3, 5), b(3, 2, 3, 2), out(3, 2, 3, kOld);
  b.record()->stride = 1000;
  b.record()->steps[0] = 77;
  out.record()->stride = -4;
  for (const Binary binary : kBinaries) {
    EXPECT_EQ(0, binary(a.record(), b.record(), out.record()));
    EXPECT_EQ(TestImage(3, 2, 3, combined(binary, 5, 2)).samples(), out.samples());
  }
}

TEST(BinaryOperations, ThreeSamplesAPixelWhateverTheChannelCountSays) {
  TestImage a(3, 2, 3, 5), b(3, 2, 3, 2), out(3, 2, 3, kOld);
  a.record()->channels = 1;
  b.record()->channels = 1;
  EXPECT_EQ(0, AddImage(a.record(), b.record(), out.record()));
  EXPECT_EQ(TestImage(3, 2, 3, 7).samples(), out.samples());
}

TEST(BinaryOperations, EmptyImagesAreANoOp) {
  for (const auto& [width, height] : {std::pair{0, 4}, {4, 0}, {0, 0}}) {
    TestImage a(width, height), b(width, height), out(4, 4, 3, kOld);
    for (const Binary binary : kBinaries) EXPECT_EQ(0, binary(a.record(), b.record(), out.record()));
    CreatImage(a.record(), 3);
    EXPECT_EQ(TestImage(4, 4, 3, kOld).samples(), out.samples());
    // The check comes first all the same.
    a.record()->channels = 2;
    for (const Binary binary : kBinaries) EXPECT_EQ(-1, binary(a.record(), b.record(), out.record()));
  }
}

TEST(MulImage, FullWeightIsNotClamped) {
  TestImage a(1, 1, 3, 255 * 64), b(1, 1, 3, 64), out(1, 1);
  EXPECT_EQ(0, MulImage(a.record(), b.record(), out.record()));
  EXPECT_EQ(TestImage(1, 1, 3, 1044480).samples(), out.samples());
}

TEST(Mix, DifferentSizesLeaveEverythingAsItIs) {
  for (int odd = 0; odd < 4; ++odd) {
    TestImage images[4] = {TestImage(3, 3, 3, 5), TestImage(3, 3, 3, 6), TestImage(3, 3, 3, 64), TestImage(3, 3, 3, kOld)};
    images[odd] = TestImage(3, 4, 3, 1);
    const TestImage before[4] = {images[0], images[1], images[2], images[3]};
    EXPECT_EQ(Status::mismatch, mix(*images[0], *images[1], *images[2], *images[3]));
    for (int i = 0; i < 4; ++i) EXPECT_EQ(before[i].samples(), images[i].samples());
  }
}

TEST(Mix, LeavesBothProductsAndTheirSum) {
  RandomSource random;
  for (const auto& [width, height] : {std::pair{1, 1}, {7, 3}, {33, 2}}) {
    TestImage a(width, height), b(width, height), mask(width, height), out(width, height, 3, kOld);
    for (TestImage* image : {&a, &b, &mask}) {
      for (int32_t& sample : image->samples()) sample = static_cast<int32_t>(random.word());
    }
    TestImage product_a = a, product_b = b;
    ASSERT_EQ(Status::ok, mix(*product_a, *product_b, *mask, *out));
    for (size_t i = 0; i < out.samples().size(); ++i) {
      const int32_t weight = mask.samples()[i], rest = combined(SubImage, 64, weight);
      ASSERT_EQ(combined(MulImage, a.samples()[i], weight), product_a.samples()[i]);
      ASSERT_EQ(combined(MulImage, b.samples()[i], rest), product_b.samples()[i]);
      ASSERT_EQ(combined(AddImage, product_a.samples()[i], product_b.samples()[i]), out.samples()[i]);
    }
  }
}

TEST(MemCopyImage, CopiesBetweenEqualLayouts) {
  RandomSource random;
  TestImage src(5, 4), dst(5, 4);
  src.randomize(random, -100, 100);
  EXPECT_EQ(reinterpret_cast<intptr_t>(dst.record()->data[0]), MemCopyImage(src.record(), dst.record()));
  EXPECT_EQ(src.samples(), dst.samples());
}

TEST(MemCopyImage, EqualFormatsCopyTheDestinationsBytesWhateverTheSizes) {
  RandomSource random;
  TestImage src(5, 4), dst(2, 3, 3, kOld);
  src.randomize(random, -100, 100);
  EXPECT_EQ(reinterpret_cast<intptr_t>(dst.record()->data[0]), MemCopyImage(src.record(), dst.record()));
  EXPECT_EQ(std::vector<int32_t>(src.samples().begin(), src.samples().begin() + 18), dst.samples());
  // A larger destination takes more than the source's record describes: its block has to hold that.
  BlendImage small = *src;
  small.width = 1;
  small.height = 1;
  small.stride = 3;
  EXPECT_NE(-1, MemCopyImage(&small, dst.record()));
  EXPECT_EQ(std::vector<int32_t>(src.samples().begin(), src.samples().begin() + 18), dst.samples());
}

TEST(MemCopyImage, AnyOneOfThreeAgreementsSuffices) {
  TestImage src(4, 6, 3, 1), dst(2, 2, 3, kOld);
  const auto copies = [&](int src_stride, int src_height, int src_type, int dst_stride) {
    BlendImage from = *src, to = *dst;
    from.stride = src_stride;
    from.height = src_height;
    from.type = src_type;
    to.stride = dst_stride;
    return MemCopyImage(&from, &to) != -1;
  };
  EXPECT_TRUE(copies(6, 4, 0, 6));   // equal strides
  EXPECT_TRUE(copies(12, 6, 0, 6));  // the destination's stride is the source's height
  EXPECT_TRUE(copies(12, 4, 7, 6));  // equal formats
  EXPECT_FALSE(copies(12, 4, 0, 6));
  EXPECT_FALSE(copies(6, 12, 0, 3));  // the other way round does not count
}

TEST(MemCopyImage, RefusedCopyWritesNothing) {
  TestImage src(4, 4, 3, 1), dst(2, 2, 3, kOld);
  src.record()->type = BISEAM_GRAY;
  EXPECT_EQ(-1, MemCopyImage(src.record(), dst.record()));
  EXPECT_EQ(TestImage(2, 2, 3, kOld).samples(), dst.samples());
}

TEST(MemCopyImage, EmptyDestinationCopiesNothing) {
  TestImage src(4, 4, 3, 1), dst(2, 0);
  EXPECT_EQ(reinterpret_cast<intptr_t>(dst.record()->data[0]), MemCopyImage(src.record(), dst.record()));
  BlendImage negative = *src;
  negative.height = -1;
  negative.stride = -1;
  EXPECT_NE(-1, MemCopyImage(src.record(), &negative));
  EXPECT_EQ(TestImage(4, 4, 3, 1).samples(), src.samples());
}

}  // namespace
}  // namespace biseam::test
