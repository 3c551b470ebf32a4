#include "video/clip_writer.hpp"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <numeric>

#include "failure.hpp"
#include "video/clip_metadata.hpp"
#include "video/libav_log.hpp"
#include "video/mov_boxes.hpp"
#include "video/stream_fit.hpp"

namespace biseam::tool {
namespace {

constexpr AVRational kMicroseconds{1, AV_TIME_BASE};

// The muxer writes these anew.
bool is_subtitle_end(const AVStream& stream, const AVPacket& packet) {
  constexpr int kEmpty = 2;  // the length of a text, 0
  return stream.codecpar->codec_id == AV_CODEC_ID_MOV_TEXT && packet.size == kEmpty && packet.duration == 0;
}

bool is_mov_kind(const AVOutputFormat& format) {
  return std::string(format.name) == "mp4" || std::string(format.name) == "mov";
}

}  // namespace

const AVOutputFormat* clip_format(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(), [](unsigned char c) { return char(std::tolower(c)); });
  if (extension == ".mp4" || extension == ".mov") return av_guess_format(extension.c_str() + 1, nullptr, nullptr);
  return extension == ".mkv" ? av_guess_format("matroska", nullptr, nullptr) : nullptr;
}

ClipWriter::ClipWriter(const ClipWriterSettings& settings, const ClipFacts& facts, const PartReader& part)
    : settings_(settings),
      time_base_(facts.time_base),
      format_(clip_format(settings.path)),
      bytes_(settings.path),
      encoder_(settings.encoder, facts, (format_->flags & AVFMT_GLOBALHEADER) != 0),
      packet_(av_packet_alloc()) {
  AVFormatContext* muxer = nullptr;
  if (!packet_ || avformat_alloc_output_context2(&muxer, format_, nullptr, nullptr) < 0) throw std::bad_alloc();
  muxer_.reset(muxer);
  muxer_->pb = bytes_.context();
  muxer_->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;  // spherical metadata is
  muxer_->avoid_negative_ts = AVFMT_AVOID_NEG_TS_DISABLED;   // times are kept
  add_streams(part.pairs());
  write_header(part);
}

// In the order of the first clip, then what else the second one has.
void ClipWriter::add_streams(const PairReader& clips) {
  for (int k = 0; k < clips.clips(); ++k) {
    const AVFormatContext& format = *clips.clip(k).container().get();
    copied_[k].resize(format.nb_streams);
    for (unsigned index = 0; index < format.nb_streams; ++index) {
      const AVStream& stream = *format.streams[index];
      const bool is_picture = &stream == &clips.clip(k).stream();
      if (is_picture && k == 0) add_picture(stream);
      if (!is_picture && !is_carried_by_metadata(format, stream)) add_copied(k, clips, stream, k == 0 ? 0 : clips.offset());
    }
  }
}

void ClipWriter::add_picture(const AVStream& from) {
  picture_ = avformat_new_stream(muxer_.get(), nullptr);
  if (!picture_ || avcodec_parameters_from_context(picture_->codecpar, &encoder_.context()) < 0) throw std::bad_alloc();
  picture_->time_base = time_base_;
  picture_->avg_frame_rate = encoder_.context().framerate;
  picture_->sample_aspect_ratio = {1, 1};
  copy_picture_metadata(from, *picture_);
  if (settings_.spherical) mark_spherical(*picture_);
}

void ClipWriter::add_copied(int clip, const PairReader& clips, const AVStream& from, std::int64_t offset) {
  Copied& copied = copied_[clip][std::size_t(from.index)];
  copied.text = stream_text(from, clips.clips() == 1 ? "" : clips.clip(clip).container().name());
  const std::string trouble = holding_trouble(*format_, from);
  if (!trouble.empty()) {
    const std::string line = copied.text + " can't be held by " + settings_.path + ": " + trouble;
    if (!settings_.drop_streams) throw Failure(ExitCode::output, line + " (--drop-streams leaves it out)");
    return notice(line + "; it is left out");
  }
  copied.to = avformat_new_stream(muxer_.get(), nullptr);
  if (!copied.to) throw std::bad_alloc();
  copied.base = from.time_base;
  copied.offset = av_rescale_q(offset, kMicroseconds, from.time_base);
  copied.to->time_base = from.time_base;
  copied.to->avg_frame_rate = from.avg_frame_rate;
  copied.to->sample_aspect_ratio = from.sample_aspect_ratio;
  copy_parameters(*format_, from, *copied.to);
  copy_stream_metadata(from, *copied.to);
  if (clip != 0) copied.to->disposition &= ~AV_DISPOSITION_DEFAULT;
}

