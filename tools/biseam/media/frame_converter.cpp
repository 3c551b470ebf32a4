#include "media/frame_converter.hpp"

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "media/deep_rgb.hpp"
#include "media/pixel_format.hpp"

namespace biseam::tool {
namespace {

constexpr int kScalerFlags = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP | SWS_BITEXACT;

const AVPixFmtDescriptor& described(int format) { return *av_pix_fmt_desc_get(AVPixelFormat(format)); }

bool is_rgb(const AVPixFmtDescriptor& format) { return (format.flags & AV_PIX_FMT_FLAG_RGB) != 0; }
bool is_rgb_like(int format) { return (described(format).flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0; }

[[noreturn]] void refuse(int from, int to) {
  throw std::runtime_error(std::string("pictures of the format ") + described(from).name + " can't be converted to " +
                           described(to).name);
}

// The matrix of the frame, or the one that pictures without a tag have and RGB gets.
int matrix_of(const AVFrame& frame) {
  if (is_rgb_like(frame.format)) return SWS_CS_ITU601;
  switch (frame.colorspace) {
    case AVCOL_SPC_BT709:
      return SWS_CS_ITU709;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
      return SWS_CS_BT2020;
    case AVCOL_SPC_SMPTE240M:
      return SWS_CS_SMPTE240M;
    case AVCOL_SPC_FCC:
      return SWS_CS_FCC;
    default:
      return SWS_CS_ITU601;
  }
}

// What libswscale would take through YUV or doesn't know is read sample by sample.
bool goes_by_samples(const AVFrame& frame, const AVPixFmtDescriptor& to) {
  const AVPixFmtDescriptor& from = described(frame.format);
  constexpr std::uint64_t kOther = AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BAYER | AV_PIX_FMT_FLAG_FLOAT;
  if ((from.flags & kOther) != 0 || (to.flags & kOther) != 0) return false;
  if (!sws_isSupportedInput(av_pix_fmt_desc_get_id(&from))) return true;
  const bool is_deep_gray = from.nb_components < 3 && from.comp[0].depth > 8 && is_full_range(frame);
  return is_rgb(to) && (is_deep_gray || (is_rgb(from) && (from.comp[1].depth != 8 || to.comp[1].depth != 8)));
}

bool is_deep_yuv(const AVPixFmtDescriptor& format) {
  return !is_rgb(format) && format.nb_components >= 3 && format.comp[0].depth > 8 &&
         !std::string_view(format.name).starts_with("xyz");
}

// One component's samples, rows of both as wide as their planes.
class Samples {
 public:
  Samples(const AVFrame& from, AVFrame& to, int component)
      : from_(from),
        to_(to),
        read_(described(from.format)),
        write_(described(to.format)),
        component_(component),
        source_(read_.nb_components < 3 ? 0 : component) {}

  void convert() {
    const bool is_chroma = component_ > 0 && !is_rgb(write_);
    const int across = is_chroma ? read_.log2_chroma_w - write_.log2_chroma_w : 0;
    const int down = is_chroma ? read_.log2_chroma_h - write_.log2_chroma_h : 0;
    if (across < 0 || down < 0) refuse(from_.format, to_.format);
    const int width = is_chroma ? AV_CEIL_RSHIFT(to_.width, write_.log2_chroma_w) : to_.width;
    const int height = is_chroma ? AV_CEIL_RSHIFT(to_.height, write_.log2_chroma_h) : to_.height;
    std::vector<std::uint16_t> read(std::size_t(AV_CEIL_RSHIFT(width, across))), written(std::size_t(width), 0);
    const std::uint8_t* planes[4] = {from_.data[0], from_.data[1], from_.data[2], from_.data[3]};
    for (int y = 0; y < height; ++y) {
      av_read_image_line(read.data(), planes, from_.linesize, &read_, 0, y >> down, source_, int(read.size()), 0);
      for (std::size_t x = 0; x < written.size(); ++x) written[x] = scaled(read[x >> across]);
      av_write_image_line(written.data(), to_.data, to_.linesize, &write_, 0, y, component_, width);
    }
  }

 private:
  // RGB from 0 to 0 and from the most to the most, luma and chroma by the power of two.
  std::uint16_t scaled(std::uint32_t value) const {
    const int bits = read_.comp[source_].depth, wanted = write_.comp[component_].depth;
    if (!is_rgb(write_)) return std::uint16_t(wanted >= bits ? value << (wanted - bits) : value >> (bits - wanted));
    const std::uint64_t most = (1u << bits) - 1, wanted_most = (1u << wanted) - 1;
    return std::uint16_t((std::min<std::uint64_t>(value, most) * wanted_most + most / 2) / most);
  }

  const AVFrame& from_;
  AVFrame& to_;
  const AVPixFmtDescriptor &read_, &write_;
  const int component_, source_;
};

// libav sets single bits, so there must be none before.
void clear(AVFrame& frame) {
  for (const AVBufferRef* buffer : frame.buf) {
    if (buffer) std::memset(buffer->data, 0, buffer->size);
  }
}

// For libswscale, in 1/256 of a luma sample.
struct Position {
  int across, down;
};
Position chroma_position(AVChromaLocation siting) {
  switch (engine_siting(siting)) {
    case BISEAM_SITING_MIDDLE:
      return {128, 128};
    case BISEAM_SITING_TOP_LEFT:
      return {0, 0};
    default:
      return {0, 128};
  }
}

AVPixelFormat without_range(AVPixelFormat format) {
  switch (format) {
    case AV_PIX_FMT_YUVJ411P:
      return AV_PIX_FMT_YUV411P;
    case AV_PIX_FMT_YUVJ440P:
      return AV_PIX_FMT_YUV440P;
    default:
      return engine_format(format) ? working_format(format) : format;
  }
}

void set_colour(const AVFrame& from, AVFrame& to) {
  const bool was_rgb = is_rgb_like(from.format), becomes_rgb = is_rgb_like(to.format);
  if (becomes_rgb || was_rgb || says_full_range(AVPixelFormat(from.format))) to.color_range = AVCOL_RANGE_JPEG;
  if (becomes_rgb) to.colorspace = AVCOL_SPC_RGB;
  if (was_rgb && !becomes_rgb) to.colorspace = AVCOL_SPC_BT470BG;
}

}  // namespace

bool is_full_range(const AVFrame& frame) {
  if (says_full_range(AVPixelFormat(frame.format))) return true;
  if (frame.color_range != AVCOL_RANGE_UNSPECIFIED) return frame.color_range == AVCOL_RANGE_JPEG;
  const AVPixFmtDescriptor& format = described(frame.format);
  return is_rgb(format) || format.nb_components < 3;
}

AVPixelFormat nearest_format(AVPixelFormat working, std::span<const AVPixelFormat> offered) {
  std::vector<AVPixelFormat> known;
  for (const AVPixelFormat format : offered) {
    if (without_range(format) == working) return format;
    const AVPixFmtDescriptor* const described = av_pix_fmt_desc_get(format);
    if (described && (described->flags & AV_PIX_FMT_FLAG_HWACCEL) == 0 && sws_isSupportedOutput(format))
      known.push_back(format);
  }
  known.push_back(AV_PIX_FMT_NONE);
  return avcodec_find_best_pix_fmt_of_list(known.data(), working, 0, nullptr);
}

Libav<AVFrame> FrameConverter::convert(const AVFrame& from, AVPixelFormat to) {
  if (without_range(AVPixelFormat(from.format)) == without_range(to)) {
    Libav<AVFrame> same(av_frame_clone(&from));
    if (!same) throw std::bad_alloc();
    same->format = to;
    set_colour(from, *same);
    return same;
  }
  // libswscale reads neither NV16 nor NV20.
  const AVPixelFormat planar = planar_format(AVPixelFormat(from.format));
  const bool is_known = sws_isSupportedInput(AVPixelFormat(from.format)) != 0;
  if (!is_known && planar != to && sws_isSupportedInput(planar)) return convert(*convert(from, planar), to);
  Libav<AVFrame> converted(av_frame_alloc());
  if (!converted || av_frame_copy_props(converted.get(), &from) < 0) throw std::bad_alloc();
  converted->width = from.width;
  converted->height = from.height;
  converted->format = to;
  if (av_frame_get_buffer(converted.get(), 0) < 0) throw std::bad_alloc();
  if (goes_by_samples(from, described(to))) {
    clear(*converted);
    for (int k = 0; k < std::min<int>(described(to).nb_components, 3); ++k) Samples(from, *converted, k).convert();
  } else if (is_deep_yuv(described(from.format)) && is_rgb(described(to)) && described(to).comp[0].depth > 8) {
    clear(*converted);
    fill_deep_rgb(*FrameConverter().convert(from, AV_PIX_FMT_YUV444P12), is_full_range(from), *converted);
  } else {
    scale(from, *converted);
  }
  set_colour(from, *converted);
  return converted;
}

Libav<AVFrame> FrameConverter::to_working(const AVFrame& from) {
  const AVPixelFormat wanted = working_format(AVPixelFormat(from.format));
  if (wanted == AV_PIX_FMT_NONE) {
    const char* const name = av_get_pix_fmt_name(AVPixelFormat(from.format));
    throw std::runtime_error(std::string("pictures of the format ") + (name ? name : "?") + " can't be used");
  }
  return convert(from, wanted);
}

void FrameConverter::scale(const AVFrame& from, AVFrame& to) {
  const AVPixelFormat source = without_range(AVPixelFormat(from.format)), target = without_range(AVPixelFormat(to.format));
  const Kind kind{
      from.width, from.height, source, target, int(is_full_range(from)), matrix_of(from), int(from.chroma_location)};
  if (!scaler_ || kind != kind_) {
    scaler_.reset(sws_alloc_context());
    if (!scaler_) throw std::bad_alloc();
    const Position chroma = chroma_position(from.chroma_location);
    const int target_range = is_rgb_like(source) || is_rgb_like(target) || kind.range != 0;
    const std::pair<const char*, int> options[] = {{"srcw", from.width},
                                                   {"srch", from.height},
                                                   {"dstw", from.width},
                                                   {"dsth", from.height},
                                                   {"src_format", source},
                                                   {"dst_format", target},
                                                   {"src_range", kind.range},
                                                   {"dst_range", target_range},
                                                   {"src_h_chr_pos", chroma.across},
                                                   {"dst_h_chr_pos", chroma.across},
                                                   {"src_v_chr_pos", chroma.down},
                                                   {"dst_v_chr_pos", chroma.down},
                                                   {"sws_flags", kScalerFlags}};
    for (const auto& [name, value] : options) av_opt_set_int(scaler_.get(), name, value, 0);
    if (sws_init_context(scaler_.get(), nullptr, nullptr) < 0) {
      scaler_.reset();
      refuse(from.format, to.format);
    }
    const int* const coefficients = sws_getCoefficients(kind.matrix);
    sws_setColorspaceDetails(scaler_.get(), coefficients, kind.range, coefficients, target_range, 0, 1 << 16, 1 << 16);
    kind_ = kind;
  }
  if (sws_scale(scaler_.get(), from.data, from.linesize, 0, from.height, to.data, to.linesize) != from.height) {
    refuse(from.format, to.format);
  }
}

}  // namespace biseam::tool
