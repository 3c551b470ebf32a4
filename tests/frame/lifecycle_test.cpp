#include "frame/lifecycle.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "frame/plain_frame.hpp"
#include "support/captured_output.hpp"
#include "support/engine_session.hpp"
#include "support/small_config.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kMallocFail = static_cast<int32_t>(0x80000004u);

// ---- QOR_Create_BI_Soft ------------------------------------------------------------------------------------------------

struct Created {
  explicit Created(StitchConfig& config) { EXPECT_EQ(0, QOR_Create_BI_Soft(&config, &engine)); }
  Created(const Created&) = delete;
  Created& operator=(const Created&) = delete;
  ~Created() { QOR_Destroy_BI_Soft(&engine); }
  StitchEngine* engine = nullptr;
};

TEST(Create, StoresGeometryAndTheCallersConfiguration) {
  StitchConfig config = small_config();
  const Created created(config);
  const StitchEngine& e = *created.engine;
  EXPECT_EQ(&config, e.config);
  EXPECT_EQ(64, e.band_width);
  EXPECT_EQ(96, e.pair_width);
  EXPECT_EQ(136, e.left_width);
  EXPECT_EQ(272, e.middle_width);
  EXPECT_EQ(136, e.right_width);
  EXPECT_EQ(72, e.left_inner);
  EXPECT_EQ(144, e.middle_inner);
  EXPECT_EQ(72, e.right_inner);
}

TEST(Create, MemoryHasTheSizesThatAreAskedFor) {
  StitchConfig config = small_config();
  const Created created(config);
  const StitchEngine& e = *created.engine;
  EngineMemInfo info{};
  QOR_GetMemSize_BI(&config, &info);
  EXPECT_EQ(info.size, e.mem_info->size);
  EXPECT_EQ(128, e.mem_info->alignment);
  EXPECT_EQ(e.mem_info->buffer, e.map_left.entries);
  BlendConfig settings = {32, 32, 64, 240, 3, 2.0f, 1};
  BlendMemory memory{};
  GetMemSize(&settings, &memory);
  for (int k = 0; k < 2; ++k) {
    EXPECT_EQ(memory.size, e.blend_mem[k]->size);
    ASSERT_NE(nullptr, e.blend_mem[k]->base);
  }
  EXPECT_NE(e.blend_mem[0]->base, e.blend_mem[1]->base);
}

TEST(Create, WorkingMemoryIsZero) {
  StitchConfig config = small_config();
  const Created created(config);
  const uint8_t* bytes = static_cast<const uint8_t*>(created.engine->mem_info->buffer);
  for (int i = 0; i < created.engine->mem_info->size; ++i) ASSERT_EQ(0, bytes[i]);
}

TEST(Create, BlendInstancesTakeTheSettings) {
  StitchConfig config = small_config();
  const Created created(config);
  for (const BlendInstance* blend : created.engine->blend) {
    EXPECT_EQ(32, blend->trans_width);
    EXPECT_EQ(32, blend->findpath_width);
    EXPECT_EQ(64, blend->band_width);
    EXPECT_EQ(240, blend->height);
    EXPECT_EQ(96, blend->width);
    EXPECT_EQ(3, blend->pyr_level);
    EXPECT_EQ(2.0f, blend->inv_scale);
    EXPECT_EQ(1, blend->findpath_enable);
  }
  EXPECT_NE(created.engine->blend[0], created.engine->blend[1]);
}

// Refused: nothing is written to the caller's pointer, one line is printed.
void expect_malloc_fail(StitchConfig config) {
  StitchEngine* const untouched = reinterpret_cast<StitchEngine*>(0x40);
  StitchEngine* engine = untouched;
  CapturedOutput output;
  const int32_t result = QOR_Create_BI_Soft(&config, &engine);
  EXPECT_EQ("malloc fail!\n", output.text());
  EXPECT_EQ(kMallocFail, result);
  EXPECT_EQ(untouched, engine);
}

TEST(Create, TooManyLevelsCantBeCarved) {
  StitchConfig config = small_config();
  config.pyr_level = 40;
  expect_malloc_fail(config);
}

