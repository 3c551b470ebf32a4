#include "clip/write/clip_muxer.hpp"

#include <algorithm>
#include <new>
#include <numeric>

#include "base/extension.hpp"
#include "base/failure.hpp"
#include "clip/write/clip_metadata.hpp"
#include "clip/write/stream_fit.hpp"
#include "media/libav_log.hpp"

namespace biseam::tool {
namespace {

// The muxer writes these anew.
bool is_subtitle_end(const AVStream& stream, const AVPacket& packet) {
  constexpr int kEmpty = 2;  // the length of a text, 0
  return stream.codecpar->codec_id == AV_CODEC_ID_MOV_TEXT && packet.size == kEmpty && packet.duration == 0;
}

}  // namespace

const AVOutputFormat* clip_format(const std::string& path) {
  const std::string extension = extension_of(path);
  if (extension == ".mp4" || extension == ".mov") return av_guess_format(extension.c_str() + 1, nullptr, nullptr);
  return extension == ".mkv" ? av_guess_format("matroska", nullptr, nullptr) : nullptr;
}

ClipMuxer::ClipMuxer(const std::string& path, const AVOutputFormat& format) : path_(path), format_(format), bytes_(path) {
  AVFormatContext* muxer = nullptr;
  if (avformat_alloc_output_context2(&muxer, &format_, nullptr, nullptr) < 0) throw std::bad_alloc();
  muxer_.reset(muxer);
  muxer_->pb = bytes_.context();
  muxer_->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;  // spherical metadata is
  if (!is_mov_kind()) muxer_->flags |= AVFMT_FLAG_BITEXACT;  // no random numbers
  muxer_->avoid_negative_ts = AVFMT_AVOID_NEG_TS_DISABLED;   // times are kept
}

bool ClipMuxer::is_mov_kind() const { return std::string(format_.name) == "mp4" || std::string(format_.name) == "mov"; }

AVStream& ClipMuxer::add_stream() {
  AVStream* stream = avformat_new_stream(muxer_.get(), nullptr);
  if (!stream) throw std::bad_alloc();
  return *stream;
}

CopiedStream ClipMuxer::add_copied(const AVStream& from, const std::string& text) {
  CopiedStream copied;
  copied.text = text;
  copied.to = &add_stream();
  copied.base = from.time_base;
  copied.to->time_base = from.time_base;
  copied.to->avg_frame_rate = from.avg_frame_rate;
  copied.to->sample_aspect_ratio = from.sample_aspect_ratio;
  copy_parameters(format_, from, *copied.to);
  copy_stream_metadata(from, *copied.to);
  return copied;
}

// The muxer writes either free keys or covers.
bool ClipMuxer::takes_free_keys() const {
  if (!needs_free_keys(muxer_->metadata)) return false;
  for (unsigned k = 0; k < muxer_->nb_streams; ++k) {
    if ((muxer_->streams[k]->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0) continue;
    notice(path_ + ": beside a cover picture only metadata with the usual keys can be held, the rest is left out");
    return false;
  }
  return true;
}

// Fine enough for the start of every stream.
int ClipMuxer::movie_timescale() const {
  constexpr std::int64_t kMost = 1000000000;
  std::int64_t scale = 1000;
  for (unsigned k = 0; k < muxer_->nb_streams; ++k) {
    const std::int64_t finer = std::lcm(scale, std::int64_t(muxer_->streams[k]->time_base.den));
    if (finer <= kMost) scale = finer;
  }
  return int(scale);
}

// The muxer writes both into MP4 files itself.  It numbers tracks from 1 by their streams, and its index leaves out those
// without packets.
std::vector<TrackAddition> ClipMuxer::track_additions() const {
  if (std::string(format_.name) != "mov") return {};
  std::vector<TrackAddition> tracks(muxer_->nb_streams);
  for (std::size_t k = 0; k < tracks.size(); ++k) {
    const AVStream* stream = muxer_->streams[k];
    const AVDictionaryEntry* language = av_dict_get(stream->metadata, "language", nullptr, 0);
    tracks[k] = {std::uint32_t(k + 1), is_whole_sphere(*stream), language ? language->value : ""};
  }
  return tracks;
}

void ClipMuxer::begin(const AVFormatContext& clip, const ClipSpan& span) {
  copy_clip_metadata(clip, *muxer_);
  copy_chapters(clip, span, *muxer_);
  begin();
}

void ClipMuxer::begin() {
  AVDictionary* options = nullptr;
  if (is_mov_kind()) {
    av_dict_set_int(&options, "movie_timescale", movie_timescale(), 0);
    if (takes_free_keys()) av_dict_set(&options, "movflags", "+use_metadata_tags", 0);
  }
  if (is_mov_kind() && bytes_.is_seekable()) movie_.emplace(bytes_, *muxer_, track_additions());
  const LibavLog log;
  const int status = movie_ ? movie_->begin(&options) : avformat_write_header(muxer_.get(), &options);
  av_dict_free(&options);
  bytes_.check();
  if (status < 0) throw Failure(ExitCode::output, path_ + ": can't be begun: " + log.reason(status));
}

void ClipMuxer::copy(CopiedStream& stream, AVPacket& packet) {
  if (!stream.to || (is_mov_kind() && is_subtitle_end(*stream.to, packet))) return;
  if (packet.pts != AV_NOPTS_VALUE) packet.pts += stream.offset;
  if (packet.dts != AV_NOPTS_VALUE) packet.dts += stream.offset;
  av_packet_rescale_ts(&packet, stream.base, stream.to->time_base);
  mend_times(stream, packet);
  packet.stream_index = stream.to->index;
  packet.pos = -1;
  put(packet, stream.text);
}

// Muxers refuse times of decoding that go back.
void ClipMuxer::mend_times(CopiedStream& stream, AVPacket& packet) const {
  if (packet.dts == AV_NOPTS_VALUE) return;
  const AVMediaType type = stream.to->codecpar->codec_type;
  const bool may_repeat =
      (format_.flags & AVFMT_TS_NONSTRICT) != 0 || type == AVMEDIA_TYPE_SUBTITLE || type == AVMEDIA_TYPE_DATA;
  if (stream.last != AV_NOPTS_VALUE) packet.dts = std::max(packet.dts, stream.last + (may_repeat ? 0 : 1));
  if (packet.pts != AV_NOPTS_VALUE) packet.pts = std::max(packet.pts, packet.dts);
  stream.last = packet.dts;
}

void ClipMuxer::put(AVPacket& packet, const std::string& stream) {
  const int status = movie_ ? movie_->put(packet) : av_interleaved_write_frame(muxer_.get(), &packet);
  bytes_.check();
  if (status < 0) throw Failure(ExitCode::output, path_ + ": " + stream + " can't be written: " + libav_reason(status));
}

bool ClipMuxer::end() {
  const LibavLog log;
  const int status = movie_ ? movie_->end() : av_write_trailer(muxer_.get());
  bytes_.check();
  if (status < 0) throw Failure(ExitCode::output, path_ + ": can't be finished: " + log.reason(status));
  return !movie_ || movie_->has_additions();
}

}  // namespace biseam::tool
