// Pictures of clips that ask to be shown otherwise than they were recorded.
#include "media/upright.hpp"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <cmath>

#include "base/failure.hpp"
#include "support/random_source.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/clip_probe.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

// Where a recorded sample is shown: x a + y c and x b + y d, moved into the picture.
struct Matrix {
  const char* name;
  int a, b, c, d;
  std::string text;
};

// The position of chroma that no turn changes.
ClipSpec centred() {
  ClipSpec spec;
  spec.colour.siting = AVCHROMA_LOC_CENTER;
  return spec;
}

std::vector<std::int32_t> numbers(const Matrix& m) {
  constexpr int kOne = 1 << 16;
  return {m.a * kOne, m.b * kOne, 0, m.c * kOne, m.d * kOne, 0, 0, 0, 1 << 30};
}

// One plane of the recorded picture that shows the given one; samples have so many bytes.
void record_plane(const Matrix& m, const std::vector<std::uint8_t>& shown, int columns, int rows, int bytes,
                  std::vector<std::uint8_t>& recorded) {
  const bool is_across = m.a == 0;
  const int width = is_across ? rows : columns, height = is_across ? columns : rows;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const int to_x = x * m.a + y * m.c + (m.a + m.c < 0 ? columns - 1 : 0);
      const int to_y = x * m.b + y * m.d + (m.b + m.d < 0 ? rows - 1 : 0);
      for (int k = 0; k < bytes; ++k) {
        recorded[std::size_t((y * width + x) * bytes + k)] = shown[std::size_t((to_y * columns + to_x) * bytes + k)];
      }
    }
  }
}

Nv12 record(const Matrix& m, const Nv12& shown) {
  Nv12 recorded(m.a == 0 ? shown.height : shown.width, m.a == 0 ? shown.width : shown.height);
  record_plane(m, shown.luma, shown.width, shown.height, 1, recorded.luma);
  record_plane(m, shown.chroma, shown.width / 2, shown.height / 2, 2, recorded.chroma);
  return recorded;
}

class Turns : public testing::TestWithParam<Matrix> {};
INSTANTIATE_TEST_SUITE_P(Upright, Turns,
                         testing::Values(Matrix{"Clockwise", 0, 1, -1, 0, "turned clockwise by 90 degrees"},
                                         Matrix{"Half", -1, 0, 0, -1, "turned clockwise by 180 degrees"},
                                         Matrix{"Anticlockwise", 0, -1, 1, 0, "turned clockwise by 270 degrees"},
                                         Matrix{"Mirrored", -1, 0, 0, 1, "mirrored"},
                                         Matrix{"UpsideDown", 1, 0, 0, -1, "turned clockwise by 180 degrees, mirrored"},
                                         Matrix{"Transposed", 0, 1, 1, 0, "turned clockwise by 90 degrees, mirrored"},
                                         Matrix{"Antitransposed", 0, -1, -1, 0, "turned clockwise by 270 degrees, mirrored"}),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_P(Turns, OfClipsAreFollowed) {
  const ScratchFolder folder;
  ClipSpec spec = centred();
  std::vector<Nv12> recorded;
  for (const Nv12& picture : walk(3)) recorded.push_back(record(GetParam(), picture));
  spec.display = numbers(GetParam());
  write_clip(folder / "in.mp4", spec, recorded);
  write_clip(folder / "plain.mp4", centred(), walk(3));
  const Finished finished = stitch_clip(folder / "in.mp4", folder / "out.mp4");
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(finished.err.find("in.mp4: the pictures of stream 0 are " + GetParam().text + "\n"), std::string::npos)
      << finished.err;
  EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 2) << finished.err;
  expect_success(stitch_clip(folder / "plain.mp4", folder / "expected.mp4"), 3);
  const ClipProbe out(folder / "out.mp4");
  EXPECT_EQ(raw_bytes(out.pictures), raw_bytes(ClipProbe(folder / "expected.mp4").pictures));
  EXPECT_FALSE(out.has_display_matrix);
}

TEST_P(Turns, OfTheFirstPictureAreFollowed) {
  const ScratchFolder folder;
  ClipSpec spec = centred();
  spec.display = numbers(GetParam());
  write_clip(folder / "in.mp4", spec, {record(GetParam(), walk(1)[0])});
  write_clip(folder / "plain.mp4", centred(), walk(1));
  for (const char* name : {"in", "plain"}) {
    const std::string stem = folder / name;
    const Finished finished = run_stitch(with({stem + ".mp4", "-o", stem + ".png"}, known_lenses()));
    EXPECT_EQ(finished.exit_code, 0) << finished.err;
  }
  EXPECT_EQ(read_bytes(folder / "in.png"), read_bytes(folder / "plain.png"));
}

