#include "media/upright.hpp"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include <cstring>
#include <new>
#include <utility>

#include "base/failure.hpp"

namespace biseam::tool {
namespace {

const AVPixFmtDescriptor& known(int format) { return *av_pix_fmt_desc_get(AVPixelFormat(format)); }

// Bytes from a sample of a plane to the next one, 0 where they differ.
int step_of(const AVPixFmtDescriptor& format, int plane) {
  int step = 0;
  for (int k = 0; k < format.nb_components; ++k) {
    const AVComponentDescriptor& component = format.comp[k];
    if (component.plane != plane) continue;
    if (step != 0 && step != component.step) return 0;
    step = component.step;
  }
  return step;
}

// All samples of a pixel lie together in their plane, and chroma is as fine across as down where the picture comes on its side.
bool can_be_turned(const AVPixFmtDescriptor& format, bool on_its_side) {
  constexpr std::uint64_t kOther =
      AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BAYER;
  if ((format.flags & kOther) != 0 || (on_its_side && format.log2_chroma_w != format.log2_chroma_h)) return false;
  for (int k = 0; k < format.nb_components; ++k) {
    if (step_of(format, format.comp[k].plane) == 0) return false;
  }
  return true;
}

AVPixelFormat turnable_format(AVPixelFormat format, bool on_its_side) {
  const AVPixFmtDescriptor& from = known(format);
  const int bits = from.comp[0].depth;
  if (can_be_turned(from, on_its_side)) return format;
  if ((from.flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0) return bits > 8 ? AV_PIX_FMT_GBRP16 : AV_PIX_FMT_GBRP;
  if (bits <= 8) return AV_PIX_FMT_YUV444P;
  return bits <= 10 ? AV_PIX_FMT_YUV444P10 : bits <= 12 ? AV_PIX_FMT_YUV444P12 : AV_PIX_FMT_YUV444P16;
}

Libav<AVFrame> make_frame(const AVFrame& like, int format, Size size) {
  Libav<AVFrame> frame(av_frame_alloc());
  if (!frame) throw std::bad_alloc();
  frame->format = format;
  frame->width = size.width;
  frame->height = size.height;
  if (av_frame_get_buffer(frame.get(), 0) < 0 || av_frame_copy_props(frame.get(), &like) < 0) throw std::bad_alloc();
  frame->sample_aspect_ratio = {1, 1};
  av_frame_remove_side_data(frame.get(), AV_FRAME_DATA_DISPLAYMATRIX);
  return frame;
}

struct Plane {
  std::uint8_t* data;
  std::ptrdiff_t stride;
  int columns, rows;
};

Plane plane_of(const AVFrame& frame, int index) {
  const AVPixFmtDescriptor& format = known(frame.format);
  const bool is_chroma = (index == 1 || index == 2) && (format.flags & AV_PIX_FMT_FLAG_RGB) == 0;
  return {frame.data[index], frame.linesize[index], AV_CEIL_RSHIFT(frame.width, is_chroma ? format.log2_chroma_w : 0),
          AV_CEIL_RSHIFT(frame.height, is_chroma ? format.log2_chroma_h : 0)};
}

template <std::size_t step>
void turn_plane(const Plane& from, const Display& display, const Plane& to) {
  const std::ptrdiff_t right = step, down = from.stride;
  const std::uint8_t* origin = from.data;  // where the first sample of the result comes from
  if (display.turn == 180 || display.turn == 270) origin += right * (from.columns - 1);
  if (display.turn == 90 || display.turn == 180) origin += down * (from.rows - 1);
  const std::ptrdiff_t aside[] = {right, -down, -right, down}, below[] = {down, right, -down, -right};
  std::ptrdiff_t next = aside[display.turn / 90];
  const std::ptrdiff_t next_row = below[display.turn / 90];
  if (display.mirrored) {
    origin += next * (to.columns - 1);
    next = -next;
  }
  for (int y = 0; y < to.rows; ++y) {
    const std::uint8_t* source = origin + next_row * y;
    std::uint8_t* row = to.data + to.stride * y;
    for (int x = 0; x < to.columns; ++x, source += next) std::memcpy(row + step * std::size_t(x), source, step);
  }
}

void turn_plane(const Plane& from, int step, const Display& display, const Plane& to) {
  switch (step) {
    case 1:
      return turn_plane<1>(from, display, to);
    case 2:
      return turn_plane<2>(from, display, to);
    case 3:
      return turn_plane<3>(from, display, to);
    case 4:
      return turn_plane<4>(from, display, to);
    case 6:
      return turn_plane<6>(from, display, to);
    default:
      return turn_plane<8>(from, display, to);
  }
}

// Where chroma lies between the samples of luma.  At the right has no name: it becomes the nearest that has, the centre.
AVChromaLocation turned(AVChromaLocation location, const Display& display) {
  if (location == AVCHROMA_LOC_UNSPECIFIED) return location;
  constexpr int kDown[] = {0, -1, 1};  // the names go from left to centre, in the middle, at the top, at the bottom
  const int number = location - AVCHROMA_LOC_LEFT;
  int right = number % 2 == 0 ? -1 : 0, down = kDown[number / 2];
  for (int turn = 0; turn < display.turn; turn += 90) right = -std::exchange(down, right);
  if (display.mirrored) right = -right;
  const int row = down == 0 ? 0 : down < 0 ? 1 : 2;
  return AVChromaLocation(AVCHROMA_LOC_LEFT + 2 * row + (right < 0 ? 0 : 1));
}

}  // namespace

Upright::Upright(const Display& display, const AVFrame& recorded, const std::string& name)
    : display_(display), name_(name), format_(AVPixelFormat(recorded.format)) {
  const Size size{recorded.width, recorded.height};
  const std::optional<Size> square = square_size(size, display.pixel);
  if (!square) {
    throw Failure(ExitCode::input, name + ": its pixels are said to be " + std::to_string(display.pixel.num) + ":" +
                                       std::to_string(display.pixel.den) + " as wide as high, which is too much");
  }
  square_ = *square;
  if (display.turn != 0 || display.mirrored) format_ = turnable_format(format_, display.turn % 180 != 0);
}

Libav<AVFrame> Upright::apply(const AVFrame& recorded) {
  const bool fits = recorded.format == format_ && Size{recorded.width, recorded.height} == square_;
  if (display_.turn == 0 && !display_.mirrored) return scale(recorded);
  return fits ? turn(recorded) : turn(*scale(recorded));
}

Libav<AVFrame> Upright::scale(const AVFrame& recorded) {
  const auto from = AVPixelFormat(recorded.format);
  scaler_.reset(sws_getCachedContext(scaler_.release(), recorded.width, recorded.height, from, square_.width, square_.height,
                                     format_, SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr));
  if (!scaler_) {
    throw Failure(ExitCode::input, name_ + ": pictures of the format " + known(from).name + " can't be scaled");
  }
  // Samples keep their range and their matrix.
  const int* const matrix = sws_getCoefficients(recorded.colorspace);
  const int full = recorded.color_range == AVCOL_RANGE_JPEG || std::strncmp(known(from).name, "yuvj", 4) == 0;
  sws_setColorspaceDetails(scaler_.get(), matrix, full, matrix, full, 0, 1 << 16, 1 << 16);
  Libav<AVFrame> square = make_frame(recorded, format_, square_);
  sws_scale(scaler_.get(), recorded.data, recorded.linesize, 0, recorded.height, square->data, square->linesize);
  return square;
}

Libav<AVFrame> Upright::turn(const AVFrame& square) const {
  const bool is_across = display_.turn % 180 != 0;
  const Size size = is_across ? Size{square.height, square.width} : Size{square.width, square.height};
  Libav<AVFrame> upright = make_frame(square, square.format, size);
  const AVPixFmtDescriptor& format = known(square.format);
  for (int plane = 0; plane < av_pix_fmt_count_planes(AVPixelFormat(square.format)); ++plane) {
    turn_plane(plane_of(square, plane), step_of(format, plane), display_, plane_of(*upright, plane));
  }
  upright->chroma_location = turned(square.chroma_location, display_);
  return upright;
}

std::unique_ptr<Upright> make_upright(const Container& clip, AVStream& stream, AVFrame& first, bool was_said) {
  const Display display = display_of(*clip.get(), stream, &first);
  const std::string subject = clip.name() + ": the pictures of stream " + std::to_string(stream.index);
  if (!was_said && display.is_askew) notice(subject + " ask for a turn by no quarters, which is not done");
  if (display.is_plain()) return nullptr;
  auto upright = std::make_unique<Upright>(display, first, clip.name());
  const std::string text = display_text(display, {first.width, first.height});
  if (!was_said && !text.empty()) notice(subject + " are " + text);
  return upright;
}

}  // namespace biseam::tool
