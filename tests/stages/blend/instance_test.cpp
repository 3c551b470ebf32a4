// Sizing, carving and laying out a blend instance.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "biseam/biseam.h"
#include "stages/blend/blend_fixture.hpp"
#include "stages/blend/module.hpp"

namespace biseam::test {
namespace {

uint32_t memory_size(BlendConfig config) {
  BlendMemory memory{0, &config};
  EXPECT_EQ(0, GetMemSize(&config, &memory));
  EXPECT_EQ(nullptr, memory.base);
  return memory.size;
}

uint32_t rounded(int64_t bytes) { return static_cast<uint32_t>(bytes / 128 * 128 + 128); }

TEST(GetMemSize, SumOfAllPiecesByHand) {
  // Band 96 x 960, strips 32 x 960, shrunk by 2: strips 16 x 480, seam mask 48 x 480, levels 48 x 480, 24 x 240, 12 x 120, top
  // 6 x 60.
  const int64_t pieces = 737280 + 7741440 + 307200 + 276480 + 1105920 + 276480 + 69120 + 17280 + 4096;
  const int64_t records = 4 * 4 * int64_t{sizeof(BlendImage)};  // 176 x 4 where pointers have 32 bits
  EXPECT_EQ(rounded(pieces + records), memory_size(blend_config(32, 16, 960, 4, 32, 2.0f)));
  if (sizeof(void*) == 4) {
    EXPECT_EQ(10536064u, memory_size(blend_config(32, 16, 960, 4, 32, 2.0f)));
  }
}

TEST(GetMemSize, OddSizesAndOneLevelByHand) {
  // Band 2 * (5 + 4) = 18 x 15, strips 7 x 15, shrunk by 1.5: 4 x 10 (4.67 truncated), seam mask 12 x 10, top 9 x 8.
  const int64_t pieces = 2 * 7 * 15 * 12 + 18 * 15 * 84 + 4 * 10 * 40 + 12 * 10 * 12 + 48 * 9 * 8 + 4096;
  EXPECT_EQ(rounded(pieces + 4 * int64_t{sizeof(BlendImage)}), memory_size(blend_config(5, 4, 15, 1, 7, 1.5f)));
}

TEST(GetMemSize, ShrunkSizesEqualThePlainOnesAtScale1) {
  TestInstance instance(blend_config(8, 6, 20, 2, 10, 1.0f));
  EXPECT_EQ(10, instance->scaled_findpath_width);
  EXPECT_EQ(20, instance->scaled_band_width);
  EXPECT_EQ(8, instance->scaled_trans_width);
  EXPECT_EQ(20, instance->scaled_height);
  EXPECT_EQ(28, instance->scaled_width);
  EXPECT_EQ(28, instance->width);
  EXPECT_EQ(instance->strip[0].width, instance->scaled_strip[0].width);
  EXPECT_EQ(instance->mask.width, instance->seam_mask.width);
}

TEST(GetMemSize, SizesPastTheRangeEndAtItsEnds) {
  EXPECT_EQ(0xFFFFFFFFu, memory_size(blend_config(1 << 20, 1 << 20, 1 << 20, 4)));
  EXPECT_EQ(0xFFFFFFFFu, memory_size(blend_config(INT32_MAX / 2, 0, INT32_MAX, 4)));
  EXPECT_EQ(0xFFFFFFFFu, memory_size(blend_config(8, 4, 8, INT32_MAX)));
  EXPECT_EQ(0u, memory_size(blend_config(8, 4, 8, INT32_MIN)));
}

TEST(BlendAllocBuffer, LaterPiecesStartOn128Bytes) {
  alignas(128) uint8_t block[1024];
  BlendArena arena{block + 4, block + 1023, block + 4};
  EXPECT_EQ(block + 4, BLEND_AllocBuffer(&arena, 10));  // the first piece starts at the base itself
  EXPECT_EQ(block + 128, BLEND_AllocBuffer(&arena, 128));
  EXPECT_EQ(block + 256, BLEND_AllocBuffer(&arena, 0));
  EXPECT_EQ(block + 256, BLEND_AllocBuffer(&arena, 129));
  EXPECT_EQ(block + 512, arena.current);
}

TEST(BlendAllocBuffer, PieceThatDoesNotFitChangesNothing) {
  alignas(128) uint8_t block[512];
  BlendArena arena{block, block + 511, block};
  EXPECT_EQ(nullptr, BLEND_AllocBuffer(&arena, 512));  // the distance to the last byte counts, not the size
  EXPECT_EQ(block, arena.current);
  EXPECT_EQ(block, BLEND_AllocBuffer(&arena, 511));
  EXPECT_EQ(nullptr, BLEND_AllocBuffer(&arena, 0));  // the next address lies past the last byte
  EXPECT_EQ(block + 512, arena.current);
}

// The pieces in the order in which they are carved.
std::vector<std::pair<const void*, int64_t>> pieces_of(const BlendInstance& instance) {
  std::vector<std::pair<const void*, int64_t>> pieces;
  const auto color = [&](const BlendImage& image, int64_t width, int64_t height) {
    pieces.push_back({image.data[0], width * height * 12});
  };
  const auto gray = [&](const BlendGray& image) {
    pieces.push_back({image.data, int64_t{instance.scaled_findpath_width} * instance.scaled_height * 4});
  };
  for (const BlendImage& image : instance.strip) color(image, instance.findpath_width, instance.height);
  for (const BlendImage& image : instance.scaled_strip) color(image, instance.scaled_findpath_width, instance.scaled_height);
  for (const BlendGray& image : instance.gray) gray(image);
  for (const BlendGray& image : instance.detail) gray(image);
  color(instance.seam_mask, instance.scaled_width, instance.scaled_height);
  for (const BlendImage& image : instance.band) color(image, instance.width, instance.height);
  color(instance.mask, instance.width, instance.height);
  for (const BlendImage* levels : instance.levels) {
    pieces.push_back({levels, int64_t{instance.pyr_level} * int64_t{sizeof(BlendImage)}});
  }
  int width = instance.width, height = instance.height;
  for (int k = 0; k <= instance.pyr_level; ++k) {
    for (int i = 0; i < 4; ++i) color(k < instance.pyr_level ? instance.levels[i][k] : instance.top[i], width, height);
    width = (width + 1) / 2;
    height = (height + 1) / 2;
  }
  return pieces;
}

TEST(BlendCreat, CarvesInOrderOn128ByteAddresses) {
  TestInstance instance(blend_config(9, 7, 31, 4, 11, 1.7f));
  ASSERT_EQ(0, instance.created());
  const auto pieces = pieces_of(*instance);
  ASSERT_EQ(20u + 4 * 4 + 0, pieces.size());
  uintptr_t expected = reinterpret_cast<uintptr_t>(instance.memory().base);
  for (size_t i = 0; i < pieces.size(); ++i) {
    EXPECT_EQ(expected, reinterpret_cast<uintptr_t>(pieces[i].first)) << "piece " << i;
    expected = (expected + pieces[i].second + 127) / 128 * 128;
  }
  EXPECT_LE(expected, reinterpret_cast<uintptr_t>(instance.memory().base) + instance.memory().size);
}

TEST(BlendCreat, FirstPieceStartsAtAnUnevenBaseAndTheOthersOn128Bytes) {
  BlendConfig config = blend_config(8, 4, 16, 2, 8, 2.0f);
  BlendMemory memory;
  GetMemSize(&config, &memory);
  std::vector<uint8_t> block(memory.size + 256);
  const uintptr_t aligned = (reinterpret_cast<uintptr_t>(block.data()) + 127) / 128 * 128;
  memory.base = reinterpret_cast<void*>(aligned + 8);
  BlendInstance instance;
  ASSERT_EQ(0, Blend_Creat(&config, &memory, &instance));
  EXPECT_EQ(memory.base, instance.strip[0].data[0]);
  EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(instance.strip[1].data[0]) % 128);
  for (const BlendImage* levels : instance.levels) EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(levels) % 128);
}