class TurnedFormats : public testing::TestWithParam<AVPixelFormat> {};
INSTANTIATE_TEST_SUITE_P(Upright, TurnedFormats,
                         testing::Values(AV_PIX_FMT_NV12, AV_PIX_FMT_P010LE, AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUV420P12LE,
                                         AV_PIX_FMT_GRAY8, AV_PIX_FMT_RGB24, AV_PIX_FMT_RGBA, AV_PIX_FMT_RGB48LE,
                                         AV_PIX_FMT_RGBA64LE, AV_PIX_FMT_YUVA420P),
                         [](const auto& parameter) { return std::string(av_get_pix_fmt_name(parameter.param)); });

unsigned sample(const AVFrame& frame, int component, int x, int y) {
  std::uint16_t value = 0;
  const std::uint8_t* data[4] = {frame.data[0], frame.data[1], frame.data[2], frame.data[3]};
  av_read_image_line(&value, data, frame.linesize, av_pix_fmt_desc_get(AVPixelFormat(frame.format)), x, y, component, 1, 0);
  return value;
}

Libav<AVFrame> random_frame(AVPixelFormat format, int width, int height) {
  Libav<AVFrame> frame(av_frame_alloc());
  frame->format = format;
  frame->width = width;
  frame->height = height;
  EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
  RandomSource random;
  for (const AVBufferRef* buffer : frame->buf) {
    for (std::size_t k = 0; buffer && k < buffer->size; ++k) buffer->data[k] = std::uint8_t(random.between(0, 255));
  }
  return frame;
}

// Clockwise by a quarter: what was below is at the left.
TEST_P(TurnedFormats, KeepAllSamples) {
  const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(GetParam());
  const Libav<AVFrame> recorded = random_frame(GetParam(), 12, 8);
  Upright upright({90, false, false, {1, 1}}, *recorded, "clip");
  const Libav<AVFrame> shown = upright.apply(*recorded);
  ASSERT_EQ(shown->width, 8);
  ASSERT_EQ(shown->height, 12);
  ASSERT_EQ(shown->format, recorded->format);
  for (int component = 0; component < format.nb_components; ++component) {
    const bool is_chroma = format.log2_chroma_w != 0 && (component == 1 || component == 2);
    const int width = is_chroma ? 4 : 8, height = is_chroma ? 6 : 12;
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        EXPECT_EQ(sample(*shown, component, x, y), sample(*recorded, component, y, width - 1 - x)) << component;
      }
    }
  }
}

TEST(Upright, ChromaStaysWhereItLies) {
  const Libav<AVFrame> recorded = random_frame(AV_PIX_FMT_YUV420P, 12, 8);
  const auto shown = [&](AVChromaLocation location, int turn, bool mirrored) {
    recorded->chroma_location = location;
    return Upright({turn, mirrored, false, {1, 1}}, *recorded, "clip").apply(*recorded)->chroma_location;
  };
  EXPECT_EQ(shown(AVCHROMA_LOC_LEFT, 90, false), AVCHROMA_LOC_TOP);
  EXPECT_EQ(shown(AVCHROMA_LOC_LEFT, 270, false), AVCHROMA_LOC_BOTTOM);
  EXPECT_EQ(shown(AVCHROMA_LOC_BOTTOM, 90, false), AVCHROMA_LOC_LEFT);
  EXPECT_EQ(shown(AVCHROMA_LOC_TOPLEFT, 270, false), AVCHROMA_LOC_BOTTOMLEFT);
  EXPECT_EQ(shown(AVCHROMA_LOC_TOPLEFT, 180, true), AVCHROMA_LOC_BOTTOMLEFT);
  EXPECT_EQ(shown(AVCHROMA_LOC_LEFT, 180, false), AVCHROMA_LOC_CENTER);
  EXPECT_EQ(shown(AVCHROMA_LOC_CENTER, 180, true), AVCHROMA_LOC_CENTER);
  EXPECT_EQ(shown(AVCHROMA_LOC_UNSPECIFIED, 90, false), AVCHROMA_LOC_UNSPECIFIED);
}

// Upside down, chroma of fewer columns than rows stays as it is.
TEST(Upright, ChromaOfFewerColumnsIsKeptWhereThePictureStaysAsWide) {
  const Libav<AVFrame> recorded = random_frame(AV_PIX_FMT_YUV422P, 12, 8);
  Upright upright({180, false, false, {1, 1}}, *recorded, "clip");
  const Libav<AVFrame> shown = upright.apply(*recorded);
  ASSERT_EQ(shown->format, AV_PIX_FMT_YUV422P);
  for (int component = 0; component < 3; ++component) {
    const int width = component == 0 ? 12 : 6;
    for (int y = 0; y < 8; ++y) {
      for (int x = 0; x < width; ++x) {
        EXPECT_EQ(sample(*shown, component, x, y), sample(*recorded, component, width - 1 - x, 7 - y)) << component;
      }
    }
  }
}

