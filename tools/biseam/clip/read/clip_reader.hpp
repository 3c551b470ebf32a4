// The pictures of a clip in order of time, and the packets of all its other streams.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "clip/read/clip_frame.hpp"
#include "clip/read/frame_times.hpp"
#include "media/container.hpp"
#include "media/lens_streams.hpp"
#include "media/upright.hpp"
#include "picture/picture.hpp"

namespace biseam::tool {

using Packets = std::vector<Libav<AVPacket>>;

// What was wrong with a clip.
struct ClipDamage {
  std::int64_t packets = 0;   // that could not be understood
  std::int64_t repeated = 0;  // pictures replaced by the ones before them
  std::int64_t dropped = 0;   // pictures with none before them, and those a cut file lacks
  bool cut_short = false;
};

class ClipReader {
 public:
  // strict: damage is a Failure.  Throws Failure (input) when there is no video, or nothing to decode it with.
  ClipReader(std::unique_ptr<Container> container, bool strict);

  // One lens of a file that has a stream for each.  The other streams' packets come with lens 0.
  ClipReader(std::unique_ptr<Container> container, bool strict, const LensStreams& lenses, int lens);

  // For a clip whose pictures another reader has spoken of.
  void read_silently() { is_silent_ = true; }

  // Starts over with a picture at the time or before it, in microseconds; damage before the time isn't counted.  For files that
  // can be read at any place; others go on where they are, at first their beginning.
  void start_at(std::int64_t time);

  // None at the end, and after an interrupt once the decoder is empty.  A damaged picture is replaced by the one before it.
  // Throws Failure (input) when the size changes.
  std::optional<ClipFrame> next();

  // Whether take_packets() gives the packets of a stream, by its index.
  bool gives(int stream) const;

  // Of the other streams, those read since the last call.
  Packets take_packets() { return std::exchange(packets_, {}); }

  const Container& container() const { return *container_; }
  const AVStream& stream() const { return *stream_; }  // of the pictures
  const ClipDamage& damage() const { return damage_; }
  AVRational rate() const;              // pictures per second on the average, as far as the clip says
  std::int64_t usual_duration() const;  // of a picture, by the clip's average rate
  std::string time_text(std::int64_t time) const;

 private:
  void open(int index);
  bool seek(std::int64_t time);
  void forget();
  void feed();
  void send(const AVPacket* packet);
  void accept(Libav<AVFrame> frame);
  std::shared_ptr<const AVFrame> shown(Libav<AVFrame> frame);
  void repeat(std::int64_t time);
  void end();
  void count_damage(const std::string& what);
  bool counts(std::int64_t time) const { return wanted_from_ == AV_NOPTS_VALUE || time >= wanted_from_; }
  std::int64_t time_of(const AVFrame& frame);
  void note_end(const AVPacket& packet);
  bool is_cut_short() const;

  std::unique_ptr<Container> container_;
  bool strict_;
  AVStream* stream_ = nullptr;
  std::optional<LensStreams> lenses_;  // where the file has a stream for each
  Libav<AVCodecContext> decoder_;
  Libav<AVPacket> packet_;
  FrameTimes times_;
  std::set<std::int64_t> corrupt_times_;  // of packets that came damaged from the container
  std::deque<ClipFrame> ready_;
  Packets packets_;
  ClipFrame last_;
  Size size_;  // as recorded
  std::unique_ptr<Upright> upright_;
  bool is_upright_made_ = false, is_silent_ = false;
  ClipDamage damage_;
  std::int64_t packets_read_ = 0, last_time_ = AV_NOPTS_VALUE, last_end_ = 0;  // last_end_: microseconds
  std::int64_t wanted_from_ = AV_NOPTS_VALUE;
  bool draining_ = false, ended_ = false, sought_ = false;
};

}  // namespace biseam::tool
