#include "picture/orientation.hpp"

#include <gtest/gtest.h>

#include "tool/support/samples.hpp"

namespace biseam::tool {
namespace {

using namespace test;

// Where the sample that is to be seen at x, y lies in the stored picture of w x h.
std::pair<int, int> stored_at(int orientation, int x, int y, int w, int h) {
  switch (orientation) {
    case 2:
      return {w - 1 - x, y};
    case 3:
      return {w - 1 - x, h - 1 - y};
    case 4:
      return {x, h - 1 - y};
    case 5:
      return {y, x};
    case 6:
      return {y, h - 1 - x};
    case 7:
      return {w - 1 - y, h - 1 - x};
    case 8:
      return {w - 1 - y, x};
    default:
      return {x, y};
  }
}

class Orientation : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(Formats, Orientation,
                         testing::Values("yuv420p", "yuv444p", "gray", "gbrp", "gbrp12le", "nv12", "p010le", "yuv420p12le"),
                         [](const auto& parameter) { return std::string(parameter.param); });

TEST_P(Orientation, AllEightAreUndone) {
  for (int orientation = 1; orientation <= 8; ++orientation) {
    SCOPED_TRACE(orientation);
    const auto stored = make_frame(av_get_pix_fmt(GetParam()), 10, 6);
    fill(*stored, [](int component, int x, int y) { return unsigned(60 * component + 10 * y + x); });
    const auto seen = upright(Libav<AVFrame>(av_frame_clone(stored.get())), orientation);
    ASSERT_EQ(seen->width, orientation < 5 ? 10 : 6);
    ASSERT_EQ(seen->height, orientation < 5 ? 6 : 10);
    for (int component = 0; component < described(*seen).nb_components; ++component) {
      for (int y = 0; y < rows_of(*seen, component); ++y) {
        for (int x = 0; x < columns_of(*seen, component); ++x) {
          const auto [u, v] = stored_at(orientation, x, y, columns_of(*stored, component), rows_of(*stored, component));
          ASSERT_EQ(get_sample(*seen, component, x, y), get_sample(*stored, component, u, v))
              << component << ": " << x << ' ' << y;
        }
      }
    }
  }
}

// No format has chroma of half height alone.
TEST(OrientationOfHalfChroma, OnItsSideHasFullChroma) {
  const auto stored = make_frame(AV_PIX_FMT_YUV422P, 12, 8);
  fill(*stored, [](int component, int x, int y) { return component == 0 ? unsigned(20 * y + x) : unsigned(20 * y + 60); });
  const auto on_its_head = upright(Libav<AVFrame>(av_frame_clone(stored.get())), 3);
  EXPECT_EQ(on_its_head->format, AV_PIX_FMT_YUV422P);
  const auto seen = upright(Libav<AVFrame>(av_frame_clone(stored.get())), 6);
  ASSERT_EQ(seen->format, AV_PIX_FMT_YUV444P);
  for (int y = 0; y < 12; ++y) {
    for (int x = 0; x < 8; ++x) {
      const auto [u, v] = stored_at(6, x, y, 12, 8);
      EXPECT_EQ(get_sample(*seen, 0, x, y), get_sample(*stored, 0, u, v));
      EXPECT_EQ(get_sample(*seen, 1, x, y), get_sample(*stored, 1, u / 2, v));
    }
  }
}

}  // namespace
}  // namespace biseam::tool
