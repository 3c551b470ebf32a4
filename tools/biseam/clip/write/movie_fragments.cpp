#include "clip/write/movie_fragments.hpp"

#include <new>

#include "clip/write/clip_metadata.hpp"

namespace biseam::tool {
namespace {

// What was written to libav's dynamic buffer, which stands in for a file; there is none afterwards.
Bytes close_buffer(AVIOContext*& buffer) {
  std::uint8_t* data = nullptr;
  const int size = avio_close_dyn_buf(buffer, &data);
  buffer = nullptr;
  const std::unique_ptr<std::uint8_t, decltype(&av_free)> owner(data, av_free);
  return Bytes(data, data + size);
}

// The muxer doesn't tell when it had no memory for a piece's packets.
bool is_whole(const Bytes& boxes) {
  std::size_t at = 0;
  while (const std::optional<Box> box = box_at(boxes, at, boxes.size())) at = box->end();
  return at == boxes.size();
}

}  // namespace

MovieFragments::MovieFragments(const AVFormatContext& like) : packet_(av_packet_alloc()) {
  AVFormatContext* muxer = nullptr;
  if (avformat_alloc_output_context2(&muxer, like.oformat, nullptr, nullptr) < 0 || !packet_) throw std::bad_alloc();
  muxer_.reset(muxer);
  muxer->strict_std_compliance = like.strict_std_compliance;
  muxer->flags = like.flags;
  muxer->avoid_negative_ts = like.avoid_negative_ts;
  copy_clip_metadata(like, *muxer);
  copy_chapters(like, {}, *muxer);
  for (unsigned k = 0; k < like.nb_streams; ++k) {
    const AVStream& from = *like.streams[k];
    AVStream* to = avformat_new_stream(muxer, nullptr);
    if (!to || avcodec_parameters_copy(to->codecpar, from.codecpar) < 0) throw std::bad_alloc();
    to->time_base = from.time_base;
    to->avg_frame_rate = from.avg_frame_rate;
    to->sample_aspect_ratio = from.sample_aspect_ratio;
    copy_stream_metadata(from, *to);
  }
}

MovieFragments::~MovieFragments() {
  if (muxer_->pb) close_buffer(muxer_->pb);
}

int MovieFragments::begin(const AVDictionary* options) {
  AVDictionary* all = nullptr;
  av_dict_copy(&all, options, 0);
  av_dict_set(&all, "movflags", "+frag_custom+delay_moov+default_base_moof+skip_trailer", AV_DICT_APPEND);
  int status = avio_open_dyn_buf(&muxer_->pb);
  if (status >= 0) status = avformat_write_header(muxer_.get(), &all);
  av_dict_free(&all);
  return status;
}

int MovieFragments::put(const AVPacket& packet) {
  av_packet_unref(packet_.get());
  const int status = av_packet_ref(packet_.get(), &packet);
  return status < 0 ? status : av_interleaved_write_frame(muxer_.get(), packet_.get());
}

// These are described from their first packet.
bool MovieFragments::head_waits() const {
  for (unsigned k = 0; k < muxer_->nb_streams; ++k) {
    const AVCodecID codec = muxer_->streams[k]->codecpar->codec_id;
    const bool needs_packet = codec == AV_CODEC_ID_AC3 || codec == AV_CODEC_ID_EAC3 || codec == AV_CODEC_ID_TRUEHD;
    if (needs_packet && muxer_->streams[k]->nb_frames == 0) return true;
  }
  return false;
}

int MovieFragments::take_written(Bytes& boxes) {
  const bool is_short = (avio_flush(muxer_->pb), muxer_->pb->error < 0);
  boxes = close_buffer(muxer_->pb);
  if (is_short || !is_whole(boxes)) return AVERROR(ENOMEM);
  return avio_open_dyn_buf(&muxer_->pb);
}

int MovieFragments::take(Bytes& boxes) {
  boxes.clear();
  if (!has_head_ && head_waits()) return 0;
  // What is asked for first is the head alone.
  const int rounds = has_head_ ? 1 : 2;
  has_head_ = true;
  for (int round = 0; round < rounds; ++round) {
    if (const int status = av_write_frame(muxer_.get(), nullptr); status < 0) return status;
  }
  return take_written(boxes);
}

int MovieFragments::take_last(Bytes& boxes) {
  const int status = av_write_trailer(muxer_.get());
  return status < 0 ? status : take_written(boxes);
}

}  // namespace biseam::tool
