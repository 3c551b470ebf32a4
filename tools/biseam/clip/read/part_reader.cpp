#include "clip/read/part_reader.hpp"

#include <algorithm>
#include <limits>
#include <utility>

namespace biseam::tool {
namespace {

constexpr std::int64_t kInterleaving = AV_TIME_BASE;  // how far apart in a file what belongs to the same time may be
constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();

std::int64_t start_of(const PairReader& reader) {
  const std::int64_t start = reader.clip(0).container()->start_time;
  return start == AV_NOPTS_VALUE ? 0 : std::max<std::int64_t>(0, start);
}

}  // namespace

PartReader::PartReader(PairReader reader, const PartRange& range, int group, std::int64_t lead)
    : reader_(std::move(reader)), range_(range), group_(group), lead_(lead), start_(start_of(reader_)), end_(kNever) {
  if (range_.from) *range_.from += start_;
  if (range_.to) end_ = *range_.to += start_;
  for (int k = 0; k < reader_.clips(); ++k) {
    seen_[k].resize(reader_.clip(k).container()->nb_streams, std::numeric_limits<std::int64_t>::min());
  }
  // Numbers are known only when every picture before was read.
  if (range_.from && *range_.from > start_ && group_ == 1) {
    reader_.start_at(std::max(start_, *range_.from - lead_));
  }
}

std::optional<std::int64_t> PartReader::end() const {
  if (range_.to) return range_.to;
  if (!range_.frames) return std::nullopt;
  const AVRational rate = reader_.clip(0).stream().avg_frame_rate;
  if (rate.num <= 0) return std::nullopt;
  return begin() + av_rescale_q(*range_.frames, av_inv_q(rate), kMicroseconds);
}

std::optional<FramePair> PartReader::next() {
  if (range_.is_whole()) return reader_.next();
  if (ended_) return std::nullopt;
  std::optional<FramePair> pair = read();
  if (pair) shift_times(*pair);
  return pair;
}

void PartReader::skip(FramePair pair) {
  if (group_ > 1 && (!skipped_ || group_of(*skipped_) != group_of(pair))) skipped_ = std::move(pair);
}

bool PartReader::is_in_lead(std::int64_t time) const { return lead_ > 0 && (group_ > 1 || time >= *range_.from - lead_); }

std::optional<FramePair> PartReader::read() {
  if (waiting_) return std::exchange(waiting_, std::nullopt);
  while (std::optional<FramePair> pair = reader_.next()) {
    take_packets(*pair);
    if (!pair->picture[0]) continue;
    const std::int64_t time = av_rescale_q(pair->time, reader_.clip(0).stream().time_base, kMicroseconds);
    if (range_.from && time < *range_.from) {
      if (is_in_lead(time)) {
        pair->is_wanted = false;
        return pair;
      }
      skip(std::move(*pair));
      continue;
    }
    if (time >= end_ || (range_.frames && given_ >= *range_.frames)) {
      end_ = std::min(end_, time);
      if (others_are_past(end_) || time > end_ + kInterleaving) break;
      continue;
    }
    ++given_;
    give_packets(*pair, range_.frames ? time + 1 : end_);
    if (!skipped_ || group_of(*skipped_) != group_of(*pair)) return pair;
    waiting_ = std::move(pair);
    skipped_->is_wanted = false;
    return std::exchange(skipped_, std::nullopt);
  }
  return last_packets();
}

std::optional<FramePair> PartReader::last_packets() {
  ended_ = true;
  FramePair rest;
  give_packets(rest, end_);
  held_.clear();
  if (rest.packets.empty()) return std::nullopt;
  return rest;
}

void PartReader::take_packets(FramePair& from) {
  for (CopiedPacket& copied : from.packets) {
    const std::int64_t time = time_of(copied);
    std::int64_t& seen = seen_[copied.clip][std::size_t(copied.packet->stream_index)];
    seen = std::max(seen, time);
    const bool is_before = range_.from && time < *range_.from;
    if (is_always_kept(copied) || !is_before) held_.push_back(std::move(copied));
  }
  from.packets.clear();
}

// Those before the time go, the others wait.
void PartReader::give_packets(FramePair& to, std::int64_t before) {
  std::vector<CopiedPacket> waiting;
  for (CopiedPacket& copied : held_) {
    const std::int64_t time = time_of(copied);
    (time < before || is_always_kept(copied) ? to.packets : waiting).push_back(std::move(copied));
  }
  held_ = std::move(waiting);
}

std::int64_t PartReader::time_of(const CopiedPacket& copied) const {
  const AVPacket& packet = *copied.packet;
  const std::int64_t time = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
  if (time == AV_NOPTS_VALUE) return std::max(begin(), seen_[copied.clip][std::size_t(packet.stream_index)]);
  const AVRational base = reader_.clip(copied.clip).container()->streams[packet.stream_index]->time_base;
  return av_rescale_q(time, base, kMicroseconds) + (copied.clip == 0 ? 0 : reader_.offset());
}

bool PartReader::is_always_kept(const CopiedPacket& copied) const {
  const AVStream& stream = *reader_.clip(copied.clip).container()->streams[copied.packet->stream_index];
  return (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
}

// Streams that have not shown a packet yet are not waited for.
bool PartReader::others_are_past(std::int64_t end) const {
  for (const auto& seen : seen_) {
    for (const std::int64_t time : seen) {
      if (time != std::numeric_limits<std::int64_t>::min() && time < end) return false;
    }
  }
  return true;
}

void PartReader::shift_times(FramePair& pair) const {
  const std::int64_t shift = this->shift();
  if (shift == 0) return;
  if (pair.picture[0]) pair.time -= av_rescale_q(shift, kMicroseconds, reader_.clip(0).stream().time_base);
  for (CopiedPacket& copied : pair.packets) {
    if (is_always_kept(copied)) continue;
    AVPacket& packet = *copied.packet;
    const AVRational base = reader_.clip(copied.clip).container()->streams[packet.stream_index]->time_base;
    const std::int64_t less = av_rescale_q(shift, kMicroseconds, base);
    if (packet.pts != AV_NOPTS_VALUE) packet.pts -= less;
    if (packet.dts != AV_NOPTS_VALUE) packet.dts -= less;
  }
}

}  // namespace biseam::tool
