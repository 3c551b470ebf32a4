#include "biseam/stitcher.hpp"

#include <gtest/gtest.h>

#include <cfenv>
#include <cstdint>
#include <ostream>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "biseam/biseam.h"
#include "panorama/fixture.hpp"
#include "support/captured_output.hpp"
#include "support/engine_session.hpp"

namespace biseam {
namespace {

using namespace test;

Planes stitch(EngineSession& engine, Frame& frame) {
  blank(frame);
  engine.process(frame.luma0.data(), frame.chroma0.data(), frame.luma1.data(), frame.chroma1.data(), frame.luma.data(),
                 frame.chroma.data());
  return panorama_of(frame);
}

struct Variant {
  const char* name;
  void (*change)(StitchConfig&);
};

// Test names hold it instead of the record's bytes.
void PrintTo(const Variant& variant, std::ostream* out) { *out << variant.name; }

const Variant kVariants[] = {
    {"plain", [](StitchConfig&) {}},
    {"format_4", [](StitchConfig& c) { c.in_yuv_type = c.out_yuv_type = 4; }},
    {"fixed_seam", [](StitchConfig& c) { c.findpath_enable = 0; }},
    {"turned", [](StitchConfig& c) { c.out_flip[0] = c.out_mirror[0] = 1; }},
    {"odd_levels",
     [](StitchConfig& c) {
       c.trans_width = 2;
       c.pyr_level = 4;
     }},
    {"unscaled_search", [](StitchConfig& c) { c.inv_scale = 1; }},
    {"least_search",
     [](StitchConfig& c) {
       c.findpath_width = 10;
       c.inv_scale = 2;
     }},
    {"no_transition", [](StitchConfig& c) { c.trans_width = 0; }},
    {"no_plain_part",
     [](StitchConfig& c) {
       c.p0 = c.p1 = 20;
       c.feather = 48;
       c.trans_width = 16;
       c.findpath_width = 96;
     }},
    {"padded",
     [](StitchConfig& c) {
       c.in_luma_stride = c.in_chroma_stride = 131;
       c.out_luma_stride[0] = 259;
       c.out_chroma_stride[0] = 262;
       c.out_flip[0] = c.out_mirror[0] = 1;
     }},
    {"padded_format_4",
     [](StitchConfig& c) {
       c.in_yuv_type = c.out_yuv_type = 4;
       c.in_luma_stride = c.in_chroma_stride = 131;
       c.out_luma_stride[0] = c.out_chroma_stride[0] = 259;
     }},
};

class EveryVariant : public testing::TestWithParam<Variant> {
 protected:
  EveryVariant() : config_(valid_config()) { GetParam().change(config_); }
  StitchConfig config_;
};

TEST_P(EveryVariant, FirstFrameEqualsTheCInterface) {
  const unsigned seed = 7;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  Stitcher stitcher = make(config_);
  EngineSession engine(config_);
  Frame frame(stitcher.sizes(), random);
  const Planes inputs = {frame.luma0.bytes(), frame.chroma0.bytes(), frame.luma1.bytes(), frame.chroma1.bytes()};
  const Planes expected = stitch(engine, frame);
  EXPECT_EQ(stitch(stitcher, frame), expected);
  EXPECT_EQ((Planes{frame.luma0.bytes(), frame.chroma0.bytes(), frame.luma1.bytes(), frame.chroma1.bytes()}), inputs);
}

TEST_P(EveryVariant, BytesBeyondTheRowsStay) {
  std::mt19937 random(8);
  Stitcher stitcher = make(config_);
  Frame frame(stitcher.sizes(), random);
  const Planes planes = stitch(stitcher, frame);
  const int strides[] = {config_.out_luma_stride[0], config_.out_chroma_stride[0]};
  for (int p = 0; p < 2; ++p) {
    for (size_t i = 0; i < planes[p].size(); ++i) {
      if (static_cast<int>(i) % strides[p] >= config_.out_w[0]) {
        ASSERT_EQ(planes[p][i], 0x5a) << "plane " << p << " byte " << i;
      }
    }
  }
}

TEST_P(EveryVariant, PrintsNothing) {
  std::mt19937 random(9);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  {
    Stitcher stitcher = make(config_);
    Frame frame(stitcher.sizes(), random);
    stitch(stitcher, frame);
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_P(EveryVariant, FreshSeamMakesEveryFrameAFirstFrame) {
  std::mt19937 random(10);
  Stitcher stitcher = make(config_);
  Frame frames[3] = {{stitcher.sizes(), random}, {stitcher.sizes(), random}, {stitcher.sizes(), random}};
  for (Frame& frame : frames) {
    // Chroma rows that 4:2:2 leaves out stay in the engine's bands, which start empty.
    EngineSession first(config_);
    EXPECT_EQ(stitch(stitcher, frame), stitch(first, frame));
  }
}

TEST_P(EveryVariant, WithoutFreshSeamFramesFollowTheCInterface) {
  std::mt19937 random(11);
  Stitcher stitcher = make(config_, {.fresh_seam = false});
  EngineSession engine(config_);
  Frame frames[3] = {{stitcher.sizes(), random}, {stitcher.sizes(), random}, {stitcher.sizes(), random}};
  for (Frame& frame : frames) EXPECT_EQ(stitch(stitcher, frame), stitch(engine, frame));
}

INSTANTIATE_TEST_SUITE_P(variants, EveryVariant, testing::ValuesIn(kVariants),
                         [](const auto& param) { return std::string(param.param.name); });

std::vector<int32_t> weights_of(const BandView& band) {
  std::vector<int32_t> weights;
  for (int y = 0; y < band.height; ++y) {
    for (int x = 0; x < band.width; ++x) weights.push_back(band.weights[y * band.stride + x * band.step]);
  }
  return weights;
}

TEST(Stitcher, OptionsOfAnotherSizeAreRefused) {
  for (const uint32_t size : {0u, uint32_t(sizeof(StitcherOptions)) - 1, uint32_t(sizeof(StitcherOptions)) + 1}) {
    const Result<Stitcher> made = Stitcher::create(valid_config(), {.size = size});
    ASSERT_FALSE(made) << size;
    EXPECT_EQ(made.error().code(), ErrorCode::invalid_configuration);
    EXPECT_EQ(made.error().text(), "options.size is " + std::to_string(size) + ": must be " +
                                       std::to_string(sizeof(StitcherOptions)) + ", as it is from the beginning");
  }
}

TEST(Stitcher, SeamsOfEarlierFramesStayOnlyWithoutFreshSeam) {
  std::mt19937 random(12);
  const StitchConfig config = valid_config();
  Stitcher fresh = make(config), kept = make(config, {.fresh_seam = false});
  Frame frames[3] = {{fresh.sizes(), random}, {fresh.sizes(), random}, {fresh.sizes(), random}};
  std::vector<int32_t> all(32 * 128);
  for (Frame& frame : frames) {
    stitch(fresh, frame);
    stitch(kept, frame);
    const std::vector<int32_t> weights = weights_of(fresh.band(0));
    for (size_t i = 0; i < all.size(); ++i) all[i] = std::max(all[i], weights[i]);
    EXPECT_EQ(weights_of(kept.band(0)), all);
  }
  EXPECT_NE(weights_of(fresh.band(0)), all) << "the frames' seams don't differ";
}

TEST(Stitcher, BandViewsShowTheWeightsOverThePanorama) {
  std::mt19937 random(13);
  StitchConfig config = valid_config();
  config.findpath_enable = 0;
  Stitcher stitcher = make(config);
  Frame frame(stitcher.sizes(), random);
  stitch(stitcher, frame);
  const int first_columns[] = {48, 176};
  for (int index = 0; index < 2; ++index) {
    const BandView band = stitcher.band(index);
    EXPECT_EQ(band.first_column, first_columns[index]);
    EXPECT_EQ(band.width, 32);
    EXPECT_EQ(band.height, 128);
    for (int y = 0; y < band.height; ++y) {
      for (int x = 0; x < band.width; ++x) {
        ASSERT_EQ(band.weights[y * band.stride + x * band.step], x < 16 ? 64 : 0) << x << "," << y;
      }
    }
  }
}

TEST(Stitcher, SearchedWeightsAreAllOrNothing) {
  std::mt19937 random(14);
  Stitcher stitcher = make(valid_config());
  Frame frame(stitcher.sizes(), random);
  stitch(stitcher, frame);
  for (int index = 0; index < 2; ++index) {
    const BandView band = stitcher.band(index);
    for (int y = 0; y < band.height; ++y) {
      for (int x = 0; x < band.width; ++x) {
        const int32_t weight = band.weights[y * band.stride + x * band.step];
        ASSERT_TRUE(weight == 0 || weight == 64);
        ASSERT_TRUE(x >= 8 || weight == 64) << "left of the overlap";
        ASSERT_TRUE(x < 24 || weight == 0) << "right of the overlap";
      }
    }
  }
}

// Blocks of the customary size have room for the alignment of their pieces on average only: these sizes find none at any base.
TEST(Stitcher, ValidConfigurationsThatCustomaryBlocksHaveNoRoomFor) {
  struct Sizes {
    int height, width, feather, trans_width, findpath_width;
    float inv_scale;
    int levels;
  };
  for (const Sizes& sizes :
       {Sizes{260, 780, 55, 36, 27, 1.75f, 7}, Sizes{268, 712, 46, 20, 33, 2.25f, 8}, Sizes{300, 644, 25, 40, 12, 2.125f, 7}}) {
    StitchConfig config = valid_config();
    config.in_h = config.in_w = config.in_luma_stride = config.in_chroma_stride = config.out_h[0] = sizes.height;
    config.out_w[0] = config.out_luma_stride[0] = config.out_chroma_stride[0] = sizes.width;
    config.cx0 = config.cx1 = config.cy0 = config.cy1 = static_cast<float>(sizes.height) / 2;
    config.feather = sizes.feather;
    config.trans_width = sizes.trans_width;
    config.findpath_width = sizes.findpath_width;
    config.inv_scale = sizes.inv_scale;
    config.pyr_level = sizes.levels;
    StitchEngine* engine = nullptr;
    {
      test::CapturedOutput output;
      EXPECT_EQ(BISEAM_MALLOC_FAIL, QOR_Create_BI_Soft(&config, &engine)) << "this shows nothing";
    }
    std::mt19937 random(22);
    Stitcher stitcher = make(config);
    Frame frame(stitcher.sizes(), random);
    stitch(stitcher, frame);
  }
}

// Whatever way the calling thread rounds, a stitcher's bytes are the same, and the thread rounds that way afterwards.
TEST(Stitcher, RoundsToTheNearestAndBack) {
  std::mt19937 random(21);
  Stitcher plain = make(valid_config());
  Frame frame(plain.sizes(), random);
  const Planes expected = stitch(plain, frame);
  for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    blank(frame);
    int after_create = -1, after_frame = -1;
    std::thread([&] {
      std::fesetround(mode);
      Result<Stitcher> made = Stitcher::create(valid_config());
      after_create = std::fegetround();
      if (made) (void)frame.stitch(*made);
      after_frame = std::fegetround();
    }).join();
    EXPECT_EQ(mode, after_create);
    EXPECT_EQ(mode, after_frame);
    EXPECT_TRUE(panorama_of(frame) == expected) << mode;
    EXPECT_EQ(FE_TONEAREST, std::fegetround());
  }
}

TEST(Stitcher, KeepsItsOwnConfiguration) {
  std::mt19937 random(17);
  StitchConfig config = valid_config();
  Stitcher first = make(config);
  Frame frame(first.sizes(), random);
  const Planes expected = stitch(first, frame);
  Stitcher second = make(config);
  std::memset(&config, 0xff, sizeof config);
  EXPECT_EQ(stitch(second, frame), expected);
}

TEST(Stitcher, MovesWithoutCopyingOrLosingItsEngine) {
  std::mt19937 random(18);
  const StitchConfig config = valid_config();
  StitchConfig other = config;
  other.out_flip[0] = 1;
  Stitcher first = make(config);
  Frame frame(first.sizes(), random);
  const Planes expected = stitch(first, frame);
  const int32_t* weights = first.band(0).weights;

  Stitcher second(std::move(first));
  EXPECT_EQ(second.band(0).weights, weights);
  EXPECT_EQ(stitch(second, frame), expected);

  Stitcher third = make(other);
  const Planes turned = stitch(third, frame);
  EXPECT_NE(turned, expected);
  third = std::move(second);
  EXPECT_EQ(third.band(0).weights, weights);
  EXPECT_EQ(stitch(third, frame), expected);

  Stitcher empty;
  empty = std::move(third);
  EXPECT_EQ(stitch(empty, frame), expected);
  Stitcher& same = empty;
  empty = std::move(same);
  EXPECT_EQ(stitch(empty, frame), expected);
}

TEST(Stitcher, ErrorIsFalseAndEmptyByDefault) {
  const Error none;
  EXPECT_FALSE(none);
  EXPECT_EQ(none.code(), ErrorCode::none);
  EXPECT_STREQ(none.text(), "");
}

// Whatever the rules and the table check let through is stitched, with planes of exactly the least sizes.
TEST(Stitcher, RandomConfigurationsAreRefusedOrSurvived) {
  const unsigned seed = 20240612;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  const auto between = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
  int survived = 0;
  for (int i = 0; i < 400; ++i) {
    StitchConfig config = valid_config(between(0, 1) * 4);
    config.in_w = between(2, 40) * 2;
    config.in_h = config.out_h[0] = between(1, 24) * 4;
    config.out_w[0] = between(1, 50) * 4;
    config.in_luma_stride = config.in_w + between(0, 3);
    config.in_chroma_stride = config.in_w + between(0, 3);
    config.out_luma_stride[0] = config.out_w[0] + between(0, 3);
    config.out_chroma_stride[0] = config.out_w[0] + between(0, 3);
    config.out_flip[0] = between(0, 1);
    config.out_mirror[0] = between(0, 1);
    config.feather = between(0, 20);
    config.trans_width = between(0, 6) * 2;
    config.findpath_width = between(0, 2 * config.feather);
    config.findpath_enable = between(0, 1);
    config.pyr_level = between(1, 5);
    config.inv_scale = static_cast<float>(between(4, 12)) / 4;
    config.p0 = config.p1 = static_cast<float>(std::min(config.in_w, config.in_h)) / static_cast<float>(between(6, 10));
    config.cx0 = config.cx1 = static_cast<float>(config.in_w - 1) / 2;
    config.cy0 = config.cy1 = static_cast<float>(config.in_h - 1) / 2;
    Result<Stitcher> made = Stitcher::create(config, {.fresh_seam = between(0, 1) == 1});
    if (!made) {
      ASSERT_NE(made.error().code(), ErrorCode::out_of_memory) << made.error().text();
      continue;
    }
    Frame frame(made->sizes(), random);
    stitch(*made, frame);
    stitch(*made, frame);
    ++survived;
  }
  EXPECT_GT(survived, 40);
}

}  // namespace
}  // namespace biseam
