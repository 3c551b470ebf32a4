#include "panorama/rules.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>
#include <string>

#include "biseam/stitcher.hpp"
#include "frame/memory.hpp"
#include "panorama/fixture.hpp"

namespace biseam {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr int32_t kHuge = std::numeric_limits<int32_t>::max();

struct Case {
  const char* name;
  void (*change)(StitchConfig&);
  const char* text;  // how the error's text starts; null: no error
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

std::string name_of(const testing::TestParamInfo<Case>& info) { return info.param.name; }

class BrokenRule : public testing::TestWithParam<Case> {};

TEST_P(BrokenRule, IsRefusedWithFieldValueAndRule) {
  StitchConfig config = test::valid_config();
  ASSERT_FALSE(check_rules(config));
  GetParam().change(config);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const Result<Stitcher> made = Stitcher::create(config);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  ASSERT_FALSE(made);
  EXPECT_EQ(made.error().code(), ErrorCode::invalid_configuration);
  const std::string text = made.error().text();
  EXPECT_EQ(text.substr(0, std::string(GetParam().text).size()), GetParam().text);
  EXPECT_EQ(text.find('\n'), std::string::npos);
  EXPECT_LT(text.size() + 1, static_cast<size_t>(Error::kTextSize)) << "cut short";
}

const Case kSizes[] = {
    {"in_w_zero", [](StitchConfig& c) { c.in_w = 0; }, "in_w is 0: must be even and 4 or more"},
    {"in_w_negative", [](StitchConfig& c) { c.in_w = -128; }, "in_w is -128: must be even"},
    {"in_w_without_chroma_neighbour", [](StitchConfig& c) { c.in_w = 2; }, "in_w is 2: must be even and 4 or more"},
    {"in_w_odd", [](StitchConfig& c) { c.in_w = 127; }, "in_w is 127: must be even"},
    {"in_h_zero", [](StitchConfig& c) { c.in_h = c.out_h[0] = 0; }, "in_h is 0: must be a positive multiple of 4"},
    {"in_h_negative", [](StitchConfig& c) { c.in_h = c.out_h[0] = -4; }, "in_h is -4: must be a positive multiple of 4"},
    {"in_h_odd_half", [](StitchConfig& c) { c.in_h = c.out_h[0] = 126; }, "in_h is 126: must be a positive multiple of 4"},
    {"out_h_lower", [](StitchConfig& c) { c.out_h[0] = 124; }, "out_h[0] is 124: must equal in_h, which is 128"},
    {"out_h_higher", [](StitchConfig& c) { c.out_h[0] = 132; }, "out_h[0] is 132: must equal in_h, which is 128"},
    {"out_w_zero", [](StitchConfig& c) { c.out_w[0] = 0; }, "out_w[0] is 0: must be a positive multiple of 4"},
    {"out_w_negative", [](StitchConfig& c) { c.out_w[0] = -256; }, "out_w[0] is -256: must be a positive multiple of 4"},
    {"out_w_without_quarters", [](StitchConfig& c) { c.out_w[0] = 254; }, "out_w[0] is 254: must be a positive multiple of 4"},
};
INSTANTIATE_TEST_SUITE_P(sizes, BrokenRule, testing::ValuesIn(kSizes), name_of);

const Case kFormats[] = {
    {"in_vu", [](StitchConfig& c) { c.in_yuv_type = c.out_yuv_type = 1; }, "in_yuv_type is 1: must be 0 (4:2:0) or 4 (4:2:2)"},
    {"in_planar", [](StitchConfig& c) { c.in_yuv_type = c.out_yuv_type = 2; }, "in_yuv_type is 2: must be 0"},
    {"in_none", [](StitchConfig& c) { c.in_yuv_type = c.out_yuv_type = 3; }, "in_yuv_type is 3: must be 0"},
    {"in_422_vu", [](StitchConfig& c) { c.in_yuv_type = c.out_yuv_type = 5; }, "in_yuv_type is 5: must be 0"},
    {"in_422_planar", [](StitchConfig& c) { c.in_yuv_type = c.out_yuv_type = 6; }, "in_yuv_type is 6: must be 0"},
    {"in_rgb", [](StitchConfig& c) { c.in_yuv_type = c.out_yuv_type = 7; }, "in_yuv_type is 7: must be 0"},
    {"in_negative", [](StitchConfig& c) { c.in_yuv_type = c.out_yuv_type = -1; }, "in_yuv_type is -1: must be 0"},
    {"out_differs", [](StitchConfig& c) { c.out_yuv_type = 4; }, "out_yuv_type is 4: must equal in_yuv_type, which is 0"},
    {"in_differs", [](StitchConfig& c) { c.in_yuv_type = 4; }, "out_yuv_type is 0: must equal in_yuv_type, which is 4"},
};
INSTANTIATE_TEST_SUITE_P(formats, BrokenRule, testing::ValuesIn(kFormats), name_of);

const Case kStrides[] = {
    {"in_luma", [](StitchConfig& c) { c.in_luma_stride = 127; }, "in_luma_stride is 127: must be 128 or more"},
    {"in_chroma", [](StitchConfig& c) { c.in_chroma_stride = 126; }, "in_chroma_stride is 126: must be 128 or more"},
    {"out_luma", [](StitchConfig& c) { c.out_luma_stride[0] = 255; }, "out_luma_stride[0] is 255: must be 256 or more"},
    {"out_chroma", [](StitchConfig& c) { c.out_chroma_stride[0] = 254; }, "out_chroma_stride[0] is 254: must be 256 or more"},
    {"in_luma_negative", [](StitchConfig& c) { c.in_luma_stride = -128; }, "in_luma_stride is -128: must be 128 or more"},
    {"odd_pairs_flipped",
     [](StitchConfig& c) {
       c.out_chroma_stride[0] = 257;
       c.out_flip[0] = 1;
     },
     "out_chroma_stride[0] is 257: must be even with out_flip[0] or out_mirror[0]"},
    {"odd_pairs_mirrored",
     [](StitchConfig& c) {
       c.out_chroma_stride[0] = 257;
       c.out_mirror[0] = -1;
     },
     "out_chroma_stride[0] is 257: must be even with out_flip[0] or out_mirror[0]"},
    {"in_luma_bytes", [](StitchConfig& c) { c.in_luma_stride = 1 << 24; },
     "in_luma_stride is 16777216: 128 rows take 2147483648 bytes, must be 2147483647 or less"},
    {"in_chroma_bytes", [](StitchConfig& c) { c.in_chroma_stride = 1 << 24; },
     "in_chroma_stride is 16777216: 128 rows take 2147483648 bytes, must be 2147483647 or less"},
};
INSTANTIATE_TEST_SUITE_P(strides, BrokenRule, testing::ValuesIn(kStrides), name_of);

const Case kLenses[] = {
    {"p0_zero", [](StitchConfig& c) { c.p0 = 0; }, "p0 is 0: must be finite and above 0"},
    {"p0_negative", [](StitchConfig& c) { c.p0 = -3; }, "p0 is -3: must be finite and above 0"},
    {"p0_nan", [](StitchConfig& c) { c.p0 = kNan; }, "p0 is nan: must be finite and above 0"},
    {"p0_infinite", [](StitchConfig& c) { c.p0 = kInfinity; }, "p0 is inf: must be finite and above 0"},
    {"p1_negative", [](StitchConfig& c) { c.p1 = -3; }, "p1 is -3: must be finite and above 0"},
    {"p1_nan", [](StitchConfig& c) { c.p1 = kNan; }, "p1 is nan: must be finite and above 0"},
    {"p1_zero", [](StitchConfig& c) { c.p1 = 0; }, "p1 is 0: must be finite and above 0"},
    {"p1_infinite", [](StitchConfig& c) { c.p1 = kInfinity; }, "p1 is inf: must be finite and above 0"},
    {"cx0_nan", [](StitchConfig& c) { c.cx0 = kNan; }, "cx0 is nan: must be finite"},
    {"cy0_infinite", [](StitchConfig& c) { c.cy0 = -kInfinity; }, "cy0 is -inf: must be finite"},
    {"cx1_infinite", [](StitchConfig& c) { c.cx1 = kInfinity; }, "cx1 is inf: must be finite"},
    {"cy1_nan", [](StitchConfig& c) { c.cy1 = kNan; }, "cy1 is nan: must be finite"},
    {"matrix_0", [](StitchConfig& c) { c.lens_matrix[0] = kNan; }, "lens_matrix[0] is nan: must be finite"},
    {"matrix_1", [](StitchConfig& c) { c.lens_matrix[1] = kInfinity; }, "lens_matrix[1] is inf: must be finite"},
    {"matrix_2", [](StitchConfig& c) { c.lens_matrix[2] = -kInfinity; }, "lens_matrix[2] is -inf: must be finite"},
    {"matrix_3", [](StitchConfig& c) { c.lens_matrix[3] = kNan; }, "lens_matrix[3] is nan: must be finite"},
    {"matrix_4", [](StitchConfig& c) { c.lens_matrix[4] = kNan; }, "lens_matrix[4] is nan: must be finite"},
    {"matrix_5", [](StitchConfig& c) { c.lens_matrix[5] = kNan; }, "lens_matrix[5] is nan: must be finite"},
    {"matrix_of_zeros", [](StitchConfig& c) { std::fill_n(c.lens_matrix, 9, 0.0f); },
     "lens_matrix is all zero: must turn, or be 1 on its diagonal"},
    {"matrix_of_zeros_as_far_as_it_is_read", [](StitchConfig& c) { std::fill_n(c.lens_matrix, 6, -0.0f); },
     "lens_matrix is all zero: must turn, or be 1 on its diagonal"},
    {"change_focus_zero", [](StitchConfig& c) { c.change_focus = 0; }, "change_focus is 0: must be finite and above 0"},
    {"change_focus_negative", [](StitchConfig& c) { c.change_focus = -1; }, "change_focus is -1: must be finite and above 0"},
    {"change_focus_infinite", [](StitchConfig& c) { c.change_focus = kInfinity; },
     "change_focus is inf: must be finite and above 0"},
    {"change_focus_nan", [](StitchConfig& c) { c.change_focus = kNan; }, "change_focus is nan: must be finite and above 0"},
};
INSTANTIATE_TEST_SUITE_P(lenses, BrokenRule, testing::ValuesIn(kLenses), name_of);

const Case kOverlap[] = {
    {"feather_negative", [](StitchConfig& c) { c.feather = -3; }, "feather is -3: must be 0 or more"},
    {"trans_width_negative", [](StitchConfig& c) { c.trans_width = -2; }, "trans_width is -2: must be even and 0 or more"},
    {"band_width_odd", [](StitchConfig& c) { c.trans_width = 9; }, "trans_width is 9: must be even and 0 or more"},
    {"no_overlap",
     [](StitchConfig& c) {
       c.feather = 0;
       c.trans_width = 0;
     },
     "feather is 0: must be 1 or more when trans_width is 0"},
    {"inner_odd", [](StitchConfig& c) { c.feather = 9; },
     "feather is 9, trans_width is 8: the inner width out_w[0] / 4 - feather - trans_width is 47, must be even and 0 or more"},
    {"inner_odd_by_quarter", [](StitchConfig& c) { c.out_w[0] = 252; },
     "feather is 8, trans_width is 8: the inner width out_w[0] / 4 - feather - trans_width is 47, must be even"},
    {"inner_negative", [](StitchConfig& c) { c.feather = 58; },
     "feather is 58, trans_width is 8: the inner width out_w[0] / 4 - feather - trans_width is -2, must be even and 0 or more"},
    {"inner_out_of_32_bits",
     [](StitchConfig& c) {
       c.feather = kHuge;
       c.trans_width = kHuge - 1;
     },
     "feather is 2147483647, trans_width is 2147483646: the inner width out_w[0] / 4 - feather - trans_width is -4294967229,"},
};
INSTANTIATE_TEST_SUITE_P(overlap, BrokenRule, testing::ValuesIn(kOverlap), name_of);

const Case kSearch[] = {
    {"findpath_width_negative", [](StitchConfig& c) { c.findpath_width = -1; }, "findpath_width is -1: must be 0 or more"},
    {"findpath_width_negative_without_search",
     [](StitchConfig& c) {
       c.findpath_width = -16;
       c.findpath_enable = 0;
     },
     "findpath_width is -16: must be 0 or more"},
    {"findpath_width_above_overlap", [](StitchConfig& c) { c.findpath_width = 17; },
     "findpath_width is 17: must be 2 x feather, 16, or less"},
    {"any_enable_searches",
     [](StitchConfig& c) {
       c.findpath_width = 17;
       c.findpath_enable = -7;
     },
     "findpath_width is 17: must be 2 x feather, 16, or less"},
    {"inv_scale_below_1", [](StitchConfig& c) { c.inv_scale = 0.5f; }, "inv_scale is 0.5: must be finite and 1 or more"},
    {"inv_scale_zero", [](StitchConfig& c) { c.inv_scale = 0; }, "inv_scale is 0: must be finite and 1 or more"},
    {"inv_scale_zero_without_search",
     [](StitchConfig& c) {
       c.inv_scale = 0;
       c.findpath_enable = 0;
     },
     "inv_scale is 0: must be finite and 1 or more"},
    {"inv_scale_negative", [](StitchConfig& c) { c.inv_scale = -4; }, "inv_scale is -4: must be finite and 1 or more"},
    {"inv_scale_nan", [](StitchConfig& c) { c.inv_scale = kNan; }, "inv_scale is nan: must be finite and 1 or more"},
    {"inv_scale_infinite", [](StitchConfig& c) { c.inv_scale = kInfinity; }, "inv_scale is inf: must be finite and 1 or more"},
    {"strip_narrow", [](StitchConfig& c) { c.findpath_width = 9; },
     "findpath_width is 9: shrunk by inv_scale 2 the search strip is 4x64, must be 5x5 or more"},
    {"strip_empty", [](StitchConfig& c) { c.findpath_width = 0; },
     "findpath_width is 0: shrunk by inv_scale 2 the search strip is 0x64, must be 5x5 or more"},
    {"strip_low",
     [](StitchConfig& c) {
       c.in_h = c.out_h[0] = 8;
       c.pyr_level = 1;
     },
     "in_h is 8: shrunk by inv_scale 2 the search strip is 8x4, must be 5x5 or more"},
    {"strip_shrunk_away", [](StitchConfig& c) { c.inv_scale = 1e30f; },
     "findpath_width is 16: shrunk by inv_scale 1e+30 the search strip is 0x0, must be 5x5 or more"},
};
INSTANTIATE_TEST_SUITE_P(search, BrokenRule, testing::ValuesIn(kSearch), name_of);

const Case kPyramid[] = {
    {"none", [](StitchConfig& c) { c.pyr_level = 0; },
     "pyr_level is 0: must be 1 or more and at most 4, as often as a band of"},
    {"negative", [](StitchConfig& c) { c.pyr_level = -1; }, "pyr_level is -1: must be 1 or more and at most 4"},
    {"too_many", [](StitchConfig& c) { c.pyr_level = 5; },
     "pyr_level is 5: must be 1 or more and at most 4, as often as a band of 32x128 halves"},
    {"huge", [](StitchConfig& c) { c.pyr_level = kHuge; }, "pyr_level is 2147483647: must be 1 or more and at most 4"},
    {"too_many_odd",  // 20x128 10x64 5x32 3x16 2x8
     [](StitchConfig& c) {
       c.trans_width = 2;
       c.pyr_level = 5;
     },
     "pyr_level is 5: must be 1 or more and at most 4, as often as a band of 20x128 halves"},
    {"single_column",  // 24x8 12x4 6x2: both even and too low
     [](StitchConfig& c) {
       c.in_h = c.out_h[0] = 8;
       c.findpath_enable = 0;
       c.trans_width = 4;
       c.pyr_level = 3;
     },
     "pyr_level is 3: must be 1 or more and at most 2, as often as a band of 24x8 halves"},
    {"odd_to_single_row",  // 20x4 10x2: too low
     [](StitchConfig& c) {
       c.in_h = c.out_h[0] = 4;
       c.findpath_enable = 0;
       c.trans_width = 2;
       c.pyr_level = 2;
     },
     "pyr_level is 2: must be 1 or more and at most 1, as often as a band of 20x4 halves"},
    {"band_of_one_pair",
     [](StitchConfig& c) {
       c.out_w[0] = 260;
       c.out_luma_stride[0] = c.out_chroma_stride[0] = 260;
       c.feather = 1;
       c.trans_width = 0;
       c.findpath_enable = 0;
       c.pyr_level = 1;
     },
     "pyr_level is 1: must be 1 or more and at most 0, as often as a band of 2x128 halves"},
};
INSTANTIATE_TEST_SUITE_P(pyramid, BrokenRule, testing::ValuesIn(kPyramid), name_of);

const Case kBytes[] = {
    {"working_memory", [](StitchConfig& c) { c.out_luma_stride[0] = 1 << 24; },
     "in_h is 128, out_w[0] is 256: the working memory takes 2148"},
    {"working_memory_of_chroma", [](StitchConfig& c) { c.out_chroma_stride[0] = 1 << 24; },
     "in_h is 128, out_w[0] is 256: the working memory takes 2148"},
    {"working_memory_of_widths",
     [](StitchConfig& c) {
       c.in_h = c.out_h[0] = 40000;
       c.out_w[0] = c.out_luma_stride[0] = c.out_chroma_stride[0] = 80000;
     },
     "in_h is 40000, out_w[0] is 80000: the working memory takes 3"},
    {"everything_huge",
     [](StitchConfig& c) {
       c.in_h = c.out_h[0] = kHuge - 3;
       c.out_w[0] = kHuge - 3;
       c.out_luma_stride[0] = c.out_chroma_stride[0] = kHuge;
       c.in_luma_stride = c.in_chroma_stride = 128;
       c.in_w = 128;
       c.trans_width = (kHuge - 3) / 4 / 2 * 2 - 16;
       c.feather = (kHuge - 3) / 4 - c.trans_width;
     },
     "in_luma_stride is 128: 2147483644 rows take 274877906432 bytes, must be 2147483647 or less"},
    {"blend_block",
     [](StitchConfig& c) {
       c.findpath_width = 700000;
       c.findpath_enable = 0;
     },
     "in_h is 128, feather is 8, trans_width is 8, findpath_width is 700000: a blend block takes 3"},
    {"blend_block_out_of_64_bits",
     [](StitchConfig& c) {
       c.findpath_width = kHuge;
       c.inv_scale = 1;
       c.findpath_enable = 0;
     },
     "in_h is 128, feather is 8, trans_width is 8, findpath_width is 2147483647: a blend block takes 1"},
};
INSTANTIATE_TEST_SUITE_P(bytes, BrokenRule, testing::ValuesIn(kBytes), name_of);

class KeptRule : public testing::TestWithParam<Case> {};

TEST_P(KeptRule, IsAcceptedAtItsLimit) {
  StitchConfig config = test::valid_config();
  config.p0 = config.p1 = 0.5f;
  GetParam().change(config);
  const Error error = check_rules(config);
  EXPECT_FALSE(error) << error.text();
  EXPECT_STREQ(error.text(), "");
}

const Case kLimits[] = {
    {"in_w_4", [](StitchConfig& c) { c.in_w = 4; }, nullptr},
    {"in_h_4",
     [](StitchConfig& c) {
       c.in_h = c.out_h[0] = 4;
       c.findpath_enable = 0;
       c.pyr_level = 1;
     },
     nullptr},
    {"strides_longer_and_odd",
     [](StitchConfig& c) {
       c.in_luma_stride = c.in_chroma_stride = 131;
       c.out_luma_stride[0] = c.out_chroma_stride[0] = 257;
     },
     nullptr},
    {"odd_luma_stride_flipped",
     [](StitchConfig& c) {
       c.out_luma_stride[0] = 257;
       c.out_flip[0] = c.out_mirror[0] = 1;
     },
     nullptr},
    {"input_planes_of_2_gigabytes", [](StitchConfig& c) { c.in_luma_stride = c.in_chroma_stride = (1 << 24) - 1; }, nullptr},
    {"format_4", [](StitchConfig& c) { c.in_yuv_type = c.out_yuv_type = 4; }, nullptr},
    {"third_matrix_row_is_not_read", [](StitchConfig& c) { c.lens_matrix[6] = c.lens_matrix[7] = c.lens_matrix[8] = kNan; },
     nullptr},
    {"other_entries_are_not_read",
     [](StitchConfig& c) { c.out_h[1] = c.out_w[1] = c.out_luma_stride[2] = c.out_chroma_stride[3] = -1; }, nullptr},
    {"centre_anywhere", [](StitchConfig& c) { c.cx0 = -1e30f; }, nullptr},
    {"smallest_focus", [](StitchConfig& c) { c.change_focus = std::numeric_limits<float>::denorm_min(); }, nullptr},
    {"feather_zero_without_search",
     [](StitchConfig& c) {
       c.feather = 0;
       c.findpath_enable = 0;
       c.pyr_level = 2;
     },
     nullptr},
    {"trans_width_zero", [](StitchConfig& c) { c.trans_width = 0; }, nullptr},
    {"inner_width_zero", [](StitchConfig& c) { c.feather = 56; }, nullptr},
    {"findpath_width_below_overlap", [](StitchConfig& c) { c.findpath_width = 15; }, nullptr},
    {"findpath_width_free_without_search",
     [](StitchConfig& c) {
       c.findpath_width = 100;
       c.findpath_enable = 0;
     },
     nullptr},
    {"findpath_width_zero_without_search",
     [](StitchConfig& c) {
       c.findpath_width = 0;
       c.findpath_enable = 0;
     },
     nullptr},
    {"inv_scale_1", [](StitchConfig& c) { c.inv_scale = 1; }, nullptr},
    {"inv_scale_between", [](StitchConfig& c) { c.inv_scale = 1.7f; }, nullptr},
    {"strip_5_wide", [](StitchConfig& c) { c.findpath_width = 10; }, nullptr},
    {"strip_5_high",
     [](StitchConfig& c) {
       c.in_h = c.out_h[0] = 12;
       c.inv_scale = 2.4f;
       c.pyr_level = 1;
     },
     nullptr},
    {"most_levels", [](StitchConfig& c) { c.pyr_level = 4; }, nullptr},
    {"most_levels_with_odd_sizes",
     [](StitchConfig& c) {
       c.trans_width = 2;
       c.pyr_level = 4;
     },
     nullptr},
    {"one_level", [](StitchConfig& c) { c.pyr_level = 1; }, nullptr},
};
INSTANTIATE_TEST_SUITE_P(limits, KeptRule, testing::ValuesIn(kLimits), name_of);

TEST(Rules, LargestWorkingMemoryEndsAt32Bits) {
  StitchConfig config = test::valid_config();
  const int64_t free = INT32_MAX - engine_room(config);
  config.out_luma_stride[0] += static_cast<int32_t>(free / config.in_h);
  EXPECT_FALSE(check_rules(config));
  ++config.out_luma_stride[0];
  EXPECT_TRUE(check_rules(config));
}

}  // namespace
}  // namespace biseam