TEST(BlendCreat, StoresTheConfigurationAndTheDerivedSizes) {
  TestInstance instance(blend_config(9, 7, 31, 4, 11, 1.7f, 5));
  EXPECT_EQ(9, instance->trans_width);
  EXPECT_EQ(11, instance->findpath_width);
  EXPECT_EQ(23, instance->band_width);
  EXPECT_EQ(31, instance->height);
  EXPECT_EQ(32, instance->width);
  EXPECT_EQ(4, instance->pyr_level);
  EXPECT_EQ(6, instance->scaled_findpath_width);
  EXPECT_EQ(13, instance->scaled_band_width);
  EXPECT_EQ(5, instance->scaled_trans_width);
  EXPECT_EQ(18, instance->scaled_height);
  EXPECT_EQ(18, instance->scaled_width);
  EXPECT_EQ(1.7f, instance->inv_scale);
  EXPECT_EQ(5, instance->findpath_enable);
  EXPECT_EQ(&instance.config(), instance->config);
}

TEST(SetConfigBlend, DescribesEveryImageOverItsSamples) {
  TestInstance instance(blend_config(9, 7, 31, 3, 11, 1.7f));
  EXPECT_EQ(0, instance.configured());
  const auto before = pieces_of(*instance);
  EXPECT_EQ(0, SetConfig_Blend(&*instance));
  EXPECT_EQ(before, pieces_of(*instance));
  const auto expect_color = [](const BlendImage& image, int width, int height) {
    EXPECT_EQ(width, image.width);
    EXPECT_EQ(height, image.height);
    EXPECT_EQ(3, image.channels);
    EXPECT_EQ(3 * width, image.stride);
    EXPECT_EQ(BISEAM_RGB, image.type);
    for (int k = 0; k < 3; ++k) {
      EXPECT_EQ(image.data[0] + k, image.data[k]);
      EXPECT_EQ(3, image.steps[k]);
    }
  };
  const auto expect_gray = [](const BlendGray& image) {
    EXPECT_EQ(6, image.width);
    EXPECT_EQ(18, image.height);
    EXPECT_EQ(1, image.channels);
    EXPECT_EQ(6, image.stride);
    EXPECT_EQ(1, image.step);
    EXPECT_EQ(BISEAM_GRAY, image.type);
  };
  for (int i = 0; i < 2; ++i) {
    expect_color(instance->strip[i], 11, 31);
    expect_color(instance->scaled_strip[i], 6, 18);
    expect_gray(instance->gray[i]);
    expect_gray(instance->detail[i]);
    expect_color(instance->band[i], 32, 31);
  }
  expect_color(instance->seam_mask, 18, 18);
  expect_color(instance->mask, 32, 31);
  for (int i = 0; i < 4; ++i) {
    expect_color(instance->levels[i][0], 32, 31);
    expect_color(instance->levels[i][1], 16, 16);
    expect_color(instance->levels[i][2], 8, 8);
    expect_color(instance->top[i], 4, 4);
  }
}

