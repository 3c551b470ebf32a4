#include "media/frame_bytes.hpp"

#include <gtest/gtest.h>

#include "tool/support/samples.hpp"

namespace biseam::tool {
namespace {

using namespace test;

using Bytes = std::vector<std::uint8_t>;

// libav's rows are longer than 5 samples.
TEST(AppendFrame, PlanesFollowEachOtherWithoutPadding) {
  const Libav<AVFrame> frame = make_frame(AV_PIX_FMT_YUV420P, 5, 3);
  fill(*frame, [](int component, int x, int y) { return unsigned(100 * component + 10 * y + x); });
  ASSERT_GT(frame->linesize[0], 5);
  Bytes bytes = {7};
  append_frame(*frame, bytes);
  EXPECT_EQ(bytes, (Bytes{7,                                                                      //
                          0,   1,   2,   3,   4,   10,  11,  12,  13,  14,  20,  21, 22, 23, 24,  //
                          100, 101, 102, 110, 111, 112, 200, 201, 202, 210, 211, 212}));
}

TEST(AppendFrame, PairsOfChromaStayPairs) {
  const Libav<AVFrame> frame = make_frame(AV_PIX_FMT_NV12, 3, 2);
  fill(*frame, [](int component, int x, int y) { return unsigned(100 * component + 10 * y + x); });
  Bytes bytes;
  append_frame(*frame, bytes);
  EXPECT_EQ(bytes, (Bytes{0, 1, 2, 10, 11, 12, 100, 200, 101, 201}));
}

TEST(AppendFrame, SamplesOf16BitsHaveTheLowByteFirst) {
  const Libav<AVFrame> frame = make_frame(AV_PIX_FMT_GRAY10LE, 2, 2);
  fill(*frame, [](int, int x, int y) { return unsigned(256 * y + x + 1); });
  Bytes bytes;
  append_frame(*frame, bytes);
  EXPECT_EQ(bytes, (Bytes{1, 0, 2, 0, 1, 1, 2, 1}));
}

// The last row first, as bitmaps lie in memory.
TEST(AppendFrame, RowsMayRunUpwards) {
  const Libav<AVFrame> frame = make_frame(AV_PIX_FMT_GRAY8, 2, 3);
  fill(*frame, [](int, int x, int y) { return unsigned(10 * y + x); });
  std::uint8_t* const first = frame->data[0];
  frame->data[0] += 2 * frame->linesize[0];
  frame->linesize[0] = -frame->linesize[0];
  Bytes bytes;
  append_frame(*frame, bytes);
  frame->linesize[0] = -frame->linesize[0];
  frame->data[0] = first;
  EXPECT_EQ(bytes, (Bytes{20, 21, 10, 11, 0, 1}));
}

}  // namespace
}  // namespace biseam::tool
