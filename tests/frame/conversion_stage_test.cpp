#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "biseam/biseam.h"
#include "frame/blend/workspace.hpp"
#include "frame/stages.hpp"
#include "stages/format/convert.hpp"
#include "support/engine_session.hpp"
#include "support/random_source.hpp"
#include "support/small_config.hpp"
#include "support/test_image.hpp"

namespace biseam::test {
namespace {

// The band as the definition's image.
TestImage rgb_of(StitchEngine& engine, int band) {
  TestImage image(engine.band_width, engine.band_yuv[band].height);
  convert_image(&engine.band_yuv[band], image.record(), BISEAM_RGB | engine.band_yuv[band].format << 4);
  return image;
}

// Random samples in all four bands, then the stage.
void convert(StitchEngine& engine) {
  RandomSource random;
  for (const ImageHeader& band : engine.band_yuv) {
    const bool is_420 = band.format == BISEAM_YUV420_SEMIPLANAR;
    for (int k = 0; k < 2; ++k) {
      const int rows = k == 1 && is_420 ? band.height / 2 : band.height;
      for (int i = 0; i < band.strides[k] * rows; ++i) band.planes[k][i] = random.byte();
    }
  }
  conversion_stage(engine, plan_frame(engine));
}

// Widened, source 1 at the right and source 2 at the left.
TEST(ConversionStage, BandsBecomeBytesWhereTheirBlendStarts) {
  for (const int format : {BISEAM_YUV420_SEMIPLANAR, BISEAM_YUV422_SEMIPLANAR}) {
    StitchConfig config = small_config();
    config.in_yuv_type = config.out_yuv_type = format;
    EngineSession engine(config);
    convert(*engine);
    ASSERT_TRUE(plan_frame(*engine).by_bytes[0] && plan_frame(*engine).by_bytes[1]);
    for (int band = 0; band < 4; ++band) {
      BlendInstance& instance = *engine->blend[band / 2];
      TestImage widened(instance.width, instance.height), source = rgb_of(*engine, band);
      CreatBlend(source.record(), widened.record(), instance.trans_width, band % 2 == 0 ? 1 : 0);
      const ByteImage level = Workspace(instance).level(band % 2 == 0 ? kSource1 : kSource2, 0);
      ASSERT_EQ(instance.width, level.width);
      ASSERT_EQ(instance.height, level.height);
      EXPECT_TRUE(std::equal(widened.samples().begin(), widened.samples().end(), level.data)) << format << ", " << band;
    }
  }
}

TEST(ConversionStage, BandsThatCantGoByBytesBecomeImages) {
  StitchConfig config = small_config();
  config.pyr_level = 8;
  EngineSession engine(config);
  convert(*engine);
  ASSERT_FALSE(plan_frame(*engine).by_bytes[0] || plan_frame(*engine).by_bytes[1]);
  for (int band = 0; band < 4; ++band) {
    const BlendImage& image = engine->band_rgb[band];
    const TestImage expected = rgb_of(*engine, band);
    ASSERT_EQ(expected.samples().size(), size_t(image.stride * image.height));
    EXPECT_TRUE(std::equal(expected.samples().begin(), expected.samples().end(), image.data[0])) << band;
  }
}

}  // namespace
}  // namespace biseam::test
