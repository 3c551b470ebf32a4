#include "ring/prefetch.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using ring::PictureBox;
using ring::PlaneBytes;
using ring::PlaneGrid;
using ring::SampleSource;
using ring::SampleType;

// A plane whose addresses are counted but never read.
SampleSource plane_of(int width, int height, SampleType type, std::ptrdiff_t stride) {
  static const std::uint8_t byte = 0;
  return {.first = &byte, .stride = stride, .width = width, .height = height, .type = type, .bits = 8, .shift = 0};
}

// Where the bytes begin, counted from the plane's first row and column.
struct Start {
  std::ptrdiff_t row, column;
};

Start start_of(const PlaneBytes& bytes, const SampleSource& plane) {
  const std::ptrdiff_t from = bytes.first - plane.first, row = std::lround(double(from) / double(plane.stride));
  return {row, from - row * plane.stride};
}

TEST(Prefetch, TakesABoxAndASampleBeside) {
  const SampleSource luma = plane_of(1000, 800, SampleType::bytes, 1024);
  const PlaneBytes bytes = ring::bytes_in_box(luma, {}, {100, 50, 163, 81});
  EXPECT_EQ(luma.first + 49 * 1024 + 99, bytes.first);
  EXPECT_EQ(34, bytes.rows);
  EXPECT_EQ(66, bytes.bytes);
  EXPECT_EQ(1024, bytes.stride);

  const SampleSource chroma = plane_of(500, 400, SampleType::word_pairs, -4096);
  const PlaneBytes pairs = ring::bytes_in_box(chroma, PlaneGrid{1, 1, 0, 1}, {100, 50, 163, 81});
  EXPECT_EQ(chroma.first - 24 * 4096 + 49 * 4, pairs.first);
  EXPECT_EQ(18, pairs.rows);
  EXPECT_EQ(34 * 4, pairs.bytes);
  EXPECT_EQ(-4096, pairs.stride);
}

TEST(Prefetch, StaysInThePlane) {
  RandomSource random;
  for (int round = 0; round < 20000; ++round) {
    const auto type = static_cast<SampleType>(random.between(0, 3));
    const int width = random.between(1, 300), height = random.between(1, 300), unit = ring::bytes_of(type);
    const int stride = (4096 + random.between(0, 100)) * (random.between(0, 1) * 2 - 1);
    const SampleSource plane = plane_of(width, height, type, stride);
    const PlaneGrid grid{random.between(0, 1), random.between(0, 1), 0, 0};
    const auto place = [&] { return static_cast<std::int16_t>(random.between(-1000, 1000)); };
    const std::int16_t left = place(), top = place();
    const PictureBox box{left, top, static_cast<std::int16_t>(left + random.between(0, 700)),
                         static_cast<std::int16_t>(top + random.between(0, 700))};
    const PlaneBytes bytes = ring::bytes_in_box(plane, grid, box);
    const Start start = start_of(bytes, plane);
    ASSERT_GE(start.row, 0);
    ASSERT_GE(start.column, 0);
    ASSERT_GE(bytes.rows, 1);
    ASSERT_GE(bytes.bytes, unit);
    ASSERT_LE(start.row + bytes.rows, height);
    ASSERT_LE(start.column + bytes.bytes, width * unit);
  }
}

}  // namespace
}  // namespace biseam::test
