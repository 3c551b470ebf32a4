#include "panorama/block_sizes.hpp"

#include <gtest/gtest.h>

#include <random>

#include "biseam/biseam.h"
#include "panorama/fixture.hpp"

namespace biseam {
namespace {

TEST(BlockSizes, follow_the_engine_within_its_rounding) {
  const unsigned seed = 20240611;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  const auto between = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
  for (int i = 0; i < 1000; ++i) {
    StitchConfig config = test::valid_config();
    config.in_h = between(1, 500) * 4;
    config.out_w[0] = between(50, 1000) * 4;
    config.out_luma_stride[0] = config.out_w[0] + between(0, 100);
    config.out_chroma_stride[0] = config.out_w[0] + between(0, 100);
    config.feather = between(0, 40);
    config.trans_width = between(0, 20) * 2;
    config.findpath_width = between(0, 100);
    config.inv_scale = static_cast<float>(between(8, 64)) / 8;
    config.pyr_level = between(1, 8);
    const double band = config.trans_width + 2 * config.feather;

    EngineMemInfo info;
    ASSERT_EQ(QOR_GetMemSize_BI(&config, &info), 0);
    EXPECT_LE(info.size, working_bytes(config));
    EXPECT_GT(info.size, working_bytes(config) - 128);

    BlendConfig blend = {config.trans_width, config.findpath_width, static_cast<int32_t>(band), config.in_h,
                         config.pyr_level,   config.inv_scale,      config.findpath_enable};
    BlendMemory memory;
    ASSERT_EQ(GetMemSize(&blend, &memory), 0);
    EXPECT_LE(memory.size, blend_bytes(config));
    EXPECT_GT(memory.size, blend_bytes(config) - 128);
  }
}

}  // namespace
}  // namespace biseam