TEST(BlendCreat, ManyLevelsUseUpTheSlackAndAreReported) {
  BlendConfig config = blend_config(8, 4, 16, 40, 8, 1.0f);
  BlendMemory memory;
  GetMemSize(&config, &memory);
  std::vector<uint8_t> block(memory.size);
  memory.base = block.data();
  BlendInstance instance;
  EXPECT_EQ(Status::no_memory, create_blend(config, memory, instance));
  EXPECT_EQ(nullptr, instance.mask.data[0]);
}

TEST(BlendRoom, IsEnoughAtEveryBase) {
  int customary_refused = 0;
  for (int levels = 1; levels <= 9; ++levels) {
    for (const BlendConfig& config : {blend_config(8, 4, 16, levels, 8, 1.0f), blend_config(20, 23, 93, levels, 33, 1.5f),
                                      blend_config(3, 2, 7, levels, 5, 3.0f)}) {
      BlendConfig settings = config;
      const int64_t room = blend_room(config);
      std::vector<uint8_t> block(static_cast<size_t>(room) + 256);
      uint8_t* const aligned = block.data() + (-reinterpret_cast<uintptr_t>(block.data()) & 127);
      for (int base = 0; base < 128; base += 16) {
        BlendInstance instance;
        EXPECT_EQ(Status::ok, create_blend(config, {static_cast<uint32_t>(room), aligned + base}, instance));
        BlendMemory customary;
        GetMemSize(&settings, &customary);
        customary.base = aligned + base;
        if (int64_t{customary.size} < room) customary_refused += create_blend(config, customary, instance) != Status::ok;
      }
    }
  }
  EXPECT_GT(customary_refused, 0) << "this test shows nothing";
}

