#include "media/pixel_format.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string_view>

namespace biseam::tool {
namespace {

struct Known {
  AVPixelFormat format;
  BiseamFormat engine;
};
// BISEAM_P012 has no name in libavutil 57.
constexpr Known kKnown[] = {
    {AV_PIX_FMT_NV12, BISEAM_NV12},         {AV_PIX_FMT_NV21, BISEAM_NV21},         {AV_PIX_FMT_NV16, BISEAM_NV16},
    {AV_PIX_FMT_NV24, BISEAM_NV24},         {AV_PIX_FMT_YUV420P, BISEAM_I420},      {AV_PIX_FMT_YUV422P, BISEAM_I422},
    {AV_PIX_FMT_YUV444P, BISEAM_I444},      {AV_PIX_FMT_GRAY8, BISEAM_GRAY8},       {AV_PIX_FMT_GBRP, BISEAM_GBR},
    {AV_PIX_FMT_P010, BISEAM_P010},         {AV_PIX_FMT_P210, BISEAM_P210},         {AV_PIX_FMT_YUV420P10, BISEAM_I420P10},
    {AV_PIX_FMT_YUV422P10, BISEAM_I422P10}, {AV_PIX_FMT_YUV444P10, BISEAM_I444P10}, {AV_PIX_FMT_GBRP10, BISEAM_GBRP10},
    {AV_PIX_FMT_YUV420P12, BISEAM_I420P12}, {AV_PIX_FMT_YUV422P12, BISEAM_I422P12}, {AV_PIX_FMT_YUV444P12, BISEAM_I444P12},
    {AV_PIX_FMT_GBRP12, BISEAM_GBRP12}};

// The same layout without a range.
struct Ranged {
  AVPixelFormat format, plain;
};
constexpr Ranged kRanged[] = {{AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUV420P},
                              {AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUV422P},
                              {AV_PIX_FMT_YUVJ444P, AV_PIX_FMT_YUV444P}};

AVPixelFormat without_range(AVPixelFormat format) {
  const auto* found = std::find_if(std::begin(kRanged), std::end(kRanged), [&](const Ranged& r) { return r.format == format; });
  return found == std::end(kRanged) ? format : found->plain;
}

// By the number of bits, 8, 10 and 12.
struct Family {
  AVPixelFormat depths[3];
};
constexpr Family kRgb{{AV_PIX_FMT_GBRP, AV_PIX_FMT_GBRP10, AV_PIX_FMT_GBRP12}};
constexpr Family kFull{{AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUV444P10, AV_PIX_FMT_YUV444P12}};
constexpr Family kHalf{{AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV422P10, AV_PIX_FMT_YUV422P12}};
constexpr Family kQuarter{{AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV420P10, AV_PIX_FMT_YUV420P12}};
// The engine's gray has 8 bits.  16 bits of gray are pictures' and go on as RGB does; codecs of clips give 9 to 14, whose range
// may be limited.
constexpr Family kGray{{AV_PIX_FMT_GRAY8, AV_PIX_FMT_YUV420P10, AV_PIX_FMT_YUV420P12}};

bool is_bayer(const AVPixFmtDescriptor& format) { return (format.flags & AV_PIX_FMT_FLAG_BAYER) != 0; }

// Bits of a sample.
int depth_of(const AVPixFmtDescriptor& format) {
  const int green = format.comp[format.nb_components < 3 ? 0 : 1].depth;  // which has the most in packed RGB
  return is_bayer(format) ? 2 * green : green;                            // described by the mean over the mosaic
}

// With three components of its own, of whatever layout.
bool is_rgb(const AVPixFmtDescriptor& format) {
  return (format.flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0 || std::string_view(format.name).starts_with("xyz");
}

std::string chroma_name(const AVPixFmtDescriptor& format) {
  const int w = format.log2_chroma_w, h = format.log2_chroma_h;
  return w == 0 ? h == 0 ? "4:4:4" : "4:4:0" : w == 1 ? h == 0 ? "4:2:2" : "4:2:0" : h == 0 ? "4:1:1" : "4:1:0";
}

Family family_of(const AVPixFmtDescriptor& format) {
  if (is_rgb(format)) return kRgb;
  if (format.nb_components < 3) return depth_of(format) >= 16 ? kRgb : kGray;
  if (format.log2_chroma_w == 0) return kFull;
  return format.log2_chroma_h == 0 ? kHalf : kQuarter;
}

}  // namespace

std::optional<BiseamFormat> engine_format(AVPixelFormat format) {
  const AVPixelFormat plain = without_range(format);
  const auto* found = std::find_if(std::begin(kKnown), std::end(kKnown), [&](const Known& k) { return k.format == plain; });
  if (found == std::end(kKnown)) return std::nullopt;
  return found->engine;
}

AVPixelFormat working_format(AVPixelFormat format) {
  if (engine_format(format)) return without_range(format);
  const AVPixFmtDescriptor* known = av_pix_fmt_desc_get(format);
  if (!known || (known->flags & AV_PIX_FMT_FLAG_HWACCEL) != 0) return AV_PIX_FMT_NONE;
  if (format == AV_PIX_FMT_UYYVYY411) return AV_PIX_FMT_NONE;  // no part of libav reads its samples
  return planar_format(format);
}

AVPixelFormat planar_format(AVPixelFormat format) {
  const AVPixFmtDescriptor& known = *av_pix_fmt_desc_get(format);
  const int depth = depth_of(known);
  return family_of(known).depths[depth <= 8 ? 0 : depth <= 10 ? 1 : 2];
}

std::string loss_text(AVPixelFormat from, AVPixelFormat to) {
  const AVPixFmtDescriptor &a = *av_pix_fmt_desc_get(from), &b = *av_pix_fmt_desc_get(to);
  std::string text;
  const auto add = [&](const std::string& loss) { text += (text.empty() ? "" : ", ") + loss; };
  const int bits = depth_of(a), left = depth_of(b);
  if (left < bits) add("samples of " + std::to_string(bits) + " bits are rounded to " + std::to_string(left));
  if (is_rgb(a) && !is_rgb(b)) add("RGB becomes BT.601 with full range");
  const bool has_chroma = a.nb_components >= 3, keeps_chroma = b.nb_components >= 3;
  if (has_chroma && !keeps_chroma) add("colour is left out");
  const bool is_coarser = b.log2_chroma_w > a.log2_chroma_w || b.log2_chroma_h > a.log2_chroma_h;
  if (has_chroma && keeps_chroma && is_coarser) add("chroma is resampled to " + chroma_name(b));
  return text;
}

std::string working_loss(AVPixelFormat format) {
  const AVPixelFormat to = working_format(format);
  const std::string loss = to == AV_PIX_FMT_NONE ? "" : loss_text(format, to);
  return loss.empty() ? "" : "its " + loss;
}

bool says_full_range(AVPixelFormat format) {
  const AVPixFmtDescriptor* known = av_pix_fmt_desc_get(format);
  return known && std::string_view(known->name).starts_with("yuvj");
}

BiseamTransfer engine_transfer(AVColorTransferCharacteristic transfer) {
  switch (transfer) {
    case AVCOL_TRC_BT709:
    case AVCOL_TRC_SMPTE170M:
    case AVCOL_TRC_SMPTE240M:
    case AVCOL_TRC_BT2020_10:
    case AVCOL_TRC_BT2020_12:
      return BISEAM_TRANSFER_BT709;
    case AVCOL_TRC_IEC61966_2_1:
      return BISEAM_TRANSFER_SRGB;
    case AVCOL_TRC_GAMMA22:
    case AVCOL_TRC_GAMMA28:
    case AVCOL_TRC_LINEAR:
      return BISEAM_TRANSFER_POWER;
    case AVCOL_TRC_LOG:
    case AVCOL_TRC_LOG_SQRT:
    case AVCOL_TRC_SMPTE2084:
    case AVCOL_TRC_ARIB_STD_B67:
      return BISEAM_TRANSFER_LOG;
    default:
      return BISEAM_TRANSFER_USUAL;
  }
}

BiseamSiting engine_siting(AVChromaLocation location) {
  switch (location) {
    case AVCHROMA_LOC_CENTER:
    case AVCHROMA_LOC_TOP:
    case AVCHROMA_LOC_BOTTOM:
      return BISEAM_SITING_MIDDLE;
    case AVCHROMA_LOC_TOPLEFT:
      return BISEAM_SITING_TOP_LEFT;
    default:
      return BISEAM_SITING_LEFT;
  }
}

BiseamPicture engine_picture(const AVFrame& frame) {
  const std::optional<BiseamFormat> format = engine_format(AVPixelFormat(frame.format));
  if (!format) throw std::logic_error("a picture that is in no working format");
  BiseamPicture picture = biseam_picture_defaults();
  picture.format = *format;
  picture.width = frame.width;
  picture.height = frame.height;
  picture.siting = engine_siting(frame.chroma_location);
  for (int plane = 0; plane < 3; ++plane) {
    picture.planes[plane] = frame.data[plane];
    picture.strides[plane] = frame.linesize[plane];
  }
  return picture;
}

}  // namespace biseam::tool
