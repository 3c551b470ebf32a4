#include "picture/orientation.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <cstring>
#include <new>
#include <utility>

#include "media/frame_converter.hpp"
#include "media/pixel_format.hpp"

namespace biseam::tool {
namespace {

// What is seen at x, y lies, counted from the left or the right, and from the top or the bottom, at x, y or at y, x.
struct Way {
  bool swapped, from_right, from_bottom;
};
constexpr Way kWays[] = {{},
                         {false, false, false},
                         {false, true, false},
                         {false, true, true},
                         {false, false, true},
                         {true, false, false},
                         {true, false, true},
                         {true, true, true},
                         {true, true, false}};

struct PlanePlace {
  std::uint8_t* data;
  std::ptrdiff_t stride;
  int width, height;  // samples, or pairs
};

PlanePlace plane_of(const AVFrame& frame, int plane) {
  const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(AVPixelFormat(frame.format));
  const bool is_chroma = plane > 0;
  return {frame.data[plane], frame.linesize[plane], AV_CEIL_RSHIFT(frame.width, is_chroma ? format.log2_chroma_w : 0),
          AV_CEIL_RSHIFT(frame.height, is_chroma ? format.log2_chroma_h : 0)};
}

// Samples, or pairs of them, of Bytes bytes.
template <std::size_t Bytes>
void turn(const PlanePlace& from, Way way, const PlanePlace& to) {
  for (int y = 0; y < to.height; ++y) {
    for (int x = 0; x < to.width; ++x) {
      int u = way.swapped ? y : x, v = way.swapped ? x : y;
      if (way.from_right) u = from.width - 1 - u;
      if (way.from_bottom) v = from.height - 1 - v;
      std::memcpy(to.data + y * to.stride + x * std::ptrdiff_t(Bytes), from.data + v * from.stride + u * std::ptrdiff_t(Bytes),
                  Bytes);
    }
  }
}

int bytes_of(const AVPixFmtDescriptor& format, int plane) {
  for (int k = 0; k < format.nb_components; ++k) {
    if (format.comp[k].plane == plane) return format.comp[k].step;
  }
  return 1;
}

bool is_evenly_subsampled(int format) {
  const AVPixFmtDescriptor& known = *av_pix_fmt_desc_get(AVPixelFormat(format));
  return known.log2_chroma_w == known.log2_chroma_h;
}

AVPixelFormat with_full_chroma(int format) {
  return av_pix_fmt_desc_get(AVPixelFormat(format))->comp[0].depth == 8    ? AV_PIX_FMT_YUV444P
         : av_pix_fmt_desc_get(AVPixelFormat(format))->comp[0].depth == 10 ? AV_PIX_FMT_YUV444P10
                                                                           : AV_PIX_FMT_YUV444P12;
}

}  // namespace

Libav<AVFrame> upright(Libav<AVFrame> picture, int orientation) {
  if (orientation == 1) return picture;
  const Way way = kWays[orientation];
  if (way.swapped && !is_evenly_subsampled(picture->format)) {
    picture = FrameConverter().convert(*picture, with_full_chroma(picture->format));
  }
  Libav<AVFrame> turned(av_frame_alloc());
  if (!turned || av_frame_copy_props(turned.get(), picture.get()) < 0) throw std::bad_alloc();
  turned->format = picture->format;
  turned->width = way.swapped ? picture->height : picture->width;
  turned->height = way.swapped ? picture->width : picture->height;
  if (av_frame_get_buffer(turned.get(), 0) < 0) throw std::bad_alloc();
  const auto format = AVPixelFormat(picture->format);
  for (int plane = 0; plane < av_pix_fmt_count_planes(format); ++plane) {
    const PlanePlace from = plane_of(*picture, plane), to = plane_of(*turned, plane);
    switch (bytes_of(*av_pix_fmt_desc_get(format), plane)) {
      case 1:
        turn<1>(from, way, to);
        break;
      case 2:
        turn<2>(from, way, to);
        break;
      default:
        turn<4>(from, way, to);
    }
  }
  return turned;
}

}  // namespace biseam::tool
