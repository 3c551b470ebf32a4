#include "panorama/tables.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "biseam/stitcher.hpp"
#include "frame/lifecycle.hpp"
#include "panorama/fixture.hpp"

namespace biseam {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

void fill_with_centre(const LutBuilderArgs& args) {
  const int64_t half = args.rows / 2, first = args.part == 2 ? half : 0, end = args.part == 1 ? half : args.rows;
  for (int64_t i = 2 * args.width * first; i < 2 * args.width * end; ++i) args.map->entries[i] = 64;
}

// An engine whose tables all point to one pixel, to be changed entry by entry.  Left and right strips have 72 columns, the
// middle has 144 from panorama column 56.
class Tables : public testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    config_ = test::valid_config(GetParam());
    ASSERT_EQ(create_engine(config_, engine_), Status::ok);
    configure_engine(*engine_, fill_with_centre);
    ASSERT_FALSE(check_tables(*engine_));
  }
  void TearDown() override { destroy_engine(engine_); }

  bool holds(float u, float v, int column, int row) {
    float* entry = &engine_->map_left.entries[2 * (row * engine_->left_width + column)];
    entry[0] = u;
    entry[1] = v;
    const bool held = !check_tables(*engine_);
    entry[0] = entry[1] = 64;
    return held;
  }
  bool luma_holds(float u, float v) {
    const bool first = holds(u, v, 70, 127);
    EXPECT_EQ(first, holds(u, v, 3, 4));
    EXPECT_EQ(first, holds(u, v, 4, 3));
    return first;
  }
  bool chroma_holds(float u, float v) {
    const bool first = holds(u, v, 0, 0);
    EXPECT_EQ(first, holds(u, v, 70, 126));
    return first;
  }

  StitchConfig config_;
  StitchEngine* engine_ = nullptr;
};

TEST_P(Tables, LumaNeedsItsColumnAndTheRowBelow) {
  EXPECT_TRUE(luma_holds(0, 0));
  EXPECT_TRUE(luma_holds(-0.0f, -0.0f));
  EXPECT_TRUE(luma_holds(127, 64));
  EXPECT_TRUE(luma_holds(std::nextafter(128.0f, 0.0f), 64));
  EXPECT_FALSE(luma_holds(128, 64));
  EXPECT_TRUE(luma_holds(64, 126));
  EXPECT_TRUE(luma_holds(64, std::nextafter(127.0f, 0.0f)));
  EXPECT_FALSE(luma_holds(64, 127));
}

TEST_P(Tables, ChromaNeedsTheNextPairAndTheRowBelow) {
  EXPECT_TRUE(chroma_holds(0, 0));
  EXPECT_TRUE(chroma_holds(std::nextafter(126.0f, 0.0f), 64));
  EXPECT_FALSE(chroma_holds(126, 64));
  const float end = GetParam() == BISEAM_YUV420_SEMIPLANAR ? 126 : 127;
  EXPECT_TRUE(chroma_holds(64, std::nextafter(end, 0.0f)));
  EXPECT_FALSE(chroma_holds(64, end));
}

TEST_P(Tables, NegativeAndNotANumberAreOutside) {
  for (float wrong : {-1e-30f, -0.5f, -7.0f, -kInfinity, kInfinity, 1e30f, kNan}) {
    EXPECT_FALSE(luma_holds(wrong, 64)) << wrong;
    EXPECT_FALSE(luma_holds(64, wrong)) << wrong;
    EXPECT_FALSE(chroma_holds(wrong, 64)) << wrong;
    EXPECT_FALSE(chroma_holds(64, wrong)) << wrong;
  }
  EXPECT_FALSE(luma_holds(kNan, kNan));
}

TEST_P(Tables, Lens0IsReportedOverBothEdgeStrips) {
  engine_->map_right.entries[2 * (127 * 72 + 71)] = 1e9f;
  engine_->map_right.entries[2 * (5 * 72 + 3)] = -1.25f;
  engine_->map_right.entries[2 * (5 * 72 + 4)] = kInfinity;
  engine_->map_middle.entries[0] = 500;
  EXPECT_STREQ(check_tables(*engine_).text(),
               "lens 0: 3 table entries leave the 128x128 picture, the first at panorama column 187, row 5 (u -1.2, v 64.0): "
               "lower p0, change_focus or feather, or correct cx0, cy0");
  engine_->map_left.entries[2 * (30 * 72 + 12) + 1] = 900.1f;
  const Error error = check_tables(*engine_);
  EXPECT_EQ(error.code(), ErrorCode::outside_picture);
  EXPECT_STREQ(error.text(),
               "lens 0: 4 table entries leave the 128x128 picture, the first at panorama column 12, row 30 (u 64.0, v 900.1): "
               "lower p0, change_focus or feather, or correct cx0, cy0");
}

TEST_P(Tables, Lens1IsReportedFromTheMiddleStrip) {
  engine_->map_middle.entries[2 * (127 * 144 + 143)] = 130;
  engine_->map_middle.entries[2 * (10 * 144 + 1) + 1] = -3;
  EXPECT_STREQ(check_tables(*engine_).text(),
               "lens 1: 2 table entries leave the 128x128 picture, the first at panorama column 57, row 10 (u 64.0, v -3.0): "
               "lower p1, change_focus or feather, or correct cx1, cy1 or lens_matrix");
}

TEST_P(Tables, LongestReportIsNotCut) {
  engine_->config->in_w = 1000000000;
  engine_->map_middle.entries[2 * (127 * 144 + 143)] = -std::numeric_limits<float>::max() / 1e10f;
  const std::string text = check_tables(*engine_).text();
  EXPECT_EQ(text.substr(text.size() - 11), "lens_matrix");
}

