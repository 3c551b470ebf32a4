#include "frame/bands/band_bytes.hpp"

#include <gtest/gtest.h>

#include "frame/blended_frames.hpp"
#include "frame/plan.hpp"
#include "support/engine_session.hpp"
#include "support/small_config.hpp"

namespace biseam::test {
namespace {

TEST(BandBytes, FramesHaveTheBytesOfWholeImages) {
  for (const int format : {BISEAM_YUV420_SEMIPLANAR, BISEAM_YUV422_SEMIPLANAR}) {
    StitchConfig config = small_config();
    config.in_yuv_type = config.out_yuv_type = format;
    EngineSession engine(config);
    Frames frames(config);
    frames.process(*engine, Weights::made);
    for (int overlap = 0; overlap < 2; ++overlap) {
      EXPECT_TRUE(plan_frame(*engine).by_bytes[overlap]);
      expect_blended_band(*engine, overlap);
    }
  }
}

}  // namespace
}  // namespace biseam::test
