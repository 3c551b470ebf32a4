// Panoramas to packets.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "clip/read/clip_facts.hpp"
#include "media/frame_converter.hpp"

namespace biseam::tool {

struct EncoderSettings {
  std::string name = "libx264";
  std::optional<double> crf;
  std::string preset, bitrate;  // empty: the encoder's own, or what suits panoramas with libx264
};

class Encoder {
 public:
  // Encodes in the facts' format where the encoder takes it, else in the nearest one, and tells what that loses by a notice.
  // Throws Failure: usage when the encoder is unknown or lacks a setting, output when it can't be opened.
  Encoder(const EncoderSettings& settings, const ClipFacts& facts, bool global_header);

  const AVCodecContext& context() const { return *context_; }

  // What a container is told of the packets.
  void describe(AVCodecParameters& to) const;

  // A panorama of the facts' format with its time; duration and times in the time base of the facts.
  void send(const AVFrame& panorama, std::int64_t time, std::int64_t duration);
  void finish();

  // False when it wants more pictures, or has nothing left after finish().  Throws Failure (output) as well when the encoder
  // has left out a picture.
  bool receive(AVPacket& packet);

  std::string settings_text() const { return settings_text_; }  // "libx264 crf=18 preset=medium"

 private:
  void set_option(const char* option, const std::string& value);
  void set_options(const EncoderSettings& settings);
  void set_times(const ClipFacts& facts);
  void push(const AVFrame* frame);
  void check_all_came() const;
  void set_packet_times(AVPacket& packet);
  void open_filter(const Colour& colour);

  std::string name_, settings_text_;
  Colour colour_;  // of the panoramas
  FrameConverter converter_;
  Libav<AVCodecContext> context_;
  Libav<AVBSFContext> filter_;    // of packets; none where they stay as they are
  bool counts_pictures_ = false;  // its clock is their number
  std::int64_t sent_ = 0, received_ = 0, skipped_ = 0;

  struct Moment {
    std::int64_t time, duration;
  };
  std::map<std::int64_t, Moment> moments_;  // of the pictures inside the encoder, by its clock
};

}  // namespace biseam::tool
