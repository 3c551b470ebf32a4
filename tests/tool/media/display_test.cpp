#include "media/display.hpp"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/display.h>
}

#include <cstring>

#include "tool/support/clip_maker.hpp"
#include "tool/support/clip_probe.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

// What a stream's matrix makes of a display: x' = x a + y c, y' = x b + y d.
class DisplayOf : public testing::Test {
 protected:
  DisplayOf() : clip_(avformat_alloc_context()), stream_(avformat_new_stream(clip_, nullptr)) {}
  ~DisplayOf() override { avformat_free_context(clip_); }

  Display shown(double a, double b, double c, double d) {
    constexpr double kOne = 1 << 16;
    const std::int32_t matrix[9] = {
        std::int32_t(a * kOne), std::int32_t(b * kOne), 0, std::int32_t(c * kOne), std::int32_t(d * kOne), 0, 0, 0, 1 << 30};
    std::memcpy(av_stream_new_side_data(stream_, AV_PKT_DATA_DISPLAYMATRIX, sizeof matrix), matrix, sizeof matrix);
    return display_of(*clip_, *stream_);
  }

  AVFormatContext* clip_;
  AVStream* stream_;
};

TEST_F(DisplayOf, AStreamThatSaysNothingIsPlain) {
  EXPECT_TRUE(display_of(*clip_, *stream_).is_plain());
  EXPECT_TRUE(shown(1, 0, 0, 1).is_plain());
  EXPECT_TRUE(shown(0, 0, 0, 0).is_plain());
}

TEST_F(DisplayOf, QuarterTurnsAndMirrorsOfAnyScaleAreFollowed) {
  struct Case {
    double a, b, c, d;
    int turn;
    bool mirrored;
  };
  for (const Case& m : {Case{0, 1, -1, 0, 90, false},
                        {-1, 0, 0, -1, 180, false},
                        {0, -1, 1, 0, 270, false},
                        {-1, 0, 0, 1, 0, true},
                        {1, 0, 0, -1, 180, true},
                        {0, 1, 1, 0, 90, true},
                        {0, -1, -1, 0, 270, true}}) {
    for (const double scale : {1.0, 0.5, 3.0}) {
      const Display display = shown(scale * m.a, scale * m.b, scale * m.c, scale * m.d);
      EXPECT_EQ(display.turn, m.turn);
      EXPECT_EQ(display.mirrored, m.mirrored);
      EXPECT_FALSE(display.is_askew);
    }
  }
}

// A slip of a hundredth is none.
TEST_F(DisplayOf, OtherTurnsAreAskewAndNotFollowed) {
  const Display slip = shown(0.005, 1, -1, 0.005), skew = shown(0.1, 1, -1, 0.1), flat = shown(1, 0, 0, 0);
  EXPECT_EQ(slip.turn, 90);
  EXPECT_FALSE(slip.is_askew);
  for (const Display& display : {skew, flat}) {
    EXPECT_TRUE(display.is_askew);
    EXPECT_EQ(display.turn, 0);
    EXPECT_FALSE(display.mirrored);
  }
}

TEST_F(DisplayOf, ShapesOfPixelsAreReduced) {
  stream_->sample_aspect_ratio = stream_->codecpar->sample_aspect_ratio = {36, 32};
  const Display display = display_of(*clip_, *stream_);
  EXPECT_EQ(display.pixel.num, 9);
  EXPECT_EQ(display.pixel.den, 8);
  EXPECT_FALSE(display.is_plain());
}

TEST(DisplayText, TellsWhatIsDone) {
  EXPECT_EQ(display_text({}, {640, 320}), "");
  EXPECT_EQ(display_text({270, true, false, {9, 8}}, {640, 360}),
            "scaled from 640x360 to 720x360 square pixels, turned clockwise by 270 degrees, mirrored");
}

TEST(Display, SquareSizesGrowAndAreMultiplesOfFour) {
  EXPECT_EQ(square_size({1280, 720}, {1, 1}), (Size{1280, 720}));
  EXPECT_EQ(square_size({1280, 720}, {9, 8}), (Size{1440, 720}));
  EXPECT_EQ(square_size({1440, 1080}, {4, 3}), (Size{1920, 1080}));
  EXPECT_EQ(square_size({1280, 720}, {8, 9}), (Size{1280, 812}));  // 810 lies halfway
  EXPECT_EQ(square_size({720, 480}, {8, 9}), (Size{720, 540}));
  EXPECT_FALSE(square_size({1280, 720}, {1, 1000}));
}

TEST(Display, OtherTurnsAreTold) {
  const ScratchFolder folder;
  ClipSpec spec;
  std::int32_t matrix[9];
  av_display_rotation_set(matrix, 30);
  spec.display.assign(matrix, matrix + 9);
  write_clip(folder / "in.mp4", spec, walk(2));
  write_clip(folder / "plain.mp4", {}, walk(2));
  const Finished finished = stitch_clip(folder / "in.mp4", folder / "out.mp4");
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(finished.err.find("ask for a turn by no quarters, which is not done"), std::string::npos) << finished.err;
  expect_success(stitch_clip(folder / "plain.mp4", folder / "expected.mp4"), 2);
  EXPECT_EQ(raw_bytes(ClipProbe(folder / "out.mp4").pictures), raw_bytes(ClipProbe(folder / "expected.mp4").pictures));
}

}  // namespace
}  // namespace biseam::tool
