// A part of a clip.
#pragma once

#include <cstdint>
#include <optional>

#include "clip/read/pair_reader.hpp"

namespace biseam::tool {

// Microseconds from the beginning of the clip.
struct PartRange {
  std::optional<std::int64_t> from, to, frames;
  bool is_whole() const { return !from && !to && !frames; }
};

// Pairs from the first one at `from` or later to the last one before `to`, but at most `frames`, and the packets of other
// streams that begin in this time.  Their times count from `from` when it is given.
class PartReader {
 public:
  // group: pictures that share their seams, counted from the clip's first one.  When the part begins inside a group, the
  // group's first pair comes before, not wanted but for its seams.  A part of a clip with groups is read from the clip's
  // beginning: nothing else tells the number of a picture.  lead: microseconds before the part whose pictures come too, not
  // wanted but for what they leave behind; with groups and a lead, all from the clip's beginning on.
  PartReader(PairReader reader, const PartRange& range, int group, std::int64_t lead);

  std::optional<FramePair> next();

  const PairReader& pairs() const { return reader_; }

  // Microseconds of the clip: where the part begins, what its times are less by, and about where it ends if that is known
  // beforehand.
  std::int64_t begin() const { return range_.from.value_or(start_); }
  std::int64_t shift() const { return range_.from ? begin() : 0; }
  std::optional<std::int64_t> end() const;

 private:
  std::optional<FramePair> read();
  void skip(FramePair pair);
  bool is_in_lead(std::int64_t time) const;
  std::int64_t group_of(const FramePair& pair) const { return pair.number / group_; }
  std::optional<FramePair> last_packets();
  void take_packets(FramePair& from);
  void give_packets(FramePair& to, std::int64_t before);
  std::int64_t time_of(const CopiedPacket& copied) const;
  bool is_always_kept(const CopiedPacket& copied) const;
  bool others_are_past(std::int64_t end) const;
  void shift_times(FramePair& pair) const;

  PairReader reader_;
  PartRange range_;  // in times of the clip
  int group_;
  std::int64_t lead_;                 // microseconds
  std::optional<FramePair> skipped_;  // first one of the group before the part
  std::optional<FramePair> waiting_;  // first one of the part
  std::int64_t start_ = 0, given_ = 0, end_;
  std::vector<CopiedPacket> held_;     // not known yet to be inside
  std::vector<std::int64_t> seen_[2];  // latest time of every stream
  bool ended_ = false;
};

}  // namespace biseam::tool
