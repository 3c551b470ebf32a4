#include "frame/frame.hpp"

#include <gtest/gtest.h>

#include <initializer_list>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "frame/plain_frame.hpp"
#include "support/engine_session.hpp"
#include "support/random_source.hpp"
#include "support/small_config.hpp"

namespace biseam::test {
namespace {

std::string process(EngineSession& engine, FisheyePair& fisheyes, FramePlanes& panorama) {
  return engine.process(fisheyes[0].luma.data(), fisheyes[0].chroma.data(), fisheyes[1].luma.data(), fisheyes[1].chroma.data(),
                        panorama.luma.data(), panorama.chroma.data());
}

void expect_equal(const Bytes& want, const Bytes& got, int stride, const char* plane) {
  ASSERT_EQ(want.size(), got.size());
  for (size_t i = 0; i < want.size(); ++i) {
    ASSERT_EQ(want[i], got[i]) << plane << " column " << i % size_t(stride) << " row " << i / size_t(stride);
  }
}

// Frames in a row, each the same as the plain frame's; nothing outside the panorama's columns and rows is touched.
void expect_like_plain_frame(StitchConfig config, int frames = 1) {
  RandomSource random;
  EngineSession engine(config);
  PlainFrame plain(config);
  for (int frame = 0; frame < frames; ++frame) {
    SCOPED_TRACE(frame);
    FisheyePair fisheyes = random_fisheyes(random, config);
    FramePlanes got = blank_panorama(config), want = got;
    process(engine, fisheyes, got);
    plain.process(fisheyes, want);
    expect_equal(want.luma, got.luma, config.out_luma_stride[0], "luma");
    expect_equal(want.chroma, got.chroma, config.out_chroma_stride[0], "chroma");
  }
}

TEST(Frame, ThreeFramesAlongTheSeam) { expect_like_plain_frame(small_config(), 3); }

TEST(Frame, ThreeFramesWithoutSeamSearch) {
  StitchConfig config = small_config();
  config.findpath_enable = 0;
  expect_like_plain_frame(config, 3);
}

TEST(Frame, SemiPlanar422UsesAChromaRowStepOfOne) {
  StitchConfig config = small_config();
  config.in_yuv_type = config.out_yuv_type = 4;
  expect_like_plain_frame(config, 3);
}

// With 4:2:2 every second chroma row outside the blended strips keeps what the caller's buffer held.
TEST(Frame, SemiPlanar422LeavesEverySecondChromaRow) {
  StitchConfig config = small_config();
  config.in_yuv_type = config.out_yuv_type = 4;
  RandomSource random;
  EngineSession engine(config);
  FisheyePair fisheyes = random_fisheyes(random, config);
  FramePlanes panorama = blank_panorama(config);
  process(engine, fisheyes, panorama);
  for (int x = 0; x < engine->left_inner; ++x) ASSERT_EQ(0x5A, panorama.chroma[size_t(480 + x)]);
}

// The pairs' order in V, U formats is of no concern to the stages; format 1 copies as many chroma rows as luma rows.
TEST(Frame, FormatsWithSwappedChromaPairs) {
  for (const int format : {1, 5}) {
    SCOPED_TRACE(format);
    StitchConfig config = small_config();
    config.in_yuv_type = config.out_yuv_type = format;
    expect_like_plain_frame(config, 2);
  }
}

TEST(Frame, PaddedStridesStayUntouched) {
  StitchConfig config = small_config();
  config.in_luma_stride = 251;
  config.in_chroma_stride = 262;
  config.out_luma_stride[0] = 501;
  config.out_chroma_stride[0] = 494;
  expect_like_plain_frame(config, 2);
}

TEST(Frame, FlipAndMirror) {
  for (const int format : {0, 4}) {
    for (const auto& [flip, mirror] : {std::pair{1, 0}, {0, 1}, {-3, 7}}) {
      SCOPED_TRACE(testing::Message() << format << ' ' << flip << ' ' << mirror);
      StitchConfig config = small_config();
      config.in_yuv_type = config.out_yuv_type = format;
      config.out_flip[0] = flip;
      config.out_mirror[0] = mirror;
      config.out_luma_stride[0] = 486;
      config.out_chroma_stride[0] = 490;
      expect_like_plain_frame(config);
    }
  }
}

TEST(Frame, OnlyTheFirstFlipAndMirrorEntryIsRead) {
  StitchConfig config = small_config();
  StitchConfig others = config;
  for (int i = 1; i < 4; ++i) {
    others.out_flip[i] = others.out_mirror[i] = 1;
    others.out_w[i] = others.out_h[i] = others.out_luma_stride[i] = others.out_chroma_stride[i] = -5;
  }
  RandomSource random;
  EngineSession engine(config), other_engine(others);
  FisheyePair fisheyes = random_fisheyes(random, config);
  FramePlanes a = blank_panorama(config), b = blank_panorama(config);
  process(engine, fisheyes, a);
  process(other_engine, fisheyes, b);
  EXPECT_TRUE(a == b);
}

// The order shows only where rows share bytes.  Without rows to stitch the caller's own picture is turned, on one thread.
TEST(Frame, FlipComesBeforeMirror) {
  StitchConfig config = small_config();
  config.in_h = 0;
  config.out_h[0] = 4;
  config.out_luma_stride[0] = config.out_chroma_stride[0] = 300;
  config.out_flip[0] = config.out_mirror[0] = 1;
  const size_t bytes = size_t(3 * 300 + config.out_w[0]);
  FramePlanes got{Bytes(bytes), Bytes(bytes)};
  for (size_t i = 0; i < bytes; ++i) {
    got.luma[i] = uint8_t(i * i / 7);
    got.chroma[i] = uint8_t(i * i / 11);
  }
  FramePlanes flipped_first = got, mirrored_first = got;
  ImageHeader picture{};
  picture.width = config.out_w[0];
  picture.height = 4;
  picture.strides[0] = picture.strides[1] = 300;
  const auto point_to = [&](FramePlanes& planes) {
    picture.planes[0] = planes.luma.data();
    picture.planes[1] = planes.chroma.data();
  };
  point_to(flipped_first);
  flip_image(&picture);
  mirror_image(&picture);
  point_to(mirrored_first);
  mirror_image(&picture);
  flip_image(&picture);
  ASSERT_NE(flipped_first.luma, mirrored_first.luma);
  ASSERT_NE(flipped_first.chroma, mirrored_first.chroma);

  StitchConfig sized = small_config();
  RandomSource random;
  EngineSession engine(config);
  FisheyePair fisheyes = random_fisheyes(random, sized);
  process(engine, fisheyes, got);
  EXPECT_TRUE(flipped_first == got);
}

// Flip and mirror go by the panorama's own format code; those without chroma pairs are not turned.
TEST(Frame, PanoramaFormatGovernsFlipAndMirror) {
  for (const int format : {1, 4, 7, 3}) {
    SCOPED_TRACE(format);
    StitchConfig config = small_config();
    config.out_yuv_type = format;
    config.out_flip[0] = config.out_mirror[0] = 1;
    expect_like_plain_frame(config);
  }
}

// Two halves of an odd number of rows: both have the rows at the split in hand, and the lower half's stay.
TEST(Frame, HeightsWhoseHalfIsOddAreTheSameInEveryRun) {
  for (const int height : {238, 234}) {
    for (const int format : {0, 4}) {
      SCOPED_TRACE(testing::Message() << height << ' ' << format);
      StitchConfig config = small_config();
      config.in_h = config.out_h[0] = height;
      config.in_yuv_type = config.out_yuv_type = format;
      config.cy0 = config.cy1 = static_cast<float>(height) / 2;
      config.p0 = config.p1 = 58;
      for (int run = 0; run < 3; ++run) expect_like_plain_frame(config);
    }
  }
}

TEST(Frame, OddHeights) {
  for (const int height : {237, 239}) {
    SCOPED_TRACE(height);
    StitchConfig config = small_config();
    config.in_h = config.out_h[0] = height;
    config.cy0 = config.cy1 = static_cast<float>(height) / 2;
    config.p0 = config.p1 = 58;
    expect_like_plain_frame(config, 2);
  }
}

// Rows that the tables, the bands and the panorama all have are written, no others.
TEST(Frame, PanoramaOfAnotherHeightThanTheInputIsClipped) {
  for (const int height : {200, 236, 244, 300}) {
    SCOPED_TRACE(height);
    StitchConfig config = small_config();
    config.out_h[0] = height;
    expect_like_plain_frame(config, 2);
  }
}

TEST(Frame, WidthsNotDivisibleByFourOrOdd) {
  for (const int width : {482, 486, 481, 483}) {
    SCOPED_TRACE(width);
    StitchConfig config = small_config();
    config.out_w[0] = config.out_luma_stride[0] = config.out_chroma_stride[0] = width;
    expect_like_plain_frame(config, 2);
  }
}

TEST(Frame, TurnedSecondLensWithAFocusFactor) {
  StitchConfig config = small_config();
  config.lens_matrix[0] = config.lens_matrix[4] = 0.8f;
  config.lens_matrix[1] = -0.6f;
  config.lens_matrix[3] = 0.6f;
  config.lens_matrix[2] = 1.5f;
  config.change_focus = 0.9f;
  config.cx0 = 117;
  config.cy1 = 122;
  config.p1 = 57;
  expect_like_plain_frame(config);
}

TEST(Frame, OtherBandsAndScales) {
  for (const auto& [feather, transition, path, levels, scale] : {std::tuple{8, 16, 16, 1, 1.0f},
                                                                 {16, 32, 32, 4, 3.0f},
                                                                 {4, 40, 32, 2, 1.5f},
                                                                 {12, 20, 24, 2, 4.0f},
                                                                 {15, 33, 31, 3, 2.0f},
                                                                 {0, 32, 16, 2, 2.0f}}) {
    SCOPED_TRACE(testing::Message() << feather << ' ' << transition << ' ' << path << ' ' << levels << ' ' << scale);
    StitchConfig config = small_config();
    config.feather = feather;
    config.trans_width = transition;
    config.findpath_width = path;
    config.pyr_level = levels;
    config.inv_scale = scale;
    expect_like_plain_frame(config, 2);
  }
}

// ---- Printing, frame records, degenerate frames ------------------------------------------------------------------------

bool is_time_line(const std::string& text) {
  static const std::regex line("------>QOR_Proc_BI_Soft Used Time:[0-9]+\\.[0-9]{6} ms<------\n");
  return std::regex_match(text, line);
}

TEST(Frame, TimeLineIsPrintedOncePerCall) {
  StitchConfig config = small_config();
  RandomSource random;
  EngineSession engine(config);
  FisheyePair fisheyes = random_fisheyes(random, config);
  FramePlanes panorama = blank_panorama(config);
  for (int frame = 0; frame < 3; ++frame) {
    const std::string text = process(engine, fisheyes, panorama);
    EXPECT_TRUE(is_time_line(text)) << text;
  }
}

TEST(Frame, NoRowsPrintTheTimeLineAndWriteNothing) {
  for (const auto& [in_h, out_h] : {std::pair{0, 0}, {0, 240}, {240, 0}}) {
    SCOPED_TRACE(testing::Message() << in_h << ' ' << out_h);
    StitchConfig config = small_config();
    config.in_h = in_h;
    config.out_h[0] = out_h;
    StitchConfig sized = small_config();
    RandomSource random;
    EngineSession engine(config);
    FisheyePair fisheyes = random_fisheyes(random, sized);
    FramePlanes panorama = blank_panorama(sized);
    const FramePlanes before = panorama;
    const std::string text = process(engine, fisheyes, panorama);
    EXPECT_TRUE(is_time_line(text)) << text;
    EXPECT_TRUE(before == panorama);
  }
}

TEST(Frame, PlanesArePutIntoTheEnginesRecords) {
  StitchConfig config = small_config();
  RandomSource random;
  EngineSession engine(config);
  const uint8_t* carved = engine->pano.planes[2];
  FisheyePair fisheyes = random_fisheyes(random, config);
  FramePlanes panorama = blank_panorama(config);
  process(engine, fisheyes, panorama);
  for (size_t k = 0; k < 2; ++k) {
    EXPECT_EQ(fisheyes[k].luma.data(), engine->src_image[k].planes[0]);
    EXPECT_EQ(fisheyes[k].chroma.data(), engine->src_image[k].planes[1]);
    EXPECT_EQ(fisheyes[k].chroma.data() + 1, engine->src_image[k].planes[2]);
  }
  EXPECT_EQ(panorama.luma.data(), engine->pano.planes[0]);
  EXPECT_EQ(panorama.chroma.data(), engine->pano.planes[1]);
  EXPECT_EQ(carved, engine->pano.planes[2]);
}

TEST(Frame, InputIsNotWritten) {
  StitchConfig config = small_config();
  RandomSource random;
  EngineSession engine(config);
  FisheyePair fisheyes = random_fisheyes(random, config);
  const FisheyePair before = fisheyes;
  FramePlanes panorama = blank_panorama(config);
  process(engine, fisheyes, panorama);
  EXPECT_TRUE(before == fisheyes);
}

// A frame record carries two planes a picture: planar and packed inputs have no place in it.
TEST(Frame, PlanarPanoramaPrintsTheTimeLineAndWritesNothing) {
  for (const int format : {2, 6}) {
    SCOPED_TRACE(format);
    StitchConfig config = small_config();
    config.out_yuv_type = format;
    EngineSession engine(config);
    RandomSource random;
    FisheyePair fisheyes = random_fisheyes(random, config);
    FramePlanes panorama = blank_panorama(config);
    const FramePlanes blank = panorama;
    EXPECT_NE("", process(engine, fisheyes, panorama));
    EXPECT_EQ(blank.luma, panorama.luma);
    EXPECT_EQ(blank.chroma, panorama.chroma);
  }
}

TEST(Frame, PlanarInputPrintsTheTimeLineAndWritesNothing) {
  for (const int format : {2, 3, 6, 7, 8, -1}) {
    StitchConfig config = small_config();
    config.in_yuv_type = format;
    RandomSource random;
    EngineSession engine(config);
    FisheyePair fisheyes = random_fisheyes(random, config);
    FramePlanes panorama = blank_panorama(config);
    const FramePlanes before = panorama;
    EXPECT_TRUE(is_time_line(process(engine, fisheyes, panorama))) << format;
    EXPECT_TRUE(before == panorama) << format;
  }
}

// Frames leave nothing behind but the seam weights: without the search a frame does not depend on those before.
TEST(Frame, WithoutSeamSearchFramesAreIndependent) {
  StitchConfig config = small_config();
  config.findpath_enable = 0;
  RandomSource random;
  EngineSession engine(config);
  FisheyePair first = random_fisheyes(random, config), second = random_fisheyes(random, config);
  FramePlanes a = blank_panorama(config), b = a, other = a;
  process(engine, first, a);
  process(engine, second, other);
  process(engine, first, b);
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a == other);
}

// Two engines share nothing.
TEST(Frame, EnginesDoNotDisturbEachOther) {
  StitchConfig config = small_config(), other_config = small_config();
  other_config.feather = 8;
  RandomSource random;
  FisheyePair fisheyes = random_fisheyes(random, config), others = random_fisheyes(random, config);
  FramePlanes alone = blank_panorama(config), together = alone, other = alone;
  {
    EngineSession engine(config);
    process(engine, fisheyes, alone);
  }
  EngineSession engine(config), other_engine(other_config);
  process(other_engine, others, other);
  process(engine, fisheyes, together);
  EXPECT_TRUE(alone == together);
}

}  // namespace
}  // namespace biseam::test
