#include "frame/memory.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "biseam/biseam.h"
#include "support/captured_output.hpp"
#include "support/small_config.hpp"

namespace biseam::test {
namespace {

StitchConfig example_config() {
  StitchConfig c{};
  c.in_h = 960;
  c.out_w[0] = c.out_luma_stride[0] = c.out_chroma_stride[0] = 1920;
  c.feather = 16;
  c.trans_width = 32;
  return c;
}

// ---- QOR_GetMemSize_BI -------------------------------------------------------------------------------------------------

TEST(GetMemSize, Example) {
  StitchConfig config = example_config();
  EngineMemInfo info = {-1, -1, -1, -1, &config};
  EXPECT_EQ(0, QOR_GetMemSize_BI(&config, &info));
  EXPECT_EQ(24948864, info.size);
  EXPECT_EQ(128, info.alignment);
  EXPECT_EQ(2, info.two);
  EXPECT_EQ(1, info.one);
  EXPECT_EQ(nullptr, info.buffer);
}

// Total rounded down to 128, then 128 more: a total that is a multiple grows as well.
TEST(GetMemSize, TotalsAreRoundedDownThenGrow) {
  StitchConfig config{};
  EngineMemInfo info{};
  QOR_GetMemSize_BI(&config, &info);
  EXPECT_EQ(4096 + 128, info.size);
  config.in_h = 1;
  for (int stride = 1; stride <= 256; ++stride) {
    config.out_luma_stride[0] = stride;
    QOR_GetMemSize_BI(&config, &info);
    EXPECT_EQ((4096 + stride) / 128 * 128 + 128, info.size);
  }
}

TEST(GetMemSize, NegativeTotalsAreRoundedTowardZero) {
  StitchConfig config{};
  config.in_h = 1;
  config.out_luma_stride[0] = -4096 - 300;  // total -300
  EngineMemInfo info{};
  QOR_GetMemSize_BI(&config, &info);
  EXPECT_EQ(-256 + 128, info.size);
}

TEST(GetMemSize, EveryTermOfTheFormula) {
  StitchConfig config{};
  config.in_h = 7;
  config.out_h[0] = 1000;  // not used
  config.out_w[0] = 1922;
  config.out_luma_stride[0] = 2000;
  config.out_chroma_stride[0] = 2100;
  config.feather = 5;
  config.trans_width = 9;
  const int q = 480, q3 = 1441, b = 19, p = 28;
  const int total = 7 * 4100 + 56 * b * 7 + 28 * p * 7 + 8 * 7 * ((1922 - (q3 - 5)) + (10 - q + q3) + (5 + q)) + 4096;
  EngineMemInfo info{};
  QOR_GetMemSize_BI(&config, &info);
  EXPECT_EQ(total / 128 * 128 + 128, info.size);
}

// A configuration without sense has a size without sense, but every host the same one: that of the formula, cut to 32 bits.
TEST(GetMemSize, GarbageWraps) {
  const int32_t extremes[] = {INT32_MIN, INT32_MIN + 1, -1, 0, 1, INT32_MAX - 1, INT32_MAX};
  for (const int32_t h : extremes) {
    for (const int32_t w : extremes) {
      for (const int32_t f : extremes) {
        for (const int32_t t : extremes) {
          StitchConfig config{};
          config.in_h = h;
          config.out_w[0] = w;
          config.out_luma_stride[0] = config.out_chroma_stride[0] = w;
          config.feather = f;
          config.trans_width = t;
          // Lengths fit 64 bits; what is made of them counts modulo 2^64.
          const auto u = [](int64_t length) { return static_cast<uint64_t>(length); };
          const int64_t q = w / 4, q3 = int64_t{3} * w / 4, b = t + int64_t{2} * f, p = 2 * (int64_t{t} + f);
          const int64_t columns = (w - (q3 - f)) + (int64_t{2} * f - q + q3) + (f + q);
          const uint64_t total = u(h) * (2 * u(w)) + 56 * u(b) * u(h) + 28 * u(p) * u(h) + 8 * u(h) * u(columns) + 4096;
          const int64_t wrapped = static_cast<int64_t>(total);
          const uint64_t size = static_cast<uint64_t>(wrapped / 128 * 128) + 128;
          EngineMemInfo info{};
          QOR_GetMemSize_BI(&config, &info);
          ASSERT_EQ(static_cast<int32_t>(size), info.size) << h << " " << w << " " << f << " " << t;
        }
      }
    }
  }
}

// Nothing that size can be created, whatever the size came to.
TEST(GetMemSize, GarbageIsRefusedByCreate) {
  for (const int32_t h : {INT32_MIN, -1, 1 << 30, INT32_MAX}) {
    for (const int32_t w : {INT32_MIN, -4, 1 << 30, INT32_MAX}) {
      StitchConfig config = small_config();
      config.in_h = h;
      config.out_w[0] = w;
      StitchEngine* engine = nullptr;
      CapturedOutput output;
      EXPECT_EQ(BISEAM_MALLOC_FAIL, QOR_Create_BI_Soft(&config, &engine)) << h << " " << w;
      EXPECT_EQ(nullptr, engine);
    }
  }
}

// ---- qor_mem_alloc -----------------------------------------------------------------------------------------------------

struct Carved {
  explicit Carved(StitchConfig& config, int missing_bytes = 0) {
    EXPECT_EQ(Status::ok, derive_geometry(config, engine));
    engine.config = &config;
    engine.mem_info = &info;
    QOR_GetMemSize_BI(&config, &info);
    info.size -= missing_bytes;
    block.resize(size_t(info.size));
    info.buffer = block.data();
    qor_mem_alloc(&engine);
  }
  StitchEngine engine{};
  EngineMemInfo info{};
  std::vector<uint8_t> block;
};

// The pieces in their order: address and bytes.
struct Piece {
  const void* address;
  int64_t bytes;
};

std::vector<Piece> pieces_of(const StitchEngine& e) {
  const int64_t h = e.config->in_h, band = h * e.band_width, pair = h * e.pair_width;
  std::vector<Piece> pieces = {{e.map_left.entries, 8 * h * e.left_width},
                               {e.map_middle.entries, 8 * h * e.middle_width},
                               {e.map_right.entries, 8 * h * e.right_width}};
  for (const ImageHeader& image : e.band_yuv) {
    pieces.push_back({image.planes[0], band});
    pieces.push_back({image.planes[1], band});
  }
  for (const BlendImage& image : e.band_rgb) pieces.push_back({image.data[0], 12 * band});
  for (const BlendImage& image : e.blend_out) pieces.push_back({image.data[0], 12 * pair});
  for (const ImageHeader& image : e.blend_yuv) {
    pieces.push_back({image.planes[0], pair});
    pieces.push_back({image.planes[1], pair});
  }
  pieces.push_back({e.pano.planes[0], h * e.config->out_luma_stride[0]});
  pieces.push_back({e.pano.planes[1], h * e.config->out_chroma_stride[0]});
  return pieces;
}

void expect_order(const StitchEngine& engine, const EngineMemInfo& info) {
  const uint8_t* const base = static_cast<const uint8_t*>(info.buffer);
  const uint8_t* expected = base;
  for (const Piece& piece : pieces_of(engine)) {
    ASSERT_EQ(expected, piece.address);
    ASSERT_LE(piece.bytes, base + info.size - 1 - expected);
    const uintptr_t end = reinterpret_cast<uintptr_t>(expected) + static_cast<uintptr_t>(piece.bytes);
    expected = reinterpret_cast<const uint8_t*>((end + 127) / 128 * 128);
  }
}

TEST(MemAlloc, PiecesComeInOrderAlignedTo128Bytes) {
  StitchConfig config = small_config();
  config.out_luma_stride[0] = 500;
  config.out_chroma_stride[0] = 487;
  config.feather = 15;
  config.trans_width = 33;
  const Carved carved(config);
  expect_order(carved.engine, carved.info);
}

TEST(MemAlloc, PlaneTwoFollowsPlaneOneByAByte) {
  StitchConfig config = small_config();
  const Carved carved(config);
  for (const ImageHeader& image : carved.engine.band_yuv) EXPECT_EQ(image.planes[1] + 1, image.planes[2]);
  EXPECT_EQ(carved.engine.blend_yuv[0].planes[1] + 1, carved.engine.blend_yuv[0].planes[2]);
  EXPECT_EQ(carved.engine.pano.planes[1] + 1, carved.engine.pano.planes[2]);
}

TEST(MemAlloc, PlaneTwoOfTheSecondResultAliasesTheFirstResultsChroma) {
  StitchConfig config = small_config();
  const Carved carved(config);
  EXPECT_EQ(carved.engine.blend_yuv[0].planes[1] + 1, carved.engine.blend_yuv[1].planes[2]);
}

TEST(EngineRoom, IsEnoughAtEveryBase) {
  for (const int stride : {480, 481, 512}) {
    StitchConfig config = small_config();
    config.out_luma_stride[0] = config.out_chroma_stride[0] = stride;
    config.feather = 15;
    EngineMemInfo info{};
    info.size = static_cast<int32_t>(engine_room(config));
    std::vector<uint8_t> block(static_cast<size_t>(info.size) + 256);
    uint8_t* const aligned = block.data() + (-reinterpret_cast<uintptr_t>(block.data()) & 127);
    for (int base = 0; base < 128; base += 16) {
      StitchEngine engine{};
      ASSERT_EQ(Status::ok, derive_geometry(config, engine));
      engine.config = &config;
      engine.mem_info = &info;
      info.buffer = aligned + base;
      EXPECT_EQ(Status::ok, carve_engine(engine));
      expect_order(engine, info);
    }
  }
}

TEST(MemAlloc, PiecesThatDoNotFitAreNull) {
  StitchConfig config = small_config();
  const Carved carved(config, 4096 + 480 * 240 + 200000);
  EXPECT_NE(nullptr, carved.engine.map_left.entries);
  EXPECT_EQ(nullptr, carved.engine.pano.planes[0]);
  EXPECT_EQ(nullptr, carved.engine.blend_yuv[1].planes[1]);
}

// ---- Geometry ----------------------------------------------------------------------------------------------------------

TEST(Geometry, Example) {
  StitchConfig config = example_config();
  StitchEngine e{};
  ASSERT_EQ(Status::ok, derive_geometry(config, e));
  EXPECT_EQ(64, e.band_width);
  EXPECT_EQ(96, e.pair_width);
  EXPECT_EQ(496, e.left_width);
  EXPECT_EQ(992, e.middle_width);
  EXPECT_EQ(496, e.right_width);
  EXPECT_EQ(432, e.left_inner);
  EXPECT_EQ(864, e.middle_inner);
  EXPECT_EQ(432, e.right_inner);
}

TEST(Geometry, MiddleStripAbsorbsTheRoundingOfW) {
  StitchConfig config = example_config();
  config.out_w[0] = 1922;  // seams at 480 and 1441
  StitchEngine e{};
  ASSERT_EQ(Status::ok, derive_geometry(config, e));
  EXPECT_EQ(496, e.left_width);
  EXPECT_EQ(32 - 480 + 1441, e.middle_width);
  EXPECT_EQ(1922 + 16 - 1441, e.right_width);
}

TEST(Geometry, StripsAndPairsTileThePanorama) {
  for (int width = 400; width < 440; ++width) {
    StitchConfig config = example_config();
    config.out_w[0] = width;
    config.feather = width % 7;
    config.trans_width = width % 11;
    StitchEngine e{};
    ASSERT_EQ(Status::ok, derive_geometry(config, e));
    EXPECT_EQ(width, e.left_inner + e.middle_inner + e.right_inner + 2 * e.pair_width);
    EXPECT_EQ(width / 4 - config.feather - config.trans_width, e.left_inner);
    EXPECT_EQ(3 * width / 4 - config.feather - config.trans_width, e.left_inner + e.pair_width + e.middle_inner);
  }
}

}  // namespace
}  // namespace biseam::test
