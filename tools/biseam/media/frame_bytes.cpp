#include "media/frame_bytes.hpp"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace biseam::tool {

void append_frame(const AVFrame& frame, std::vector<std::uint8_t>& to) {
  const auto format = AVPixelFormat(frame.format);
  const AVPixFmtDescriptor& described = *av_pix_fmt_desc_get(format);
  for (int plane = 0; plane < av_pix_fmt_count_planes(format); ++plane) {
    const bool is_chroma = plane == 1 || plane == 2;
    const int rows = is_chroma ? AV_CEIL_RSHIFT(frame.height, described.log2_chroma_h) : frame.height;
    const int bytes = av_image_get_linesize(format, frame.width, plane);
    for (std::ptrdiff_t y = 0; y < rows; ++y) {
      const std::uint8_t* const row = frame.data[plane] + y * frame.linesize[plane];
      to.insert(to.end(), row, row + bytes);
    }
  }
}

}  // namespace biseam::tool
