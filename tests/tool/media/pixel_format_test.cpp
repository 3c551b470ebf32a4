#include "media/pixel_format.hpp"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <set>

#include "tool/support/samples.hpp"

namespace biseam::tool {
namespace {

using namespace test;

std::string name_of(AVPixelFormat format) { return av_get_pix_fmt_name(format); }

std::string working_name(const char* format) { return name_of(working_format(av_get_pix_fmt(format))); }

template <class Check>
void for_each_format(Check check) {
  for (const AVPixFmtDescriptor* known = nullptr; (known = av_pix_fmt_desc_next(known)) != nullptr;) {
    SCOPED_TRACE(known->name);
    check(av_pix_fmt_desc_get_id(known), *known);
  }
}

bool is_unreadable(const AVPixFmtDescriptor& format) {
  return (format.flags & AV_PIX_FMT_FLAG_HWACCEL) != 0 || av_pix_fmt_desc_get_id(&format) == AV_PIX_FMT_UYYVYY411;
}

TEST(WorkingFormat, EveryFormatThatCanBeReadHasOne) {
  int formats = 0;
  for_each_format([&](AVPixelFormat format, const AVPixFmtDescriptor& known) {
    const AVPixelFormat working = working_format(format);
    EXPECT_EQ(working == AV_PIX_FMT_NONE, is_unreadable(known));
    if (is_unreadable(known)) return;
    ++formats;
    EXPECT_TRUE(engine_format(working));
    EXPECT_FALSE(says_full_range(working));
    EXPECT_EQ(working_format(working), working);
  });
  EXPECT_GT(formats, 180);
  EXPECT_EQ(working_format(AV_PIX_FMT_NONE), AV_PIX_FMT_NONE);
}

TEST(WorkingFormat, KeepsChromaAndUpToTwelveBits) {
  for_each_format([](AVPixelFormat format, const AVPixFmtDescriptor& known) {
    if (is_unreadable(known)) return;
    const AVPixFmtDescriptor& working = *av_pix_fmt_desc_get(working_format(format));
    int bits = 0;
    for (int k = 0; k < known.nb_components; ++k) bits = std::max(bits, known.comp[k].depth);
    if ((known.flags & AV_PIX_FMT_FLAG_BAYER) != 0) bits *= 2;  // libav's are means over the mosaic
    EXPECT_GE(working.comp[0].depth, std::min(bits, 12));
    EXPECT_EQ(working_loss(format).empty(), working.comp[0].depth >= bits) << working_loss(format);
    if (known.nb_components < 3) return;
    EXPECT_EQ(working.nb_components, 3);
    EXPECT_LE(working.log2_chroma_w, known.log2_chroma_w);
    EXPECT_LE(working.log2_chroma_h, known.log2_chroma_h);
    EXPECT_GE(working.flags & AV_PIX_FMT_FLAG_RGB, known.flags & AV_PIX_FMT_FLAG_RGB);
  });
}

TEST(WorkingFormat, IsTheNearest) {
  for (const char* same :
       {"nv12", "nv21", "nv16", "nv24", "yuv420p", "yuv422p", "yuv444p", "gray", "gbrp", "p010le", "p210le", "yuv420p10le",
        "yuv422p10le", "yuv444p10le", "gbrp10le", "yuv420p12le", "yuv422p12le", "yuv444p12le", "gbrp12le"}) {
    EXPECT_EQ(working_name(same), same);
  }
  const std::pair<const char*, const char*> others[] = {{"yuvj420p", "yuv420p"},
                                                        {"yuvj422p", "yuv422p"},
                                                        {"yuvj444p", "yuv444p"},
                                                        {"yuvj440p", "yuv444p"},
                                                        {"yuvj411p", "yuv422p"},
                                                        {"yuyv422", "yuv422p"},

                                                        {"yuv410p", "yuv420p"},
                                                        {"yuv440p10le", "yuv444p10le"},
                                                        {"yuva420p", "yuv420p"},
                                                        {"yuva444p12le", "yuv444p12le"},
                                                        {"nv42", "yuv444p"},
                                                        {"nv20le", "yuv422p10le"},
                                                        {"p016le", "yuv420p12le"},
                                                        {"p410le", "yuv444p10le"},
                                                        {"yuv422p9le", "yuv422p10le"},
                                                        {"yuv420p10be", "yuv420p10le"},
                                                        {"yuv444p16le", "yuv444p12le"},
                                                        {"rgb24", "gbrp"},
                                                        {"bgra", "gbrp"},
                                                        {"pal8", "gbrp"},
                                                        {"rgb565le", "gbrp"},
                                                        {"x2rgb10le", "gbrp10le"},
                                                        {"gbrap10le", "gbrp10le"},
                                                        {"rgb48be", "gbrp12le"},
                                                        {"rgba64be", "gbrp12le"},
                                                        {"gbrpf32le", "gbrp12le"},
                                                        {"xyz12le", "gbrp12le"},
                                                        {"bayer_rggb8", "gbrp"},
                                                        {"bayer_rggb16le", "gbrp12le"},
                                                        {"monob", "gray"},
                                                        {"ya8", "gray"},
                                                        {"gray10le", "yuv420p10le"},
                                                        {"gray12le", "yuv420p12le"},
                                                        {"gray16be", "gbrp12le"},
                                                        {"ya16be", "gbrp12le"}};
  for (const auto& [format, working] : others) EXPECT_EQ(working_name(format), working) << format;
}

TEST(WorkingFormat, TellsWhatIsLost) {
  EXPECT_EQ(working_loss(AV_PIX_FMT_RGB48BE), "its samples of 16 bits are rounded to 12");
  EXPECT_EQ(working_loss(AV_PIX_FMT_YUV420P14), "its samples of 14 bits are rounded to 12");
  EXPECT_EQ(working_loss(AV_PIX_FMT_YUVA444P12), "");
  EXPECT_EQ(working_loss(AV_PIX_FMT_NONE), "");
}

TEST(EngineFormat, TakesEachFormatOnce) {
  std::set<int> taken;
  for_each_format([&](AVPixelFormat format, const AVPixFmtDescriptor&) {
    const auto known = engine_format(format);
    if (!known || says_full_range(format)) return;
    EXPECT_TRUE(taken.insert(*known).second);
  });
  for (int format = BISEAM_NV12; format <= BISEAM_GBRP12; ++format) {
    EXPECT_EQ(taken.contains(format), format != BISEAM_P012) << format;
  }
}

TEST(EngineSiting, FollowsTheTag) {
  EXPECT_EQ(engine_siting(AVCHROMA_LOC_UNSPECIFIED), BISEAM_SITING_LEFT);
  EXPECT_EQ(engine_siting(AVCHROMA_LOC_LEFT), BISEAM_SITING_LEFT);
  EXPECT_EQ(engine_siting(AVCHROMA_LOC_BOTTOMLEFT), BISEAM_SITING_LEFT);
  EXPECT_EQ(engine_siting(AVCHROMA_LOC_CENTER), BISEAM_SITING_MIDDLE);
  EXPECT_EQ(engine_siting(AVCHROMA_LOC_TOP), BISEAM_SITING_MIDDLE);
  EXPECT_EQ(engine_siting(AVCHROMA_LOC_BOTTOM), BISEAM_SITING_MIDDLE);
  EXPECT_EQ(engine_siting(AVCHROMA_LOC_TOPLEFT), BISEAM_SITING_TOP_LEFT);
}

TEST(FullRange, IsSaidBySomeFormats) {
  EXPECT_TRUE(says_full_range(AV_PIX_FMT_YUVJ420P));
  EXPECT_TRUE(says_full_range(AV_PIX_FMT_YUVJ411P));
  EXPECT_FALSE(says_full_range(AV_PIX_FMT_YUV420P));
  EXPECT_FALSE(says_full_range(AV_PIX_FMT_NONE));
}

// The engine itself takes the records: what lies forward comes out as it went in, in every format.
TEST(EnginePicture, IsStitchedByTheEngine) {
  constexpr int kSide = 64, kWidth = 64, kHeight = 32;
  for_each_format([&](AVPixelFormat format, const AVPixFmtDescriptor& known) {
    if (working_format(format) != format) return;
    const auto value = [&](int component, int = 0, int = 0) {
      return unsigned(component + 2) << (known.comp[component].depth - 4);
    };
    const Libav<AVFrame> lens = make_frame(format, kSide, kSide), panorama = make_frame(format, kWidth, kHeight);
    lens->chroma_location = panorama->chroma_location = AVCHROMA_LOC_CENTER;
    fill(*lens, value);
    BiseamPanoramaOptions options = biseam_panorama_defaults();
    options.width = kWidth;
    options.height = kHeight;
    options.format = *engine_format(format);
    options.threads = 1;
    const BiseamCamera camera = biseam_camera_of(kSide, kSide, 200);
    BiseamError error{};
    BiseamPanorama* const engine = biseam_panorama_open(&camera, &options, &error);
    ASSERT_NE(engine, nullptr) << error.text;
    const BiseamPicture fisheyes[2] = {engine_picture(*lens), engine_picture(*lens)}, picture = engine_picture(*panorama);
    EXPECT_EQ(picture.siting, BISEAM_SITING_MIDDLE);
    EXPECT_EQ(biseam_panorama_stitch(engine, fisheyes, &picture, nullptr, &error), BISEAM_OK) << error.text;
    biseam_panorama_close(engine);
    for (int component = 0; component < known.nb_components; ++component) {
      EXPECT_EQ(get_sample(*panorama, component, 8, 8), value(component)) << component;
    }
  });
}

TEST(EnginePicture, RefusesOtherFormats) {
  AVFrame frame{};
  frame.format = AV_PIX_FMT_RGB24;
  EXPECT_THROW(engine_picture(frame), std::logic_error);
}

}  // namespace
}  // namespace biseam::tool
