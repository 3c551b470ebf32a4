#include "frame/blend/workspace.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "stages/blend/blend_fixture.hpp"

namespace biseam::test {
namespace {

struct Range {
  const uint8_t *first, *end;
};

Range memory_of(const BlendImage& image) {
  const uint8_t* const first = reinterpret_cast<const uint8_t*>(image.data[0]);
  return {first, first + int64_t{image.height} * image.stride * int64_t{sizeof(int32_t)}};
}
Range bytes_of(const ByteImage& image) { return {image.data, image.row(image.height)}; }
bool lies_in(const Range& inner, const Range& outer) {
  return !std::less<>()(inner.first, outer.first) && !std::less<>()(outer.end, inner.end);
}
bool overlap(const Range& a, const Range& b) { return std::less<>()(a.first, b.end) && std::less<>()(b.first, a.end); }

// Every view of a frame lies in the memory of the image that the table names, beside the others of the same image.
TEST(Workspace, ViewsLieInTheirImages) {
  for (const int width : {1, 2, 3, 17, 64}) {
    for (const int height : {6, 20, 33}) {
      TestInstance instance({0, 0, width, height, 3, 1, 0});
      const Workspace workspace(*instance);
      ASSERT_EQ(3, workspace.level_count());
      for (const Pyramids pyramid : {kSource1, kSource2, kMask}) {
        for (int k = 0; k <= workspace.level_count(); ++k) {
          const BlendImage& image = level_of(*instance, pyramid, k);
          const ByteImage view = workspace.level(pyramid, k);
          EXPECT_EQ(image.width, view.width);
          EXPECT_EQ(image.height, view.height);
          EXPECT_EQ(reinterpret_cast<uint8_t*>(image.data[0]), view.data);
          EXPECT_TRUE(lies_in(bytes_of(view), memory_of(image)));
        }
        const uint8_t* const sums = reinterpret_cast<const uint8_t*>(workspace.sums(pyramid));
        const ByteImage first = workspace.level(pyramid, 0);
        const Range row{sums, sums + first.row_samples() * std::ptrdiff_t{sizeof(uint16_t)}};
        EXPECT_FALSE(overlap(row, bytes_of(first))) << width << " x " << height;
        EXPECT_TRUE(lies_in(row, memory_of(instance->levels[pyramid][0]))) << width << " x " << height;
        EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(sums) % alignof(int32_t));
      }
      EXPECT_EQ(instance->levels[kBlended][0].data[0], workspace.collapse_scratch());
      EXPECT_EQ(&instance->levels[kBlended][1], &workspace.blended(1));
      EXPECT_EQ(&instance->top[kBlended], &workspace.blended(3));
    }
  }
}

TEST(SearchMemory, IsThatOfTheStripsFromAWholeLineOn) {
  TestInstance instance(blend_config(8, 16, 90, 2, 32, 2, 1));
  const SearchMemory memory = search_memory(*instance);
  EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(memory.data) % 64);
  const Range used{memory.data, memory.data + memory.bytes};
  EXPECT_TRUE(lies_in(used, {memory_of(instance->strip[0]).first, reinterpret_cast<uint8_t*>(instance->gray[0].data)}));
  for (int side = 0; side < 2; ++side) {
    EXPECT_TRUE(overlap(used, memory_of(instance->strip[side])));
    EXPECT_TRUE(overlap(used, memory_of(instance->scaled_strip[side])));
  }
}

}  // namespace
}  // namespace biseam::test
