#include "clip/write/clip_writer.hpp"

#include <cstdint>
#include <new>

#include "base/failure.hpp"
#include "clip/write/clip_metadata.hpp"
#include "clip/write/stream_fit.hpp"

namespace biseam::tool {

ClipWriter::ClipWriter(const ClipWriterSettings& settings, const ClipFacts& facts, const PartReader& part)
    : settings_(settings),
      time_base_(facts.time_base),
      rate_(facts.rate),
      muxer_(settings.path, *clip_format(settings.path)),
      encoder_(settings.encoder, facts, (muxer_.format().flags & AVFMT_GLOBALHEADER) != 0),
      packet_(av_packet_alloc()) {
  if (!packet_) throw std::bad_alloc();
  add_streams(part.pairs());
  muxer_.begin(*part.pairs().clip(0).container().get(), {part.begin(), part.end().value_or(INT64_MAX), part.shift()});
}

// In the order of the first clip, then what else the second one has.
void ClipWriter::add_streams(const PairReader& clips) {
  for (int k = 0; k < clips.clips(); ++k) {
    const AVFormatContext& format = *clips.clip(k).container().get();
    copied_[k].resize(format.nb_streams);
    for (unsigned index = 0; index < format.nb_streams; ++index) {
      const AVStream& stream = *format.streams[index];
      if (&stream == &clips.clip(k).stream() && k == 0) add_picture(stream);
      const bool is_given = clips.clip(k).gives(int(index)) && !is_carried_by_metadata(format, stream);
      if (is_given) add_copied(k, clips, stream, k == 0 ? 0 : clips.offset());
    }
  }
}

void ClipWriter::add_picture(const AVStream& from) {
  picture_ = &muxer_.add_stream();
  encoder_.describe(*picture_->codecpar);
  const std::string trouble = encoded_trouble(muxer_.format(), *picture_->codecpar);
  if (!trouble.empty()) {
    throw Failure(ExitCode::output,
                  settings_.path + " can't hold what the encoder " + settings_.encoder.name + " makes: " + trouble);
  }
  tag_for_players(muxer_.format(), *picture_->codecpar);
  picture_->time_base = time_base_;
  picture_->avg_frame_rate = rate_;
  picture_->sample_aspect_ratio = {1, 1};
  copy_picture_metadata(from, *picture_);
  if (settings_.spherical) mark_spherical(*picture_);
}

void ClipWriter::add_copied(int clip, const PairReader& clips, const AVStream& from, std::int64_t offset) {
  const std::string text = stream_text(from, clips.clips() == 1 ? "" : clips.clip(clip).container().name());
  const std::string trouble = holding_trouble(muxer_.format(), from);
  if (!trouble.empty()) {
    const std::string line = text + " can't be held by " + settings_.path + ": " + trouble;
    if (!settings_.drop_streams) throw Failure(ExitCode::output, line + " (--drop-streams leaves it out)");
    return notice(line + "; it is left out");
  }
  CopiedStream& copied = copied_[clip][std::size_t(from.index)] = muxer_.add_copied(from, text);
  copied.offset = av_rescale_q(offset, kMicroseconds, from.time_base);
  // Players choose the first clip's streams by themselves.
  if (clip != 0) copied.to->disposition &= ~AV_DISPOSITION_DEFAULT;
}

void ClipWriter::write(const AVFrame& panorama, std::int64_t time, std::int64_t duration) {
  encoder_.send(panorama, time, duration);
  write_encoded();
}

void ClipWriter::write_encoded() {
  while (encoder_.receive(*packet_)) {
    packet_->stream_index = picture_->index;
    av_packet_rescale_ts(packet_.get(), time_base_, picture_->time_base);
    muxer_.put(*packet_, "the panorama");
  }
}

void ClipWriter::copy(int clip, AVPacket& packet) { muxer_.copy(copied_[clip][std::size_t(packet.stream_index)], packet); }

void ClipWriter::finish() {
  encoder_.finish();
  write_encoded();
  if (!muxer_.end()) notice(settings_.path + ": could not be marked as a spherical panorama");
  muxer_.commit();
}

}  // namespace biseam::tool