// Luma of formats whose chroma can't be turned on its side as it is.
TEST(Upright, ChromaOfFewerColumnsBecomesWhole) {
  const Libav<AVFrame> recorded = random_frame(AV_PIX_FMT_YUV422P10LE, 12, 8);
  for (int y = 0; y < 8; ++y) {
    for (int k = 0; k < 3; ++k) {
      auto* row = reinterpret_cast<std::uint16_t*>(recorded->data[k] + recorded->linesize[k] * y);
      for (int x = 0; x < (k == 0 ? 12 : 6); ++x) row[x] = k == 0 ? row[x] & 1023 : 100 * k;
    }
  }
  Upright upright({90, false, false, {1, 1}}, *recorded, "clip");
  const Libav<AVFrame> shown = upright.apply(*recorded);
  ASSERT_EQ(shown->format, AV_PIX_FMT_YUV444P10LE);
  for (int y = 0; y < 12; ++y) {
    for (int x = 0; x < 8; ++x) {
      EXPECT_EQ(sample(*shown, 0, x, y), sample(*recorded, 0, y, 7 - x));
      EXPECT_EQ(sample(*shown, 1, x, y), 100u);
      EXPECT_EQ(sample(*shown, 2, x, y), 200u);
    }
  }
}

// A ramp stays a ramp, in its range.
TEST(Upright, PixelsBecomeSquare) {
  const Libav<AVFrame> recorded = random_frame(AV_PIX_FMT_YUV420P, 640, 360);
  recorded->color_range = AVCOL_RANGE_JPEG;
  for (int k = 0; k < 3; ++k) {
    for (int y = 0; y < (k == 0 ? 360 : 180); ++y) {
      for (int x = 0; x < (k == 0 ? 640 : 320); ++x) {
        recorded->data[k][recorded->linesize[k] * y + x] = std::uint8_t(k == 0 ? x * 255 / 639 : x * 255 / 319);
      }
    }
  }
  Upright upright({0, false, false, {9, 8}}, *recorded, "clip");
  const Libav<AVFrame> shown = upright.apply(*recorded);
  ASSERT_EQ(shown->width, 720);
  ASSERT_EQ(shown->height, 360);
  for (int x = 8; x < 712; ++x) EXPECT_NEAR(sample(*shown, 0, x, 100), x * 255 / 719.0, 1.5) << x;
  for (int x = 4; x < 356; ++x) EXPECT_NEAR(sample(*shown, 1, x, 50), x * 255 / 359.0, 2) << x;
}

TEST(Upright, PixelsOfClipsBecomeSquare) {
  const ScratchFolder folder;
  ClipSpec spec;
  spec.pixel = {5, 6};
  std::vector<Nv12> recorded;
  for (const Nv12& shown : walk(2)) {
    Nv12 squeezed(240, 100);
    for (int y = 0; y < 100; ++y) {
      for (int x = 0; x < 240; ++x) {
        const double at = (y + 0.5) * 1.2 - 0.5, down = at - std::floor(at);
        const auto row = [&](int r) { return double(shown.luma[std::size_t(std::clamp(r, 0, 119) * 240 + x)]); };
        const int above = int(std::floor(at));
        squeezed.luma[std::size_t(y * 240 + x)] = std::uint8_t(row(above) * (1 - down) + row(above + 1) * down + 0.5);
      }
    }
    std::fill(squeezed.chroma.begin(), squeezed.chroma.end(), std::uint8_t(128));
    recorded.push_back(squeezed);
  }
  write_clip(folder / "in.mp4", spec, recorded);
  write_clip(folder / "plain.mp4", {}, walk(2));
  const Finished finished = stitch_clip(folder / "in.mp4", folder / "out.mp4", {"--no-search"});
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(finished.err.find("in.mp4: the pictures of stream 0 are scaled from 240x100 to 240x120 square pixels\n"),
            std::string::npos)
      << finished.err;
  expect_success(stitch_clip(folder / "plain.mp4", folder / "expected.mp4", {"--no-search"}), 2);
  const ClipProbe out(folder / "out.mp4"), expected(folder / "expected.mp4");
  ASSERT_EQ(out.pictures.size(), 2u);
  ASSERT_EQ(out.pictures[1].luma.size(), expected.pictures[1].luma.size());
  double sum = 0;
  for (std::size_t k = 0; k < out.pictures[1].luma.size(); ++k) {
    sum += std::abs(int(out.pictures[1].luma[k]) - int(expected.pictures[1].luma[k]));
  }
  EXPECT_LT(sum / double(out.pictures[1].luma.size()), 4);
  EXPECT_EQ(out.pixel.num, out.pixel.den);
}

TEST(Upright, PixelsOutOfAllProportionAreRefused) {
  const Libav<AVFrame> recorded = random_frame(AV_PIX_FMT_YUV420P, 240, 120);
  try {
    const Upright upright({0, false, false, {1, 1000}}, *recorded, "in.mp4");
    FAIL() << "taken";
  } catch (const Failure& refusal) {
    EXPECT_STREQ(refusal.what(), "in.mp4: its pixels are said to be 1:1000 as wide as high, which is too much");
  }
}

}  // namespace
}  // namespace biseam::tool
