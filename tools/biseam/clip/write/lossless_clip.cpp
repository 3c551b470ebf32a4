#include "clip/write/lossless_clip.hpp"

#include <new>

#include "picture/plane.hpp"

namespace biseam::tool {
namespace {

// As Nv12 says; the light is that of sRGB.
constexpr Colour kColour{AVCOL_RANGE_JPEG, AVCOL_SPC_BT470BG, AVCOL_PRI_BT709, AVCOL_TRC_IEC61966_2_1, AVCHROMA_LOC_CENTER};

EncoderSettings without_loss() {
  EncoderSettings settings;
  settings.crf = 0;
  settings.preset = "veryfast";
  return settings;
}

}  // namespace

LosslessClip::LosslessClip(const std::string& path, Size size, AVRational rate)
    : muxer_(path, *clip_format(path)),
      encoder_(without_loss(), {size, av_inv_q(rate), rate, kColour}, (muxer_.format().flags & AVFMT_GLOBALHEADER) != 0),
      frames_(size),
      stream_(muxer_.add_stream()),
      packet_(av_packet_alloc()) {
  if (!packet_) throw std::bad_alloc();
  encoder_.describe(*stream_.codecpar);
  stream_.time_base = av_inv_q(rate);
  stream_.avg_frame_rate = rate;
  stream_.sample_aspect_ratio = {1, 1};
  muxer_.begin();
}

void LosslessClip::add(const Nv12& picture) {
  const Libav<AVFrame> frame = frames_.frame();
  copy_plane(luma_of(picture), frame->data[0], frame->linesize[0]);
  copy_plane(chroma_of(picture), frame->data[1], frame->linesize[1]);
  encoder_.send(*frame, count_++, 1);
  write_encoded();
}

void LosslessClip::write_encoded() {
  while (encoder_.receive(*packet_)) {
    packet_->stream_index = stream_.index;
    av_packet_rescale_ts(packet_.get(), encoder_.context().time_base, stream_.time_base);
    muxer_.put(*packet_, "the picture");
  }
}

void LosslessClip::finish() {
  encoder_.finish();
  write_encoded();
  muxer_.end();
  muxer_.commit();
}

}  // namespace biseam::tool