TEST(BlendCreat, InstanceThatCouldNotBeCarvedBlendsNothing) {
  BlendConfig config = blend_config(8, 4, 16, 2, 8, 1.0f, 1);
  std::vector<uint8_t> block(1000);
  BlendMemory memory{1000, block.data()};
  BlendInstance instance;
  ASSERT_EQ(0, Blend_Creat(&config, &memory, &instance));
  EXPECT_EQ(nullptr, instance.mask.data[0]);
  EXPECT_EQ(0, SetConfig_Blend(&instance));
  TestImage source1(16, 16, 3, 9), source2(16, 16, 3, 9), output(24, 16, 3, -777);
  EXPECT_EQ(0, Blend_Proc(&instance, source1.record(), source2.record(), output.record()));
  EXPECT_EQ(TestImage(24, 16, 3, -777).samples(), output.samples());
}

TEST(BlendCreat, NullBlockIsRefused) {
  BlendConfig config = blend_config(8, 4, 16, 2);
  BlendInstance instance;
  for (uint32_t size : {0u, 1000000u}) {
    BlendMemory memory{size, nullptr};
    EXPECT_EQ(Status::no_memory, create_blend(config, memory, instance));
    EXPECT_EQ(0, Blend_Creat(&config, &memory, &instance));
    EXPECT_EQ(nullptr, instance.mask.data[0]);
  }
}

TEST(BlendCreat, SizesThatNoPieceCanHaveAreRefused) {
  const float nan = std::nanf(""), infinity = std::numeric_limits<float>::infinity();
  std::vector<uint8_t> block(1 << 20);
  for (BlendConfig config :
       {blend_config(8, 4, 16, -1), blend_config(8, 4, -16, 2), blend_config(8, 4, 16, 2, -8), blend_config(-8, 2, 16, 2),
        blend_config(8, 4, 16, 2, 8, 0.0f), blend_config(8, 4, 16, 2, 8, -1.0f), blend_config(8, 4, 16, 2, 8, 1e-30f),
        blend_config(1 << 15, 0, 1 << 15, 2), blend_config(INT32_MAX / 2, 0, INT32_MAX, 2), blend_config(8, 4, 16, INT32_MAX),
        blend_config(INT32_MAX / 2, INT32_MAX / 4, 16, 2)}) {
    BlendMemory memory{static_cast<uint32_t>(block.size()), block.data()};
    BlendInstance instance;
    EXPECT_EQ(Status::no_memory, create_blend(config, memory, instance));
    EXPECT_EQ(0, Blend_Creat(&config, &memory, &instance));
    EXPECT_EQ(nullptr, instance.mask.data[0]);
  }
  // Scales that leave nothing of the strips: the pieces are empty.
  for (float inv_scale : {1e9f, infinity, nan}) {
    TestInstance instance(blend_config(8, 4, 16, 2, 8, inv_scale));
    EXPECT_EQ(0, instance.created());
    EXPECT_EQ(0, instance->scaled_findpath_width);
    EXPECT_EQ(0, instance->scaled_height);
  }
}

}  // namespace
}  // namespace biseam::test
