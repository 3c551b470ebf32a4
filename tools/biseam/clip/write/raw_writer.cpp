#include "clip/write/raw_writer.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <cstdlib>
#include <new>

#include "base/failure.hpp"
#include "clip/write/stream_fit.hpp"
#include "media/frame_bytes.hpp"
#include "media/pixel_format.hpp"

namespace biseam::tool {
namespace {

// What y4m can say.
constexpr AVPixelFormat kY4mFormats[] = {AV_PIX_FMT_YUV420P,   AV_PIX_FMT_YUV422P,   AV_PIX_FMT_YUV444P,   AV_PIX_FMT_GRAY8,
                                         AV_PIX_FMT_YUV420P10, AV_PIX_FMT_YUV422P10, AV_PIX_FMT_YUV444P10, AV_PIX_FMT_YUV420P12,
                                         AV_PIX_FMT_YUV422P12, AV_PIX_FMT_YUV444P12};
constexpr AVPixelFormat kRawFormats[] = {AV_PIX_FMT_NV12};

AVPixelFormat written_format(RawKind kind, AVPixelFormat panoramas) {
  return kind == RawKind::y4m ? nearest_format(panoramas, kY4mFormats) : nearest_format(panoramas, kRawFormats);
}

// How y4m names a position of chroma samples.
const char* siting_text(AVChromaLocation siting) {
  switch (siting) {
    case AVCHROMA_LOC_LEFT:
      return "mpeg2";
    case AVCHROMA_LOC_TOPLEFT:
      return "paldv";
    default:
      return "jpeg";
  }
}

// Programs of today read the field X where the depth isn't 8.
std::string sampling_text(AVPixelFormat format, AVChromaLocation siting) {
  const AVPixFmtDescriptor& known = *av_pix_fmt_desc_get(format);
  if (known.nb_components < 3) return "Cmono";
  const std::string chroma = known.log2_chroma_w == 0 ? "444" : known.log2_chroma_h == 0 ? "422" : "420";
  const int bits = known.comp[0].depth;
  if (bits == 8) return "C" + chroma + (chroma == "420" ? siting_text(siting) : "");
  return "C" + chroma + "p" + std::to_string(bits) + " XYSCSS=" + chroma + "P" + std::to_string(bits);
}

std::string y4m_header(const ClipFacts& facts, AVPixelFormat format) {
  const AVRational rate = facts.rate.num > 0 ? facts.rate : AVRational{25, 1};
  std::string header = "YUV4MPEG2 W" + std::to_string(facts.size.width) + " H" + std::to_string(facts.size.height) + " F" +
                       std::to_string(rate.num) + ":" + std::to_string(rate.den) + " Ip A1:1 " +
                       sampling_text(format, facts.colour.siting);
  const bool was_rgb = (av_pix_fmt_desc_get(facts.format)->flags & AV_PIX_FMT_FLAG_RGB) != 0;
  if (was_rgb || facts.colour.range == AVCOL_RANGE_JPEG) header += " XCOLORRANGE=FULL";
  if (!was_rgb && facts.colour.range == AVCOL_RANGE_MPEG) header += " XCOLORRANGE=LIMITED";
  return header + "\n";
}

[[noreturn]] void refuse(const std::string& name, const std::string& stream) {
  throw Failure(ExitCode::output, name + ": " + stream + " (--drop-streams leaves it out)");
}

void refuse_streams(const std::string& name, const PairReader& clips, bool drop_streams) {
  for (int k = 0; k < clips.clips(); ++k) {
    const AVFormatContext& format = *clips.clip(k).container().get();
    for (unsigned index = 0; index < format.nb_streams; ++index) {
      const AVStream& stream = *format.streams[index];
      if (!clips.clip(k).gives(int(index))) continue;
      const std::string clip = clips.clips() == 1 ? "" : clips.clip(k).container().name();
      const std::string line = stream_text(stream, clip) + " can't be held by raw frames";
      if (!drop_streams) refuse(name, line);
      notice(line + "; it is left out");
    }
  }
}

void append(std::vector<std::uint8_t>& to, std::string_view text) { to.insert(to.end(), text.begin(), text.end()); }

}  // namespace

RawWriter::RawWriter(const RawWriterSettings& settings, const ClipFacts& facts, const PairReader& clips)
    : kind_(settings.kind),
      file_(settings.path),
      format_(written_format(settings.kind, facts.format)),
      colour_(facts.colour),
      base_(facts.time_base),
      rate_(facts.rate) {
  refuse_streams(file_.name(), clips, settings.drop_streams);
  const std::string loss = loss_text(facts.format, format_);
  if (!loss.empty()) notice(file_.name() + ": " + loss);
  if (kind_ == RawKind::y4m) append(bytes_, y4m_header(facts, format_));
}

void RawWriter::note_time(std::int64_t time) {
  if (!first_) first_ = time;
  if (rate_.num <= 0) return;
  const AVRational half{rate_.den, 2 * rate_.num}, quarter{rate_.den, 4 * rate_.num};
  const std::int64_t distance = std::abs(time - *first_ - av_rescale_q(frames_, av_inv_q(rate_), base_));
  const std::int64_t step = std::abs(time - last_ - av_rescale_q(1, av_inv_q(rate_), base_));
  const bool jumps = frames_++ > 0 && av_compare_ts(step, base_, 1, quarter) > 0;
  if (jumps || av_compare_ts(distance, base_, 1, half) > 0) ++uneven_;
  last_ = time;
}

void RawWriter::finish() {
  file_.commit();
  if (uneven_ > 0) notice(file_.name() + ": the times of " + std::to_string(uneven_) + " frames can't be held by raw frames");
}

void RawWriter::write(const AVFrame& panorama, std::int64_t time, std::int64_t) {
  note_time(time);
  if (kind_ == RawKind::y4m) append(bytes_, "FRAME\n");
  const Libav<AVFrame> tagged(av_frame_clone(&panorama));
  if (!tagged) throw std::bad_alloc();
  set_colour(*tagged, colour_);
  const Libav<AVFrame> frame = converter_.convert(*tagged, format_);
  append_frame(*frame, bytes_);
  file_.write(bytes_);
  bytes_.clear();
}

}  // namespace biseam::tool