// Fine enough for the start of every stream.
int ClipWriter::movie_timescale() const {
  constexpr std::int64_t kMost = 1000000000;
  std::int64_t scale = 1000;
  for (unsigned k = 0; k < muxer_->nb_streams; ++k) {
    const std::int64_t finer = std::lcm(scale, std::int64_t(muxer_->streams[k]->time_base.den));
    if (finer <= kMost) scale = finer;
  }
  return int(scale);
}

void ClipWriter::write_header(const PartReader& part) {
  const AVFormatContext& clip = *part.pairs().clip(0).container().get();
  copy_clip_metadata(clip, *muxer_);
  copy_chapters(clip, part.begin(), part.end().value_or(INT64_MAX), part.shift(), *muxer_);
  AVDictionary* options = nullptr;
  if (is_mov_kind(*format_)) {
    av_dict_set_int(&options, "movie_timescale", movie_timescale(), 0);
    if (needs_free_keys(muxer_->metadata)) av_dict_set(&options, "movflags", "+use_metadata_tags", 0);
  }
  const LibavLog log;
  const int status = avformat_write_header(muxer_.get(), &options);
  av_dict_free(&options);
  bytes_.check();
  if (status < 0) throw Failure(ExitCode::output, settings_.path + ": can't be begun: " + log.reason(status));
}

void ClipWriter::write(const AVFrame& panorama, std::int64_t time, std::int64_t duration) {
  encoder_.send(panorama, time, duration);
  write_encoded();
}

void ClipWriter::write_encoded() {
  while (encoder_.receive(*packet_)) {
    packet_->stream_index = picture_->index;
    av_packet_rescale_ts(packet_.get(), time_base_, picture_->time_base);
    put(*packet_, "the panorama");
  }
}

void ClipWriter::copy(int clip, AVPacket& packet) {
  Copied& copied = copied_[clip][std::size_t(packet.stream_index)];
  if (!copied.to || (is_mov_kind(*format_) && is_subtitle_end(*copied.to, packet))) return;
  if (packet.pts != AV_NOPTS_VALUE) packet.pts += copied.offset;
  if (packet.dts != AV_NOPTS_VALUE) packet.dts += copied.offset;
  av_packet_rescale_ts(&packet, copied.base, copied.to->time_base);
  mend_times(copied, packet);
  packet.stream_index = copied.to->index;
  packet.pos = -1;
  put(packet, copied.text);
}

// Muxers refuse times of decoding that go back.
void ClipWriter::mend_times(Copied& copied, AVPacket& packet) const {
  if (packet.dts == AV_NOPTS_VALUE) return;
  const AVMediaType type = copied.to->codecpar->codec_type;
  const bool may_repeat =
      (format_->flags & AVFMT_TS_NONSTRICT) != 0 || type == AVMEDIA_TYPE_SUBTITLE || type == AVMEDIA_TYPE_DATA;
  if (copied.last != AV_NOPTS_VALUE) packet.dts = std::max(packet.dts, copied.last + (may_repeat ? 0 : 1));
  if (packet.pts != AV_NOPTS_VALUE) packet.pts = std::max(packet.pts, packet.dts);
  copied.last = packet.dts;
}

void ClipWriter::put(AVPacket& packet, const std::string& stream) {
  const int status = av_interleaved_write_frame(muxer_.get(), &packet);
  bytes_.check();
  if (status < 0)
    throw Failure(ExitCode::output, settings_.path + ": " + stream + " can't be written: " + libav_reason(status));
}

void ClipWriter::complete_mov() {
  if (!bytes_.is_seekable()) return;
  std::vector<TrackAddition> tracks(muxer_->nb_streams);
  for (std::size_t k = 0; k < tracks.size(); ++k) {
    const AVStream* stream = muxer_->streams[k];
    const AVDictionaryEntry* language = av_dict_get(stream->metadata, "language", nullptr, 0);
    tracks[k] = {stream == picture_ && settings_.spherical, language ? language->value : ""};
  }
  bytes_.flush();
  bytes_.check();
  std::optional<MovieBox> movie = read_movie(bytes_.descriptor());
  if (!movie || !add_to_tracks(movie->bytes, tracks)) {
    return notice(settings_.path + ": could not be marked as a spherical panorama");
  }
  avio_seek(bytes_.context(), movie->at, SEEK_SET);
  avio_write(bytes_.context(), movie->bytes.data(), int(movie->bytes.size()));
}

void ClipWriter::finish() {
  encoder_.finish();
  write_encoded();
  const LibavLog log;
  const int status = av_write_trailer(muxer_.get());
  bytes_.check();
  if (status < 0) throw Failure(ExitCode::output, settings_.path + ": can't be finished: " + log.reason(status));
  if (std::string(format_->name) == "mov") complete_mov();
  bytes_.commit();
}

}  // namespace biseam::tool