TEST(Create, SizesOutOf32BitsFail) {
  StitchConfig config = small_config();
  config.in_h = config.out_h[0] = 1 << 20;
  config.out_w[0] = 1 << 20;
  expect_malloc_fail(config);
  config = small_config();
  config.in_h = INT32_MAX;
  expect_malloc_fail(config);
  config = small_config();
  config.out_luma_stride[0] = INT32_MAX;
  expect_malloc_fail(config);
}

// Sizes whose 32-bit value is small again: 2^32 bytes and some.
TEST(Create, SizesThatWrapToSmallOnesFail) {
  StitchConfig config = small_config();
  config.out_luma_stride[0] = 17895697;  // 240 of them are 2^32 - 16
  expect_malloc_fail(config);
}

TEST(Create, NegativeSizesFail) {
  StitchConfig config = small_config();
  config.in_h = -240;
  expect_malloc_fail(config);
  config = small_config();
  config.out_w[0] = -480;
  expect_malloc_fail(config);
  config = small_config();
  config.out_chroma_stride[0] = -480;
  expect_malloc_fail(config);
}

TEST(Create, BandsWiderThanTheirStripsFail) {
  StitchConfig config = small_config();
  config.feather = 80;
  config.trans_width = 60;  // left_inner is 480 / 4 - 140
  expect_malloc_fail(config);
}

TEST(Create, BlendSettingsOutOfReasonFail) {
  for (const int levels : {-1, INT32_MAX, INT32_MIN}) {
    SCOPED_TRACE(levels);
    StitchConfig config = small_config();
    config.pyr_level = levels;
    expect_malloc_fail(config);
  }
  StitchConfig config = small_config();
  config.findpath_width = INT32_MAX;
  expect_malloc_fail(config);
  config = small_config();
  config.inv_scale = 1e-6f;
  expect_malloc_fail(config);
}

// ---- QOR_SetConfig_BI_Soft ---------------------------------------------------------------------------------------------

void expect_header(const ImageHeader& h, int width, int height, int s0, int s1, int format) {
  EXPECT_EQ(width, h.width);
  EXPECT_EQ(height, h.height);
  EXPECT_EQ(s0, h.strides[0]);
  EXPECT_EQ(s1, h.strides[1]);
  EXPECT_EQ(s1, h.strides[2]);
  EXPECT_EQ(1, h.steps[0]);
  EXPECT_EQ(2, h.steps[1]);
  EXPECT_EQ(2, h.steps[2]);
  EXPECT_EQ(format, h.format);
}

void expect_blend_image(const BlendImage& image, int width, int height) {
  EXPECT_EQ(width, image.width);
  EXPECT_EQ(height, image.height);
  EXPECT_EQ(3, image.channels);
  EXPECT_EQ(3 * width, image.stride);
  EXPECT_EQ(7, image.type);
  ASSERT_NE(nullptr, image.data[0]);
  EXPECT_EQ(image.data[0] + 1, image.data[1]);
  EXPECT_EQ(image.data[0] + 2, image.data[2]);
}

TEST(SetConfig, EveryRecordIsLaidOut) {
  StitchConfig config = small_config();
  config.in_w = 244;
  config.in_luma_stride = 250;
  config.in_chroma_stride = 252;
  config.out_luma_stride[0] = 490;
  config.out_chroma_stride[0] = 492;
  config.out_h[0] = 236;
  config.in_yuv_type = 4;
  config.out_yuv_type = 1;
  EngineSession e(config);
  EXPECT_EQ(16, e->feather);
  for (const ImageHeader& image : e->src_image) expect_header(image, 244, 240, 250, 252, 4);
  for (const ImageHeader& image : e->band_yuv) expect_header(image, 64, 240, 64, 64, 4);
  for (const BlendImage& image : e->band_rgb) expect_blend_image(image, 64, 240);
  for (const BlendImage& image : e->blend_out) expect_blend_image(image, 96, 240);
  for (const ImageHeader& image : e->blend_yuv) expect_header(image, 96, 240, 96, 96, 4);
  expect_header(e->pano, 480, 236, 490, 492, 1);
  for (const ImageHeader& image : e->reserved) {
    const ImageHeader none{};
    EXPECT_EQ(0, std::memcmp(&none, &image, sizeof none));
  }
}

