#include "stages/format/convert.hpp"

#include <gtest/gtest.h>
#include <pthread.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

#include "biseam/biseam.h"
#include "stages/format/plain_convert.hpp"

namespace biseam::test {
namespace {

TEST(ConvertDispatch, RgbToYuvCodes) {
  RandomSource random;
  std::vector<int32_t> in = random_rgb(random, 6, 4, false);
  BlendImage source = blend_image_of(in.data(), 6, 4);
  for (const int block_rows : {1, 2}) {
    YuvPlanes out{std::vector<uint8_t>(24), std::vector<uint8_t>(chroma_bytes(6, 4, block_rows))};
    ImageHeader destination = header_of(out, 6, 4, block_rows == 2 ? 0 : 4);
    const ImageHeader before = destination;
    EXPECT_EQ(0, cvt_image_format(&source, &destination, block_rows == 2 ? 0x70 : 0x74));
    EXPECT_EQ(naive_to_yuv(in, 6, 4, block_rows, 0), out);
    EXPECT_EQ(0, std::memcmp(&before, &destination, sizeof before));
  }
}

TEST(ConvertDispatch, YuvToIntegerRgbCodes) {
  RandomSource random;
  for (const int block_rows : {1, 2}) {
    YuvPlanes planes = random_yuv(random, 6, 4, block_rows);
    ImageHeader source = header_of(planes, 6, 4, 0);
    std::vector<int32_t> out(72);
    BlendImage destination = blend_image_of(out.data(), 6, 4);
    EXPECT_EQ(0, cvt_image_format(&source, &destination, block_rows == 2 ? 0x07 : 0x47));
    EXPECT_EQ(naive_to_rgb<int32_t>(planes.luma, planes.chroma, 6, 4, block_rows, 0), out);
  }
}

TEST(ConvertDispatch, ByteRgbCodesAndEveryUnknownCode) {
  RandomSource random;
  for (const int code : {1, 0, 0x17, 0x57, 0x71, 0x75, 0x27, 8, 255, -1, INT_MIN, 0x70 + 256}) {
    const int block_rows = code == 1 ? 2 : 1;
    YuvPlanes planes = random_yuv(random, 6, 4, 1);
    ImageHeader source = header_of(planes, 6, 4, 4);
    std::vector<uint8_t> out(72);
    ImageHeader destination{};
    destination.width = 6;
    destination.height = 4;
    destination.planes[0] = out.data();
    destination.strides[0] = 18;
    EXPECT_EQ(0, cvt_image_format(&source, &destination, code));
    EXPECT_EQ(naive_to_rgb<uint8_t>(planes.luma, planes.chroma, 6, 4, block_rows, 0), out) << code;
  }
}

TEST(ConvertDispatch, RecordsAreNotChanged) {
  YuvPlanes planes{std::vector<uint8_t>(24), std::vector<uint8_t>(24)};
  ImageHeader yuv = header_of(planes, 6, 4, 0);
  yuv.strides[0] = 5;  // anything the converters would overwrite in a view
  std::vector<int32_t> samples(72);
  BlendImage rgb = blend_image_of(samples.data(), 6, 2);
  const ImageHeader yuv_before = yuv;
  const BlendImage rgb_before = rgb;
  for (const int code : {0x70, 0x74}) cvt_image_format(&rgb, &yuv, code);
  for (const int code : {0x07, 0x47}) cvt_image_format(&yuv, &rgb, code);
  EXPECT_EQ(0, std::memcmp(&yuv_before, &yuv, sizeof yuv));
  EXPECT_EQ(0, std::memcmp(&rgb_before, &rgb, sizeof rgb));
}

TEST(ConvertDispatch, PlaneTwoStepsAndFormatAreNotLookedAt) {
  RandomSource random;
  YuvPlanes planes = random_yuv(random, 4, 2, 2);
  ImageHeader source = header_of(planes, 4, 2, 1);  // pairs are U, V all the same
  source.planes[2] = reinterpret_cast<uint8_t*>(1);
  for (int& step : source.steps) step = -7;
  source.strides[2] = 1 << 30;
  std::vector<int32_t> out(24);
  BlendImage destination = blend_image_of(out.data(), 4, 2);
  cvt_image_format(&source, &destination, 7);
  EXPECT_EQ(naive_to_rgb<int32_t>(planes.luma, planes.chroma, 4, 2, 2, 0), out);
}

TEST(ConvertDispatch, FourThreadsConvertFourImages) {
  RandomSource random;
  YuvPlanes planes[4];
  ImageHeader sources[4];
  std::vector<int32_t> out[4];
  BlendImage destinations[4];
  ConversionArgs args[4];
  pthread_t threads[4];
  for (int k = 0; k < 4; ++k) {
    planes[k] = random_yuv(random, 32, 16, 2);
    sources[k] = header_of(planes[k], 32, 16, 0);
    out[k].resize(3 * 32 * 16);
    destinations[k] = blend_image_of(out[k].data(), 32, 16);
    args[k] = {&sources[k], &destinations[k], 7};
    ASSERT_EQ(0, pthread_create(&threads[k], nullptr, cvt_image_format_pth, &args[k]));
  }
  for (int k = 0; k < 4; ++k) {
    void* result = &args[k];
    pthread_join(threads[k], &result);
    EXPECT_EQ(nullptr, result);
    EXPECT_EQ(naive_to_rgb<int32_t>(planes[k].luma, planes[k].chroma, 32, 16, 2, 0), out[k]);
  }
}

}  // namespace
}  // namespace biseam::test