// Lens 0 looks along panorama column 255, lens 1 along 127, both along row 63.
TEST_P(Tables, EntryWithoutDirectionOnTheAxisBecomesTheAxis) {
  engine_->config->lens_matrix[2] = 1.5f;
  engine_->config->lens_matrix[5] = -2.5f;
  float* edge = &engine_->map_right.entries[2 * (63 * 72 + 71)];
  float* middle = &engine_->map_middle.entries[2 * (63 * 144 + 71)];
  edge[0] = edge[1] = middle[0] = middle[1] = kNan;
  EXPECT_TRUE(check_tables(*engine_));
  mend_axes(*engine_);
  EXPECT_FALSE(check_tables(*engine_));
  EXPECT_EQ(edge[0], engine_->config->cx0);
  EXPECT_EQ(edge[1], engine_->config->cy0);
  EXPECT_EQ(middle[0], 1.5f + engine_->config->cx1);
  EXPECT_EQ(middle[1], -2.5f + engine_->config->cy1);
}

TEST_P(Tables, OtherEntriesOnAndOffTheAxisAreNotMended) {
  float* edge = &engine_->map_right.entries[2 * (63 * 72 + 71)];
  float* beside = &engine_->map_middle.entries[2 * (63 * 144 + 70)];
  edge[0] = 31;
  beside[0] = beside[1] = kNan;
  mend_axes(*engine_);
  EXPECT_EQ(edge[0], 31);
  EXPECT_TRUE(std::isnan(beside[0]) && std::isnan(beside[1]));
  EXPECT_TRUE(check_tables(*engine_));
}

INSTANTIATE_TEST_SUITE_P(formats, Tables, testing::Values(0, 4));

struct Rig {
  const char* name;
  int out_w, feather, trans_width, findpath_width, pyr_level;
  float inv_scale;
};

// Test names hold it instead of the record's bytes.
void PrintTo(const Rig& rig, std::ostream* out) { *out << rig.name; }

class UsualRig : public testing::TestWithParam<Rig> {};

// Square pictures filled by a circle of 195 degrees.
TEST_P(UsualRig, IsAccepted) {
  const Rig& rig = GetParam();
  const int side = rig.out_w / 2;
  for (int format : {0, 4}) {
    StitchConfig config = test::valid_config(format);
    config.in_w = config.in_h = config.out_h[0] = config.in_luma_stride = config.in_chroma_stride = side;
    config.out_w[0] = config.out_luma_stride[0] = config.out_chroma_stride[0] = rig.out_w;
    config.p0 = config.p1 = static_cast<float>(side / 2 / (97.5 * 3.14159265358979 / 180));
    config.cx0 = config.cy0 = config.cx1 = config.cy1 = static_cast<float>(side / 2);
    config.feather = rig.feather;
    config.trans_width = rig.trans_width;
    config.findpath_width = rig.findpath_width;
    config.pyr_level = rig.pyr_level;
    config.inv_scale = rig.inv_scale;
    const Result<Stitcher> made = Stitcher::create(config);
    EXPECT_TRUE(made) << made.error().text();
  }
}

INSTANTIATE_TEST_SUITE_P(rigs, UsualRig,
                         testing::Values(Rig{"full", 3840, 32, 64, 64, 5, 4}, Rig{"half", 1920, 32, 64, 64, 5, 4},
                                         Rig{"half_narrow", 1920, 16, 32, 32, 5, 4}, Rig{"small", 480, 8, 16, 16, 3, 2},
                                         Rig{"vga", 640, 8, 16, 16, 3, 2}),
                         [](const auto& param) { return param.param.name; });

// 240 x 120 with a feather of 16 has an entry on the axis of lens 1 that is no number.
TEST(TableCheck, NoDarkPixelOnTheAxis) {
  StitchConfig config = test::valid_config(0);
  config.in_w = config.in_h = config.out_h[0] = config.in_luma_stride = config.in_chroma_stride = 120;
  config.out_w[0] = config.out_luma_stride[0] = config.out_chroma_stride[0] = 240;
  config.p0 = config.p1 = 26;
  config.cx0 = config.cy0 = config.cx1 = config.cy1 = 60;
  config.feather = 16;
  config.trans_width = config.findpath_width = 16;
  config.pyr_level = 1;
  Result<Stitcher> made = Stitcher::create(config);
  ASSERT_TRUE(made) << made.error().text();
  const std::vector<uint8_t> in(120 * 120, 200);
  std::vector<uint8_t> luma(240 * 120), chroma(240 * 60);
  EXPECT_FALSE(made->process({in, in}, {in, in}, {luma, chroma}));
  EXPECT_GE(luma[59 * 240 + 119], 199);
}

TEST(TableCheck, WideLensInASmallPictureIsRefused) {
  StitchConfig config = test::valid_config();
  config.p0 = 45;
  const Result<Stitcher> lens0 = Stitcher::create(config);
  ASSERT_FALSE(lens0);
  EXPECT_EQ(lens0.error().code(), ErrorCode::outside_picture);
  EXPECT_EQ(std::string(lens0.error().text()).substr(0, 8), "lens 0: ");
  config.p0 = 33.3f;
  config.cx1 = -5;
  const Result<Stitcher> lens1 = Stitcher::create(config);
  ASSERT_FALSE(lens1);
  EXPECT_EQ(std::string(lens1.error().text()).substr(0, 8), "lens 1: ");
}

TEST(TableCheck, ScaleBeyondAFloatIsRefused) {
  StitchConfig config = test::valid_config();
  config.p0 = config.p1 = config.change_focus = 1e38f;
  const Result<Stitcher> made = Stitcher::create(config);
  ASSERT_FALSE(made);
  EXPECT_EQ(made.error().code(), ErrorCode::outside_picture);
}

}  // namespace
}  // namespace biseam
