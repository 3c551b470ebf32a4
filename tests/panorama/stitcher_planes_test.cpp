// What a stitcher asks of the planes that it is given.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <span>
#include <vector>

#include "biseam/biseam.h"
#include "biseam/stitcher.hpp"
#include "panorama/fixture.hpp"

namespace biseam {
namespace {

using namespace test;

uint8_t* const kNowhere = nullptr;

TEST(Stitcher, SizesEndWithTheLastPixel) {
  StitchConfig config = valid_config();
  config.in_luma_stride = 130;
  config.in_chroma_stride = 134;
  config.out_luma_stride[0] = 300;
  config.out_chroma_stride[0] = 310;
  const StitcherSizes sizes = make(config).sizes();
  EXPECT_EQ(sizes.fisheye_luma, 127u * 130 + 128);
  EXPECT_EQ(sizes.fisheye_chroma, 63u * 134 + 128);
  EXPECT_EQ(sizes.panorama_luma, 127u * 300 + 256);
  EXPECT_EQ(sizes.panorama_chroma, 63u * 310 + 256);

  config.in_yuv_type = config.out_yuv_type = 4;
  const StitcherSizes full = make(config).sizes();
  EXPECT_EQ(full.fisheye_chroma, 127u * 134 + 128);
  EXPECT_EQ(full.panorama_chroma, 127u * 310 + 256);

  EngineMemInfo info;
  QOR_GetMemSize_BI(&config, &info);
  BlendConfig settings = {8, 16, 24, 128, 3, 2, 1};
  BlendMemory blend;
  GetMemSize(&settings, &blend);
  // Room for every piece in place of what is enough on average: 4096 bytes.
  const std::size_t pieces = 19 + 2 * (20 + 4 * 3), customary = static_cast<size_t>(info.size) + 2 * size_t{blend.size};
  EXPECT_NEAR(full.working_memory, customary - 3 * 4096 + pieces * 127, 3 * 128);
}

TEST(Stitcher, EveryShortBufferIsRefusedAndNothingIsWritten) {
  std::mt19937 random(15);
  Stitcher stitcher = make(valid_config());
  Frame frame(stitcher.sizes(), random);
  const Planes expected = stitch(stitcher, frame);
  blank(frame);
  const auto short_of = [](auto plane) { return plane.first(plane.size() - 1); };
  const std::span<const uint8_t> luma0 = frame.luma0, chroma0 = frame.chroma0, luma1 = frame.luma1, chroma1 = frame.chroma1;
  const std::span<uint8_t> luma = frame.luma, chroma = frame.chroma;
  const struct {
    Error error;
    const char* text;
  } refusals[] = {
      {stitcher.process({short_of(luma0), chroma0}, {luma1, chroma1}, {luma, chroma}),
       "lens0.luma has 16383 bytes: must be 16384 or more"},
      {stitcher.process({luma0, short_of(chroma0)}, {luma1, chroma1}, {luma, chroma}),
       "lens0.chroma has 8191 bytes: must be 8192 or more"},
      {stitcher.process({luma0, chroma0}, {short_of(luma1), chroma1}, {luma, chroma}),
       "lens1.luma has 16383 bytes: must be 16384 or more"},
      {stitcher.process({luma0, chroma0}, {luma1, short_of(chroma1)}, {luma, chroma}),
       "lens1.chroma has 8191 bytes: must be 8192 or more"},
      {stitcher.process({luma0, chroma0}, {luma1, chroma1}, {short_of(luma), chroma}),
       "panorama.luma has 32767 bytes: must be 32768 or more"},
      {stitcher.process({luma0, chroma0}, {luma1, chroma1}, {luma, short_of(chroma)}),
       "panorama.chroma has 16383 bytes: must be 16384 or more"},
      {stitcher.process({}, {}, {}), "lens0.luma has 0 bytes: must be 16384 or more"},
  };
  for (const auto& [error, text] : refusals) {
    EXPECT_EQ(error.code(), ErrorCode::buffer_too_small);
    EXPECT_STREQ(error.text(), text);
  }
  EXPECT_EQ(panorama_of(frame), (Planes{std::vector<uint8_t>(32768, 0x5a), std::vector<uint8_t>(16384, 0x5a)}));
  EXPECT_EQ(stitch(stitcher, frame), expected);
}

TEST(Stitcher, PlanesThatAreNullAreRefusedWhateverTheirSize) {
  std::mt19937 random(15);
  Stitcher stitcher = make(valid_config());
  Frame frame(stitcher.sizes(), random);
  stitch(stitcher, frame);
  const char* const texts[] = {
      "lens0.luma is null: must point to 16384 bytes or more",    "lens0.chroma is null: must point to 8192 bytes or more",
      "lens1.luma is null: must point to 16384 bytes or more",    "lens1.chroma is null: must point to 8192 bytes or more",
      "panorama.luma is null: must point to 32768 bytes or more", "panorama.chroma is null: must point to 16384 bytes or more"};
  for (int missing = 0; missing < 6; ++missing) {
    const auto plane = [&](int index, Plane& p) {
      return index == missing ? std::span<uint8_t>(kNowhere, p.size()) : std::span<uint8_t>(p);
    };
    const Error error =
        stitcher.process({plane(0, frame.luma0), plane(1, frame.chroma0)}, {plane(2, frame.luma1), plane(3, frame.chroma1)},
                         {plane(4, frame.luma), plane(5, frame.chroma)});
    EXPECT_EQ(error.code(), ErrorCode::buffer_too_small);
    EXPECT_STREQ(error.text(), texts[missing]);
  }
  EXPECT_EQ(stitcher.save_seams({{kNowhere, stitcher.seams_size()}}).code(), ErrorCode::buffer_too_small);
  EXPECT_EQ(stitcher.load_seams({{kNowhere, stitcher.seams_size()}}).code(), ErrorCode::invalid_seams);
}

TEST(Stitcher, ThereAreTwoBands) {
  std::mt19937 random(15);
  Stitcher stitcher = make(valid_config());
  Frame frame(stitcher.sizes(), random);
  stitch(stitcher, frame);
  for (const int index : {-1, 2, 1 << 30, INT32_MIN}) {
    const BandView none = stitcher.band(index);
    EXPECT_EQ(none.weights, nullptr);
    EXPECT_EQ(none.width, 0);
    EXPECT_EQ(none.height, 0);
  }
}

TEST(Stitcher, PlanesNeedNoAlignment) {
  std::mt19937 random(16);
  StitchConfig config = valid_config();
  config.out_flip[0] = config.out_mirror[0] = 1;
  Stitcher stitcher = make(config);
  Frame frame(stitcher.sizes(), random);
  const Planes expected = stitch(stitcher, frame);
  Plane luma(frame.luma.size() + 1, uint8_t{0x5a}), chroma(frame.chroma.size() + 1, uint8_t{0x5a});
  const std::span<uint8_t> odd_luma = std::span<uint8_t>(luma).subspan(1), odd_chroma = std::span<uint8_t>(chroma).subspan(1);
  const Error error = stitcher.process({frame.luma0, frame.chroma0}, {frame.luma1, frame.chroma1}, {odd_luma, odd_chroma});
  ASSERT_FALSE(error) << error.text();
  EXPECT_EQ(std::vector<uint8_t>(odd_luma.begin(), odd_luma.end()), expected[0]);
  EXPECT_EQ(std::vector<uint8_t>(odd_chroma.begin(), odd_chroma.end()), expected[1]);
}

}  // namespace
}  // namespace biseam
