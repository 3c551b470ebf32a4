// What one panorama is made of, frame by frame.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "clip/read/clip_reader.hpp"

namespace biseam::tool {

struct CopiedPacket {
  int clip = 0;  // whose stream it belongs to
  Libav<AVPacket> packet;
};

// Times count in the time base of the first clip.
struct FramePair {
  std::array<std::shared_ptr<const AVFrame>, 2> picture;  // of each lens, or of both in the first; none: only packets
  std::int64_t time = 0, duration = 0;
  std::int64_t clip_time = 0;         // as time, but whatever part of the clip is wanted
  std::int64_t number = 0;            // of the first clip's pictures
  bool is_wanted = true;              // false: only its seams are
  std::vector<CopiedPacket> packets;  // of other streams, which came before the picture
};

// How well two clips fit together.
struct PairingReport {
  std::int64_t unpaired = 0;  // pictures of the first clip before or after the second one's: left out
  std::int64_t held = 0;      // times the second clip had no picture near enough and the nearest one stood in
  bool second_goes_on = false;
};

// One clip with both circles, or two with one each, which may be streams of one file.
class PairReader {
 public:
  // offset: microseconds to be added to the times of the second clip, which may be missing.
  PairReader(std::unique_ptr<ClipReader> first, std::unique_ptr<ClipReader> second, std::int64_t offset);

  // Starts over shortly before the time, in microseconds of the first clip.
  void start_at(std::int64_t time);

  // None at the end.  The first clip leads, each of its pictures gets the one of the second that is nearest in time.
  std::optional<FramePair> next();

  std::int64_t offset() const { return offset_; }
  int clips() const { return clips_[1] ? 2 : 1; }
  const ClipReader& clip(int index) const { return *clips_[index]; }
  const PairingReport& report() const { return report_; }

 private:
  bool pair(FramePair& to);
  std::int64_t second_time(const ClipFrame& frame) const;
  std::int64_t tolerance() const;
  void advance(std::int64_t time);

  std::unique_ptr<ClipReader> clips_[2];
  std::int64_t offset_;
  std::optional<ClipFrame> current_, ahead_;  // of the second clip
  std::int64_t second_begin_ = 0;             // microseconds
  std::int64_t number_ = 0;
  bool started_ = false;
  PairingReport report_;
};

}  // namespace biseam::tool
