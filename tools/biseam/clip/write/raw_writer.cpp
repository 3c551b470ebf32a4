#include "clip/write/raw_writer.hpp"

#include <cstdlib>

#include "base/failure.hpp"
#include "clip/write/stream_fit.hpp"
#include "picture/plane.hpp"

namespace biseam::tool {
namespace {

// How y4m names a position of chroma samples.
const char* siting_text(AVChromaLocation siting) {
  switch (siting) {
    case AVCHROMA_LOC_LEFT:
      return "420mpeg2";
    case AVCHROMA_LOC_TOPLEFT:
      return "420paldv";
    default:
      return "420jpeg";
  }
}

std::string y4m_header(const ClipFacts& facts) {
  const AVRational rate = facts.rate.num > 0 ? facts.rate : AVRational{25, 1};
  std::string header = "YUV4MPEG2 W" + std::to_string(facts.size.width) + " H" + std::to_string(facts.size.height) + " F" +
                       std::to_string(rate.num) + ":" + std::to_string(rate.den) + " Ip A1:1 C" +
                       siting_text(facts.colour.siting);
  if (facts.colour.range == AVCOL_RANGE_JPEG) header += " XCOLORRANGE=FULL";
  if (facts.colour.range == AVCOL_RANGE_MPEG) header += " XCOLORRANGE=LIMITED";
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
    : kind_(settings.kind), file_(settings.path), base_(facts.time_base), rate_(facts.rate) {
  refuse_streams(file_.name(), clips, settings.drop_streams);
  if (kind_ == RawKind::y4m) append(bytes_, y4m_header(facts));
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
  add_rows(panorama, 0, panorama.height);
  if (kind_ == RawKind::nv12) add_rows(panorama, 1, panorama.height / 2);
  if (kind_ == RawKind::y4m) add_chroma_planes(panorama);
  file_.write(bytes_);
  bytes_.clear();
}

void RawWriter::add_rows(const AVFrame& panorama, int plane, int rows) {
  for (int y = 0; y < rows; ++y) {
    const std::uint8_t* row = panorama.data[plane] + std::ptrdiff_t(y) * panorama.linesize[plane];
    bytes_.insert(bytes_.end(), row, row + panorama.width);
  }
}

void RawWriter::add_chroma_planes(const AVFrame& panorama) {
  const std::size_t width = std::size_t(panorama.width), rows = std::size_t(panorama.height) / 2, at = bytes_.size();
  bytes_.resize(at + width * rows);
  std::uint8_t* const cb = &bytes_[at];
  const std::ptrdiff_t stride = panorama.width / 2;
  part_chroma({panorama.data[1], panorama.linesize[1], width, rows}, {cb, cb + stride * std::ptrdiff_t(rows), stride, stride});
}

}  // namespace biseam::tool