// The panorama is described with the input's code first: where the output's sets no strides and steps, those stay.
TEST(SetConfig, PanoramaKeepsTheInputsLayoutUnderACodeWithoutOne) {
  for (const int format : {3, 7, 100}) {
    StitchConfig config = small_config();
    config.out_yuv_type = format;
    EngineSession e(config);
    expect_header(e->pano, 480, 240, 480, 480, format);
  }
}

TEST(SetConfig, TablesAreThoseOfTheThreeStrips) {
  StitchConfig config = small_config();
  config.lens_matrix[1] = 0.25f;
  config.p1 = 55;
  EngineSession e(config);
  const PlainFrame plain(config);
  const float* const tables[3] = {e->map_left.entries, e->map_middle.entries, e->map_right.entries};
  const int widths[3] = {136, 272, 136};
  for (int strip = 0; strip < 3; ++strip) {
    EXPECT_EQ(0, std::memcmp(plain.table(strip).data(), tables[strip], size_t(8 * widths[strip]) * 240)) << strip;
  }
}

TEST(SetConfig, ReadsTheLensAgain) {
  StitchConfig config = small_config();
  EngineSession e(config);
  config.p0 = 50;
  config.cx1 = 118;
  config.feather = 16;
  StitchEngine* engine = &*e;
  EXPECT_EQ(0, QOR_SetConfig_BI_Soft(&engine));
  const PlainFrame plain(config);
  EXPECT_EQ(0, std::memcmp(plain.table(0).data(), e->map_left.entries, 8 * 136 * 240));
  EXPECT_EQ(0, std::memcmp(plain.table(1).data(), e->map_middle.entries, 8 * 272 * 240));
}

// Tables have in_h rows; a taller panorama's rows past that are not built into the pieces behind.
TEST(SetConfig, TallPanoramaStaysInsideTheTables) {
  StitchConfig config = small_config();
  config.out_h[0] = 400;
  EngineSession e(config);
  const PlainFrame plain(config);
  EXPECT_EQ(0, std::memcmp(plain.table(0).data(), e->map_left.entries, 8 * 136 * 240));
  EXPECT_EQ(0, std::memcmp(plain.table(2).data(), e->map_right.entries, 8 * 136 * 240));
  for (int i = 0; i < 64 * 240; ++i) ASSERT_EQ(0, e->band_yuv[0].planes[0][i]);
}

// A wider table than the one carved would run into the next piece.
TEST(SetConfig, SizesChangedSinceCreateAreRefusedAndNothingIsBuilt) {
  const StitchConfig before = small_config();
  StitchConfig config = before;
  EngineSession e(config);
  StitchEngine* engine = &*e;
  const PlainFrame plain(before);
  for (int32_t StitchConfig::*field : {&StitchConfig::feather, &StitchConfig::trans_width, &StitchConfig::in_h}) {
    config = before;
    config.*field += 4;
    EXPECT_EQ(-1, QOR_SetConfig_BI_Soft(&engine));
    EXPECT_EQ(before.feather, e->feather);
    EXPECT_EQ(0, std::memcmp(plain.table(0).data(), e->map_left.entries, 8 * 136 * 240));
  }
  config = before;
  config.out_w[0] += 8;
  EXPECT_EQ(-1, QOR_SetConfig_BI_Soft(&engine));
  config = before;
  EXPECT_EQ(0, QOR_SetConfig_BI_Soft(&engine));
}

// ---- QOR_Destroy_BI_Soft -----------------------------------------------------------------------------------------------

TEST(Destroy, LeavesTheCallersPointer) {
  StitchConfig config = small_config();
  StitchEngine* engine = nullptr;
  ASSERT_EQ(0, QOR_Create_BI_Soft(&config, &engine));
  StitchEngine* const before = engine;
  EXPECT_EQ(0, QOR_Destroy_BI_Soft(&engine));
  EXPECT_EQ(before, engine);
}

}  // namespace
}  // namespace biseam::test
