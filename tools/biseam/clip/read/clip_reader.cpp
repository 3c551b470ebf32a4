#include "clip/read/clip_reader.hpp"

#include <algorithm>
#include <cstring>

#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "media/decoder.hpp"
#include "text/time_text.hpp"

namespace biseam::tool {
namespace {

constexpr std::int64_t kSlack = AV_TIME_BASE / 4;  // how much earlier than announced a whole clip may end

bool has_picture_in_every_packet(const AVCodecParameters& video) {
  const bool may_be_hidden = video.codec_id == AV_CODEC_ID_VP8 || video.codec_id == AV_CODEC_ID_VP9;
  const bool may_be_field = video.field_order != AV_FIELD_PROGRESSIVE && video.field_order != AV_FIELD_UNKNOWN;
  return !may_be_hidden && !may_be_field;
}

}  // namespace

ClipReader::ClipReader(std::unique_ptr<Container> container, bool strict)
    : container_(std::move(container)), strict_(strict), packet_(av_packet_alloc()) {
  const int index = av_find_best_stream(container_->get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  if (index < 0) container_->refuse("has no video");
  open(index);
}

ClipReader::ClipReader(std::unique_ptr<Container> container, bool strict, const LensStreams& lenses, int lens)
    : container_(std::move(container)), strict_(strict), lenses_(lenses), packet_(av_packet_alloc()) {
  open(lenses[std::size_t(lens)]);
}

void ClipReader::open(int index) {
  if (!packet_) throw std::bad_alloc();
  stream_ = (*container_)->streams[index];
  times_ = FrameTimes(has_picture_in_every_packet(*stream_->codecpar));
  const std::string kind = avcodec_get_name(stream_->codecpar->codec_id);
  const std::string subject = "stream " + std::to_string(stream_->index) + " (video, " + kind + ")";
  decoder_ = open_decoder(*container_, *stream_, {subject, 0, 0});
}

bool ClipReader::gives(int stream) const {
  if (stream == stream_->index) return false;
  return !lenses_ || (stream_->index == lenses_->front() && stream != lenses_->back());
}

void ClipReader::start_at(std::int64_t time) {
  if (!container_->is_seekable()) return;
  wanted_from_ = av_rescale_q_rnd(time, kMicroseconds, stream_->time_base, AV_ROUND_DOWN);
  const bool starts = stream_->start_time != AV_NOPTS_VALUE;
  const std::int64_t start = starts ? av_rescale_q(stream_->start_time, stream_->time_base, kMicroseconds) : 0;
  // Where decoding can begin is not known beforehand.
  for (std::int64_t back = AV_TIME_BASE; time - back > start; back *= 4) {
    if (!seek(time - back)) break;
    std::optional<ClipFrame> first = next();
    if (!first || first->time > wanted_from_) continue;
    ready_.push_front(*first);
    return;
  }
  if ((sought_ || packets_read_ > 0) && !seek(start)) container_->refuse("its beginning can't be found again");
}

bool ClipReader::seek(std::int64_t time) {
  const std::int64_t target = av_rescale_q(time, kMicroseconds, stream_->time_base);
  if (av_seek_frame(container_->get(), stream_->index, target, AVSEEK_FLAG_BACKWARD) < 0) return false;
  forget();
  return true;
}

// Everything of the place left.
void ClipReader::forget() {
  avcodec_flush_buffers(decoder_.get());
  times_ = FrameTimes(has_picture_in_every_packet(*stream_->codecpar));
  corrupt_times_.clear();
  ready_.clear();
  packets_.clear();
  last_ = {};
  damage_ = {};
  packets_read_ = 0;
  last_time_ = AV_NOPTS_VALUE;
  draining_ = ended_ = false;
  sought_ = true;
}

std::optional<ClipFrame> ClipReader::next() {
  while (ready_.empty() && !ended_) {
    Libav<AVFrame> frame(av_frame_alloc());
    if (!frame) throw std::bad_alloc();
    const int status = avcodec_receive_frame(decoder_.get(), frame.get());
    if (status == 0) {
      accept(std::move(frame));
    } else if (status == AVERROR_EOF || (status == AVERROR(EAGAIN) && draining_)) {
      end();
    } else if (status == AVERROR(EAGAIN)) {
      feed();
    } else {
      count_damage("the decoder says: " + libav_reason(status));
    }
  }
  if (ready_.empty()) return std::nullopt;
  ClipFrame frame = std::move(ready_.front());
  ready_.pop_front();
  return frame;
}

// One packet, to the decoder or to the others.
void ClipReader::feed() {
  switch (container_->read(*packet_)) {
    case Container::Read::end:
      draining_ = true;
      return send(nullptr);
    case Container::Read::damage:
      return count_damage("the container is damaged");
    case Container::Read::packet:
      break;
  }
  if (is_reading_stopped() && (packet_->flags & AV_PKT_FLAG_CORRUPT) != 0) return av_packet_unref(packet_.get());
  note_end(*packet_);
  if (packet_->stream_index != stream_->index) {
    if (!gives(packet_->stream_index)) return av_packet_unref(packet_.get());
    packets_.emplace_back(av_packet_clone(packet_.get()));
    av_packet_unref(packet_.get());
    if (!packets_.back()) throw std::bad_alloc();
    return;
  }
  ++packets_read_;
  const bool shown = (packet_->flags & AV_PKT_FLAG_DISCARD) == 0 && packet_->pts != AV_NOPTS_VALUE;
  if (shown) times_.expect(packet_->pts);
  if (shown && (packet_->flags & AV_PKT_FLAG_CORRUPT) != 0) corrupt_times_.insert(packet_->pts);
  send(packet_.get());
  av_packet_unref(packet_.get());
}

void ClipReader::send(const AVPacket* packet) {
  const int status = avcodec_send_packet(decoder_.get(), packet);
  if (status < 0 && status != AVERROR_EOF) count_damage("the decoder says: " + libav_reason(status));
}

void ClipReader::accept(Libav<AVFrame> frame) {
  if (frame->width < 2 || frame->height < 2) container_->refuse("its pictures are smaller than 2 x 2 pixels");
  if (size_ == Size{}) size_ = {frame->width, frame->height};
  const std::int64_t time = time_of(*frame);
  if (size_ != Size{frame->width, frame->height}) {
    container_->refuse("at " + time_text(time) + " the pictures change from " + size_text(size_) + " to " +
                       size_text({frame->width, frame->height}));
  }
  const FrameTimes::Arrival arrival = times_.arrived(frame->best_effort_timestamp);
  for (const std::int64_t missing : arrival.missing) repeat(missing);
  if (!arrival.expected && frame->best_effort_timestamp <= last_time_ && frame->pts != AV_NOPTS_VALUE) {
    return count_damage("a picture comes too late");  // another one has its place
  }
  const bool damaged = frame->decode_error_flags != 0 || (frame->flags & AV_FRAME_FLAG_CORRUPT) != 0;
  if (corrupt_times_.erase(time) != 0 || damaged) {
    if (!counts(time)) return;
    ++damage_.packets;
    if (strict_) container_->refuse("damaged at " + time_text(time));
    return repeat(time);
  }
  const std::int64_t duration = frame->pkt_duration > 0 ? frame->pkt_duration : usual_duration();
  last_ = {shown(std::move(frame)), time, duration};
  last_time_ = time;
  ready_.push_back(last_);
}

std::shared_ptr<const AVFrame> ClipReader::shown(Libav<AVFrame> frame) {
  if (!std::exchange(is_upright_made_, true)) upright_ = make_upright(*container_, *stream_, *frame, is_silent_);
  if (upright_) frame = upright_->apply(*frame);
  return {frame.release(), LibavDelete()};
}

void ClipReader::repeat(std::int64_t time) {
  if (!counts(time)) return;
  if (!last_.picture) {
    if (damage_.packets > 0) ++damage_.dropped;  // else they only refer to what came before the clip
    return;
  }
  if (time <= last_time_) return;
  if (strict_) container_->refuse("damaged at " + time_text(time));
  ++damage_.repeated;
  last_time_ = time;
  ready_.push_back({last_.picture, time, usual_duration()});
}

void ClipReader::end() {
  ended_ = true;
  const std::vector<std::int64_t> missing = times_.ended();
  if (!is_reading_stopped()) {
    for (const std::int64_t time : missing) repeat(time);
  }
  if (interrupted() || !is_cut_short()) return;
  damage_.cut_short = true;
  if (strict_) container_->refuse("is cut short at " + time_text(last_time_));
}

void ClipReader::count_damage(const std::string& what) {
  if (wanted_from_ != AV_NOPTS_VALUE && (last_time_ == AV_NOPTS_VALUE || last_time_ < wanted_from_)) return times_.complain();
  ++damage_.packets;
  times_.complain();
  if (!strict_) return;
  const std::string place = last_time_ == AV_NOPTS_VALUE ? "at its beginning" : "after " + time_text(last_time_);
  container_->refuse("damaged " + place + ": " + what);
}

// Strictly ascending: what has no time, or none later than its predecessor's, follows at the usual distance.
std::int64_t ClipReader::time_of(const AVFrame& frame) {
  const std::int64_t time = frame.best_effort_timestamp;
  if (last_time_ == AV_NOPTS_VALUE) return time == AV_NOPTS_VALUE ? 0 : time;
  if (time == AV_NOPTS_VALUE) return last_time_ + usual_duration();
  return std::max(time, last_time_ + 1);
}

AVRational ClipReader::rate() const {
  const AVRational average = stream_->avg_frame_rate;
  return average.num > 0 && average.den > 0 ? average : stream_->r_frame_rate;
}

std::int64_t ClipReader::usual_duration() const {
  const AVRational usual = rate();
  if (usual.num <= 0 || usual.den <= 0) return 1;
  return std::max<std::int64_t>(1, av_rescale_q(1, av_inv_q(usual), stream_->time_base));
}

void ClipReader::note_end(const AVPacket& packet) {
  const std::int64_t start = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
  if (start == AV_NOPTS_VALUE) return;
  const AVRational base = (*container_)->streams[packet.stream_index]->time_base;
  last_end_ = std::max(last_end_, av_rescale_q(start + packet.duration, base, kMicroseconds));
}

// The index of a MOV file knows how many packets there should be; other containers may have announced how long they are.
bool ClipReader::is_cut_short() const {
  const AVFormatContext* format = container_->get();
  if (std::strstr(format->iformat->name, "mov") != nullptr && !sought_) {
    return packets_read_ < avformat_index_get_entries_count(stream_);
  }
  if (format->duration_estimation_method != AVFMT_DURATION_FROM_STREAM || format->duration <= 0) return false;
  const std::int64_t start = format->start_time == AV_NOPTS_VALUE ? 0 : format->start_time;
  return last_end_ + kSlack < start + format->duration;
}

std::string ClipReader::time_text(std::int64_t time) const { return tool::time_text(time, stream_->time_base); }

}  // namespace biseam::tool
