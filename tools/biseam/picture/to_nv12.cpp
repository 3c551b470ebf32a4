#include "picture/to_nv12.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <stdexcept>

#include "picture/convert_rgb.hpp"
#include "picture/plane.hpp"

namespace biseam::tool {
namespace {

constexpr std::uint64_t kUnreadable = AV_PIX_FMT_FLAG_BE | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM |
                                      AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER | AV_PIX_FMT_FLAG_FLOAT;

// Thresholds of an ordered dither, every value from 0 to 63 once.
constexpr std::uint8_t kThresholds[8][8] = {{0, 32, 8, 40, 2, 34, 10, 42},  {48, 16, 56, 24, 50, 18, 58, 26},
                                            {12, 44, 4, 36, 14, 46, 6, 38}, {60, 28, 52, 20, 62, 30, 54, 22},
                                            {3, 35, 11, 43, 1, 33, 9, 41},  {51, 19, 59, 27, 49, 17, 57, 25},
                                            {15, 47, 7, 39, 13, 45, 5, 37}, {63, 31, 55, 23, 61, 29, 53, 21}};

// Samples of one component of any format.
class Component {
 public:
  Component(const AVFrame& frame, const AVPixFmtDescriptor& format, int index)
      : place_(format.comp[index]),
        data_(frame.data[place_.plane] + place_.offset),
        stride_(frame.linesize[place_.plane]),
        mask_((1u << place_.depth) - 1) {}

  int depth() const { return place_.depth; }

  unsigned at(int x, int y) const {
    const std::uint8_t* from = data_ + std::ptrdiff_t(y) * stride_ + std::ptrdiff_t(x) * place_.step;
    const unsigned bits = place_.depth > 8 ? unsigned(from[0] | from[1] << 8) : from[0];
    return bits >> place_.shift & mask_;
  }

 private:
  const AVComponentDescriptor& place_;
  const std::uint8_t* data_;
  std::ptrdiff_t stride_;
  unsigned mask_;
};

// Sums of samples with `extra` bits more than 8 to 8 bits.  Sums of 8-bit samples are rounded, deeper ones dithered.
std::uint8_t to_8_bits(unsigned sum, int extra, bool dithered, int x, int y) {
  const unsigned threshold = unsigned(kThresholds[y & 7][x & 7]) << extra >> 6;
  const unsigned rounding = dithered ? threshold : (1u << extra) >> 1;
  return std::uint8_t(std::min((sum + rounding) >> extra, 255u));
}

void convert_luma(const Component& from, Nv12& to) {
  const int extra = from.depth() - 8;
  for (int y = 0; y < to.height; ++y) {
    std::uint8_t* row = &to.luma[std::size_t(y) * std::size_t(to.width)];
    for (int x = 0; x < to.width; ++x) row[x] = to_8_bits(from.at(x, y), extra, extra > 0, x, y);
  }
}

// The mean of what lies in the 2 x 2 block of a pair; coarser samples serve several pairs.
void convert_chroma(const Component& from, const AVPixFmtDescriptor& format, int index, Nv12& to) {
  const int across = format.log2_chroma_w, down = format.log2_chroma_h;
  const int columns = across == 0 ? 2 : 1, rows = down == 0 ? 2 : 1, deeper = from.depth() - 8;
  const int extra = deeper + (columns * rows == 4 ? 2 : columns * rows - 1);
  for (int y = 0; y < to.height / 2; ++y) {
    std::uint8_t* row = &to.chroma[std::size_t(y) * std::size_t(to.width)] + index;
    for (int x = 0; x < to.width / 2; ++x) {
      unsigned sum = 0;
      for (int k = 0; k < columns * rows; ++k) {
        sum += from.at((2 * x >> across) + k % columns, (2 * y >> down) + k / columns);
      }
      row[2 * x] = to_8_bits(sum, extra, deeper > 0, x, y);
    }
  }
}

void convert(const AVFrame& frame, const AVPixFmtDescriptor& format, Nv12& to) {
  to.resize(frame.width & ~1, frame.height & ~1);
  convert_luma(Component(frame, format, 0), to);
  if (format.nb_components < 3) {
    constexpr std::uint8_t kGray = 128;
    std::fill(to.chroma.begin(), to.chroma.end(), kGray);
    return;
  }
  for (int index = 0; index < 2; ++index) convert_chroma(Component(frame, format, index + 1), format, index, to);
}

void convert_rgb(const AVFrame& frame, Nv12& to) {
  Rgb rgb;
  if (!convert_to_rgb(frame, rgb)) throw std::runtime_error("pictures that can't be converted");
  to = to_nv12(rgb);
}

bool is_quarter_chroma(const AVPixFmtDescriptor& format) { return format.log2_chroma_w == 1 && format.log2_chroma_h == 1; }

}  // namespace

FormatPlan plan_format(AVPixelFormat format) {
  FormatPlan plan;
  const AVPixFmtDescriptor* known = av_pix_fmt_desc_get(format);
  if (!known) return plan;
  plan.from_rgb = (known->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
  if (plan.from_rgb) {
    plan.usable = (known->flags & AV_PIX_FMT_FLAG_HWACCEL) == 0;
    return plan;
  }
  plan.usable = (known->flags & kUnreadable) == 0 && known->comp[0].depth >= 8 && known->comp[0].depth <= 16;
  plan.dithered = known->comp[0].depth > 8;
  plan.resampled = known->nb_components >= 3 && !is_quarter_chroma(*known);
  return plan;
}

std::string loss_text(AVPixelFormat format) {
  const FormatPlan plan = plan_format(format);
  if (plan.from_rgb) return "its RGB pictures become BT.601 with full range";
  std::string text;
  if (plan.dithered) {
    text = "its pictures of " + std::to_string(av_pix_fmt_desc_get(format)->comp[0].depth) + " bits are dithered to 8";
  }
  if (plan.resampled) text += std::string(text.empty() ? "its" : ", their") + " chroma is resampled to 4:2:0";
  return text;
}

Nv12View nv12_of(const AVFrame& frame, Nv12& memory) {
  const auto format = AVPixelFormat(frame.format);
  Nv12View view;
  view.width = frame.width & ~1;
  view.height = frame.height & ~1;
  view.luma = frame.data[0];
  view.luma_stride = frame.linesize[0];
  view.chroma = frame.data[1];
  view.chroma_stride = frame.linesize[1];
  if (format == AV_PIX_FMT_NV12) return view;
  if (format == AV_PIX_FMT_YUV420P || format == AV_PIX_FMT_YUVJ420P) {
    const std::size_t width = std::size_t(view.width), rows = std::size_t(view.height) / 2;
    memory.chroma.resize(width * rows);
    join_chroma({frame.data[1], frame.data[2], frame.linesize[1], frame.linesize[2]}, width, rows, memory.chroma.data());
    view.chroma = memory.chroma.data();
    view.chroma_stride = view.width;
    return view;
  }
  const FormatPlan plan = plan_format(format);
  if (!plan.usable) throw std::logic_error("pictures of an unusable format");
  plan.from_rgb ? convert_rgb(frame, memory) : convert(frame, *av_pix_fmt_desc_get(format), memory);
  return memory;
}

}  // namespace biseam::tool
