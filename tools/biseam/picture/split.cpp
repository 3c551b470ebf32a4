#include "picture/split.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>

#include "base/failure.hpp"
#include "base/size.hpp"
#include "media/pixel_format.hpp"

namespace biseam::tool {
namespace {

// Bytes from the beginning of a row to the sample of a column that chroma shares.
std::ptrdiff_t bytes_to(const AVPixFmtDescriptor& format, int plane, int column) {
  for (int k = 0; k < format.nb_components; ++k) {
    const bool is_chroma = k == 1 || k == 2;
    if (format.comp[k].plane == plane) return (column >> (is_chroma ? format.log2_chroma_w : 0)) * format.comp[k].step;
  }
  return 0;
}

}  // namespace

bool has_both_circles(const AVFrame& picture) {
  return 2 * std::max(picture.width, picture.height) >= 3 * std::min(picture.width, picture.height);
}

void split(const AVFrame& picture, Layout layout, const std::string& name, BiseamPicture (&halves)[2]) {
  if (layout == Layout::automatic && !has_both_circles(picture)) {
    throw Failure(ExitCode::input, name + ": " + size_text({picture.width, picture.height}) +
                                       " pixels show one lens; the other's file is missing, or --layout says where both are");
  }
  const bool across = layout == Layout::automatic ? picture.width >= picture.height : layout == Layout::side_by_side;
  const int side = across ? picture.width : picture.height;
  const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(AVPixelFormat(picture.format));
  const int step = 2 << (across ? format.log2_chroma_w : format.log2_chroma_h);  // whole samples of chroma in each half
  if (side % step != 0) {
    throw Failure(ExitCode::input, name + ": two circles " +
                                       (across ? "side by side need a width" : "one above the other need a height") +
                                       " divisible by " + std::to_string(step) + ", it is " + std::to_string(side));
  }
  const int half = side / 2;
  halves[0] = engine_picture(picture);
  (across ? halves[0].width : halves[0].height) = half;
  halves[1] = halves[0];
  for (int plane = 0; plane < av_pix_fmt_count_planes(AVPixelFormat(picture.format)); ++plane) {
    const int rows = half >> (plane > 0 ? format.log2_chroma_h : 0);
    const std::ptrdiff_t bytes = across ? bytes_to(format, plane, half) : rows * halves[0].strides[plane];
    halves[1].planes[plane] = static_cast<std::uint8_t*>(halves[1].planes[plane]) + bytes;
  }
}

}  // namespace biseam::tool
