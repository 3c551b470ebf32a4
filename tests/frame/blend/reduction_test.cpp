#include "frame/blend/reduction.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "biseam/biseam.h"
#include "stages/blend/widen.hpp"
#include "support/blend_formulas.hpp"
#include "support/guarded_block.hpp"

namespace biseam::test {
namespace {

size_t samples(int width, int height) { return size_t{3} * static_cast<size_t>(width) * static_cast<size_t>(height); }

// A level and its half, between guards.
struct Levels {
  Levels(int width, int height)
      : level_bytes(samples(width, height)),
        reduced_bytes(samples(half_up(width), half_up(height))),
        sums(samples(width, 1)),
        level{level_bytes.data(), width, height},
        reduced{reduced_bytes.data(), half_up(width), half_up(height)} {}

  GuardedBlock<uint8_t> level_bytes, reduced_bytes;
  GuardedBlock<uint16_t> sums;
  ByteImage level, reduced;
};

void expect_equal(const TestImage& expected, GuardedBlock<uint8_t>& bytes) {
  ASSERT_EQ(expected.samples().size(), bytes.size());
  EXPECT_TRUE(std::equal(expected.samples().begin(), expected.samples().end(), bytes.data()));
}

TEST(NarrowAndReduce, EqualsTheDirectSums) {
  RandomSource random;
  for (int round = 0; round < 400 && !HasFailure(); ++round) {
    const int width = random.between(1, 90), height = random.between(1, 20);
    TestImage image(width, height);
    if (round % 3 == 0) {
      for (int32_t& sample : image.samples()) sample = 255 * random.between(0, 1);
    } else {
      image.randomize(random, 0, 255);
    }
    const TestImage before = image;
    Levels levels(width, height);
    ASSERT_TRUE(narrow_and_reduce(*image, 255, levels.level, levels.reduced, levels.sums.data()));
    expect_equal(image, levels.level_bytes);
    expect_equal(test::reduced(image, half_up(width), half_up(height)), levels.reduced_bytes);
    EXPECT_EQ(before.samples(), image.samples());
    levels.reduced_bytes.data()[0] ^= 1;
    reduce_level(levels.level, levels.reduced, levels.sums.data());
    expect_equal(test::reduced(image, half_up(width), half_up(height)), levels.reduced_bytes);
  }
}

TEST(MirrorByteEdge, EqualsMirrorEdge) {
  RandomSource random;
  for (int round = 0; round < 400; ++round) {
    const int width = random.between(1, 60), t = random.between(0, width), side = random.between(0, 1);
    GuardedBlock<int32_t> samples(size_t{3} * static_cast<size_t>(width + t));
    GuardedBlock<uint8_t> bytes(samples.size());
    for (size_t i = 0; i < samples.size(); ++i) samples.data()[i] = bytes.data()[i] = random.byte();
    mirror_edge(samples.data(), width + t, t, side);
    mirror_byte_edge(bytes.data(), width + t, t, side);
    ASSERT_TRUE(std::equal(samples.data(), samples.data() + samples.size(), bytes.data())) << width << " + " << t;
  }
}

TEST(NarrowAndReduce, RefusesASampleOutOfRangeWhereverItLies) {
  RandomSource random;
  for (int round = 0; round < 400; ++round) {
    const int width = random.between(1, 60), height = random.between(1, 20);
    const uint32_t most = round % 2 == 0 ? 255 : 64;
    TestImage source(width, height);
    source.randomize(random, 0, static_cast<int>(most));
    const int32_t outliers[] = {static_cast<int32_t>(most) + 1, -1, INT32_MIN, INT32_MAX, 1 << 8, 1 << 16};
    const int where = random.between(0, static_cast<int>(source.samples().size()) - 1);
    source.samples()[static_cast<size_t>(where)] = outliers[random.between(0, 5)];
    Levels levels(width, height);
    EXPECT_FALSE(narrow_and_reduce(*source, most, levels.level, levels.reduced, levels.sums.data()));
  }
}

}  // namespace
}  // namespace biseam::test
