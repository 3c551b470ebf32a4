#include <gtest/gtest.h>

#include <vector>

#include "frame/blended_frames.hpp"
#include "frame/stages.hpp"
#include "support/engine_session.hpp"
#include "support/small_config.hpp"

namespace biseam::test {
namespace {

// Random bands, converted.
void fill_bands(StitchEngine& engine, RandomSource& random) {
  for (const ImageHeader& band : engine.band_yuv) {
    for (int k = 0; k < 2; ++k) {
      for (int i = 0; i < band.strides[k] * (k == 0 ? band.height : band.height / 2); ++i) band.planes[k][i] = random.byte();
    }
  }
  conversion_stage(engine, plan_frame(engine));
}

std::vector<int32_t> weights_of(const StitchEngine& engine, int overlap) {
  const BlendImage& mask = engine.blend[overlap]->mask;
  return {mask.data[0], mask.data[0] + mask.stride * mask.height};
}

// What the stages would make of the same bands: their mask, and the strip under it.  As bytes and as whole images, with a
// search and cut straight.
TEST(BlendStage, MasksAndStripsAreThoseOfTheDefinition) {
  RandomSource random;
  for (const int levels : {3, 8}) {
    for (const int search : {0, 1}) {
      SCOPED_TRACE(testing::Message() << levels << " levels, search " << search);
      StitchConfig config = small_config();
      config.pyr_level = levels;
      config.findpath_enable = search;
      EngineSession engine(config), other(config);
      fill_bands(*engine, random);
      const FramePlan plan = plan_frame(*engine);
      EXPECT_EQ(levels == 3, plan.by_bytes[0]);
      ASSERT_EQ(Status::ok, blend_stage(*engine, plan, {}));
      for (int overlap = 0; overlap < 2; ++overlap) {
        TestImage sources[2] = {TestImage(engine->band_width, 240), TestImage(engine->band_width, 240)};
        const int code = BISEAM_RGB | engine->band_yuv[0].format << 4;
        for (int i = 0; i < 2; ++i) convert_image(&engine->band_yuv[2 * overlap + i], sources[i].record(), code);
        const BlendImage* const records[2] = {sources[0].record(), sources[1].record()};
        ASSERT_EQ(Status::ok, make_mask(*other->blend[overlap], records));
        EXPECT_EQ(weights_of(*other, overlap), weights_of(*engine, overlap));
        expect_blended_band(*engine, overlap);
      }
    }
  }
}

TEST(BlendStage, KeptWeightsStayAsTheyAre) {
  RandomSource random;
  StitchConfig config = small_config();
  EngineSession engine(config);
  fill_bands(*engine, random);
  const BlendImage& mask = engine->blend[1]->mask;
  for (int i = 0; i < mask.stride * mask.height; ++i) mask.data[0][i] = random.between(0, 64);
  const std::vector<int32_t> before = weights_of(*engine, 1);
  ASSERT_EQ(Status::ok, blend_stage(*engine, plan_frame(*engine), {.weights = Weights::kept}));
  EXPECT_EQ(before, weights_of(*engine, 1));
  for (int overlap = 0; overlap < 2; ++overlap) expect_blended_band(*engine, overlap);
}

TEST(BlendStage, WeightsOfAHostsOwnTakeTheWholeImages) {
  for (const int32_t weight : {65, -1, 1000000}) {
    StitchConfig config = small_config();
    EngineSession engine(config);
    Frames frames(config);
    frames.process(*engine, Weights::made);
    const BlendImage& mask = engine->blend[1]->mask;
    for (int i = 0; i < 100; ++i) mask.data[0][frames.random.between(0, mask.stride * mask.height - 1)] = weight;
    frames.process(*engine, Weights::kept);
    for (int overlap = 0; overlap < 2; ++overlap) expect_blended_band(*engine, overlap);
  }
}

}  // namespace
}  // namespace biseam::test
