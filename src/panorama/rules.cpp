#include "panorama/rules.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "base/panorama_layout.hpp"
#include "frame/lifecycle.hpp"
#include "frame/memory.hpp"
#include "panorama/error_writer.hpp"
#include "stages/blend/module.hpp"

namespace biseam {

namespace {

constexpr ErrorCode kInvalid = ErrorCode::invalid_configuration;

Error check_multiple_of_4(const char* field, int32_t value) {
  if (value > 0 && value % 4 == 0) return {};
  return ErrorWriter::write(kInvalid, "%s is %d: must be a positive multiple of 4", field, value);
}

Error check_least(const char* field, int32_t value, int32_t least) {
  if (value >= least) return {};
  return ErrorWriter::write(kInvalid, "%s is %d: must be %d or more", field, value, least);
}

// The remap takes rows in pairs and splits them at half the height, so that half must be even; three quarters of the width
// must be exact to leave both edge strips the same inner width; chroma is sampled from a 2 x 2 neighbourhood.
Error check_sizes(const StitchConfig& config) {
  if (config.in_w < 4 || config.in_w % 2 != 0) {
    return ErrorWriter::write(kInvalid, "in_w is %d: must be even and 4 or more", config.in_w);
  }
  if (Error error = check_multiple_of_4("in_h", config.in_h)) return error;
  if (config.out_h[0] != config.in_h) {
    return ErrorWriter::write(kInvalid, "out_h[0] is %d: must equal in_h, which is %d", config.out_h[0], config.in_h);
  }
  return check_multiple_of_4("out_w[0]", config.out_w[0]);
}

// The other layouts have no converter.
Error check_formats(const StitchConfig& config) {
  if (config.in_yuv_type != BISEAM_YUV420_SEMIPLANAR && config.in_yuv_type != BISEAM_YUV422_SEMIPLANAR) {
    return ErrorWriter::write(kInvalid, "in_yuv_type is %d: must be 0 (4:2:0) or 4 (4:2:2)", config.in_yuv_type);
  }
  if (config.out_yuv_type == config.in_yuv_type) return {};
  return ErrorWriter::write(kInvalid, "out_yuv_type is %d: must equal in_yuv_type, which is %d", config.out_yuv_type,
                            config.in_yuv_type);
}

Error check_stride(const char* field, int32_t stride, const char* width_field, int32_t width) {
  if (stride >= width) return {};
  return ErrorWriter::write(kInvalid, "%s is %d: must be %d or more, the bytes of a row of %s pixels", field, stride, width,
                            width_field);
}

Error check_strides(const StitchConfig& config) {
  if (Error error = check_stride("in_luma_stride", config.in_luma_stride, "in_w", config.in_w)) return error;
  if (Error error = check_stride("in_chroma_stride", config.in_chroma_stride, "in_w", config.in_w)) return error;
  const int32_t width = config.out_w[0], chroma_stride = config.out_chroma_stride[0];
  if (Error error = check_stride("out_luma_stride[0]", config.out_luma_stride[0], "out_w[0]", width)) return error;
  if (Error error = check_stride("out_chroma_stride[0]", chroma_stride, "out_w[0]", width)) return error;
  // Flip and mirror step through chroma in pairs.
  const bool turned = config.out_flip[0] != 0 || config.out_mirror[0] != 0;
  if (!turned || chroma_stride % 2 == 0) return {};
  return ErrorWriter::write(kInvalid, "out_chroma_stride[0] is %d: must be even with out_flip[0] or out_mirror[0]",
                            chroma_stride);
}

Error check_finite(const char* field, float value) {
  if (std::isfinite(value)) return {};
  return ErrorWriter::write(kInvalid, "%s is %g: must be finite", field, static_cast<double>(value));
}

Error check_scale(const char* field, float value, float least) {
  if (std::isfinite(value) && (least > 0 ? value >= least : value > 0)) return {};
  return ErrorWriter::write(kInvalid, "%s is %g: must be finite and %s", field, static_cast<double>(value),
                            least > 0 ? "1 or more" : "above 0");
}

Error check_lenses(const StitchConfig& config) {
  if (Error error = check_scale("p0", config.p0, 0)) return error;
  if (Error error = check_finite("cx0", config.cx0)) return error;
  if (Error error = check_finite("cy0", config.cy0)) return error;
  if (Error error = check_scale("p1", config.p1, 0)) return error;
  if (Error error = check_finite("cx1", config.cx1)) return error;
  if (Error error = check_finite("cy1", config.cy1)) return error;
  constexpr const char* kRead[] = {"lens_matrix[0]", "lens_matrix[1]", "lens_matrix[2]",
                                   "lens_matrix[3]", "lens_matrix[4]", "lens_matrix[5]"};
  for (int i = 0; i < 6; ++i) {
    if (Error error = check_finite(kRead[i], config.lens_matrix[i])) return error;
  }
  const bool turned_to_nothing =
      std::all_of(config.lens_matrix, config.lens_matrix + 6, [](float value) { return value == 0; });
  if (turned_to_nothing) return ErrorWriter::write(kInvalid, "lens_matrix is all zero: must turn, or be 1 on its diagonal");
  return check_scale("change_focus", config.change_focus, 0);
}

// Bands and what lies between them hold whole chroma pairs.
Error check_overlap(const StitchConfig& config) {
  if (Error error = check_least("feather", config.feather, 0)) return error;
  if (config.trans_width < 0 || config.trans_width % 2 != 0) {
    return ErrorWriter::write(kInvalid, "trans_width is %d: must be even and 0 or more", config.trans_width);
  }
  if (config.feather == 0 && config.trans_width == 0) {
    return ErrorWriter::write(kInvalid, "feather is 0: must be 1 or more when trans_width is 0");
  }
  const int64_t inner = layout_of(config).plain_widths[0];
  if (inner >= 0 && inner % 2 == 0) return {};
  return ErrorWriter::write(kInvalid,
                            "feather is %d, trans_width is %d: the inner width out_w[0] / 4 - feather - trans_width is %lld, "
                            "must be even and 0 or more",
                            config.feather, config.trans_width, static_cast<long long>(inner));
}

// Without a search the strips are still laid out but never read, so only their sizes must make sense.
Error check_search(const StitchConfig& config) {
  if (Error error = check_least("findpath_width", config.findpath_width, 0)) return error;
  if (Error error = check_scale("inv_scale", config.inv_scale, 1)) return error;
  if (config.findpath_enable == 0) return {};
  const int64_t most = 2 * int64_t{config.feather};
  if (config.findpath_width > most) {
    return ErrorWriter::write(kInvalid, "findpath_width is %d: must be 2 x feather, %lld, or less", config.findpath_width,
                              static_cast<long long>(most));
  }
  // The cut keeps a frame of two nodes all around and needs one node inside it.
  constexpr int kLeast = 5;
  const int width = shrunk(config.findpath_width, config.inv_scale), height = shrunk(config.in_h, config.inv_scale);
  if (width >= kLeast && height >= kLeast) return {};
  const bool narrow = width < kLeast;
  return ErrorWriter::write(kInvalid, "%s is %d: shrunk by inv_scale %g the search strip is %dx%d, must be 5x5 or more",
                            narrow ? "findpath_width" : "in_h", narrow ? config.findpath_width : config.in_h,
                            static_cast<double>(config.inv_scale), width, height);
}

// An exact half leaves sources below 4 unwritten; a reduction of an odd size has no neighbour to reflect to in a single row or
// column.
bool can_halve(int64_t width, int64_t height) {
  const int64_t least = width % 2 == 0 && height % 2 == 0 ? 4 : 2;
  return width >= least && height >= least;
}

Error check_pyramid(const StitchConfig& config) {
  const int64_t band_width = layout_of(config).pair_width;
  int64_t width = band_width, height = config.in_h;
  int most = 0;
  for (; can_halve(width, height); ++most) {
    width = (width + 1) / 2;
    height = (height + 1) / 2;
  }
  if (config.pyr_level >= 1 && config.pyr_level <= most) return {};
  return ErrorWriter::write(kInvalid, "pyr_level is %d: must be 1 or more and at most %d, as often as a band of %lldx%d halves",
                            config.pyr_level, most, static_cast<long long>(band_width), config.in_h);
}

constexpr double kMostBytes = INT32_MAX;

Error check_plane_bytes(const char* field, int32_t stride, int32_t rows) {
  const double bytes = static_cast<double>(stride) * rows;
  if (bytes <= kMostBytes) return {};
  return ErrorWriter::write(kInvalid, "%s is %d: %d rows take %.0f bytes, must be %.0f or less", field, stride, rows, bytes,
                            kMostBytes);
}

Error check_bytes(const StitchConfig& config) {
  if (Error error = check_plane_bytes("in_luma_stride", config.in_luma_stride, config.in_h)) return error;
  if (Error error = check_plane_bytes("in_chroma_stride", config.in_chroma_stride, config.in_h)) return error;
  const double working = static_cast<double>(engine_room(config));
  const double blend = static_cast<double>(blend_room(blend_settings(config)));
  if (working > kMostBytes) {
    return ErrorWriter::write(kInvalid, "in_h is %d, out_w[0] is %d: the working memory takes %.0f bytes, must be %.0f or less",
                              config.in_h, config.out_w[0], working, kMostBytes);
  }
  if (blend <= kMostBytes) return {};
  return ErrorWriter::write(kInvalid,
                            "in_h is %d, feather is %d, trans_width is %d, findpath_width is %d: a blend block takes %.0f "
                            "bytes, must be %.0f or less",
                            config.in_h, config.feather, config.trans_width, config.findpath_width, blend, kMostBytes);
}

}  // namespace

// Later rules rely on earlier ones: the sums of check_bytes on bounded widths, for example.
Error check_rules(const StitchConfig& config) {
  using Rule = Error (*)(const StitchConfig&);
  constexpr Rule kRules[] = {check_sizes,   check_formats, check_strides, check_lenses,
                             check_overlap, check_search,  check_pyramid, check_bytes};
  for (Rule rule : kRules) {
    if (Error error = rule(config)) return error;
  }
  return {};
}

}  // namespace biseam
