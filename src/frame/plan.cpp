#include "frame/plan.hpp"

#include <algorithm>

#include "frame/blend/byte_band.hpp"
#include "frame/lifecycle.hpp"
#include "frame/seam/search.hpp"

namespace biseam {

namespace {

bool is_semi_planar(int format) {
  return format == BISEAM_YUV420_SEMIPLANAR || format == BISEAM_YUV420_SEMIPLANAR_VU || format == BISEAM_YUV422_SEMIPLANAR ||
         format == BISEAM_YUV422_SEMIPLANAR_VU;
}

// Two planes a picture are all a frame record carries: nothing can be read or written safely as planar or packed.  A panorama
// code without a layout of its own leaves the input's in force.
bool holds_two_planes(const StitchConfig& config) {
  const int out = config.out_yuv_type;
  return is_semi_planar(config.in_yuv_type) && out != BISEAM_YUV420_PLANAR && out != BISEAM_YUV422_PLANAR;
}

// The converters know pairs in U, V order only.  V, U layouts take the same ones: what is exchanged on the way in is exchanged
// back on the way out.
int converter_format(int format) {
  if (format == BISEAM_YUV420_SEMIPLANAR_VU) return BISEAM_YUV420_SEMIPLANAR;
  if (format == BISEAM_YUV422_SEMIPLANAR_VU) return BISEAM_YUV422_SEMIPLANAR;
  return format;
}

// Rows are converted in pairs, pixels in twos: the edge blocks of odd sizes look at what lies behind a row.
bool has_whole_blocks(const ImageHeader& band) { return band.width % 2 == 0 && band.height % 2 == 0; }

bool goes_by_bytes(const StitchEngine& e, int overlap) {
  const BlendInstance& instance = *e.blend[overlap];
  const ImageHeader &band = e.band_yuv[0], &strip = e.blend_yuv[0];
  return band.width == instance.band_width && strip.width == instance.width && has_whole_blocks(band) &&
         has_whole_blocks(strip) && can_blend_bytes(instance) && (instance.findpath_enable == 0 || can_search_bytes(instance));
}

}  // namespace

FramePlan plan_frame(const StitchEngine& e) {
  return {.can_be_stitched = holds_two_planes(*e.config) && fits_carving(*e.config, e),
          .layout = layout_of(*e.config),
          .rows = std::min(e.config->in_h, e.config->out_h[0]),
          .format = converter_format(e.band_yuv[0].format),
          .by_bytes = {goes_by_bytes(e, 0), goes_by_bytes(e, 1)}};
}

}  // namespace biseam
