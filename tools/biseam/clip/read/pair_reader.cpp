#include "clip/read/pair_reader.hpp"

#include <algorithm>
#include <cstdlib>

namespace biseam::tool {
namespace {

void move_packets(ClipReader& clip, int index, std::vector<CopiedPacket>& to) {
  for (Libav<AVPacket>& packet : clip.take_packets()) to.push_back({index, std::move(packet)});
}

}  // namespace

PairReader::PairReader(std::unique_ptr<ClipReader> first, std::unique_ptr<ClipReader> second, std::int64_t offset)
    : clips_{std::move(first), std::move(second)}, offset_(offset) {}

void PairReader::start_at(std::int64_t time) {
  current_.reset();
  ahead_.reset();
  started_ = false;
  clips_[0]->start_at(time);
  if (clips_[1]) clips_[1]->start_at(std::max<std::int64_t>(0, time - offset_ - AV_TIME_BASE));
}

std::optional<FramePair> PairReader::next() {
  std::optional<ClipFrame> frame = clips_[0]->next();
  FramePair to;
  if (frame) {
    to.picture[0] = std::move(frame->picture);
    to.time = to.clip_time = frame->time;
    to.duration = frame->duration;
    to.number = number_++;
    if (clips_[1] && !pair(to)) to.picture[0] = nullptr;
  } else if (clips_[1]) {
    report_.second_goes_on = ahead_.has_value();
  }
  for (int k = 0; k < clips(); ++k) move_packets(*clips_[k], k, to.packets);
  if (!frame && to.packets.empty()) return std::nullopt;
  return to;
}

// False when the second clip has nothing for this time.
bool PairReader::pair(FramePair& to) {
  const std::int64_t time = av_rescale_q(to.time, clips_[0]->stream().time_base, kMicroseconds);
  advance(time);
  const bool near = current_ && std::abs(second_time(*current_) - time) <= tolerance();
  const bool inside = current_ && second_begin_ <= time && (ahead_ || second_time(*current_) >= time);
  if (!near && !inside) {
    ++report_.unpaired;
    return false;
  }
  if (!near) ++report_.held;
  to.picture[1] = current_->picture;
  return true;
}

// Makes the picture nearest to the time the current one.
void PairReader::advance(std::int64_t time) {
  if (!started_) {
    started_ = true;
    current_ = clips_[1]->next();
    if (!current_) return;
    second_begin_ = second_time(*current_);
    ahead_ = clips_[1]->next();
  }
  while (ahead_ && std::abs(second_time(*ahead_) - time) < std::abs(second_time(*current_) - time)) {
    current_ = std::move(ahead_);
    ahead_ = clips_[1]->next();
  }
}

std::int64_t PairReader::second_time(const ClipFrame& frame) const {
  return av_rescale_q(frame.time, clips_[1]->stream().time_base, kMicroseconds) + offset_;
}

// Half a picture, and what time bases round away.
std::int64_t PairReader::tolerance() const {
  constexpr std::int64_t kRounding = 1500;
  std::int64_t longest = 0;
  for (const auto& clip : clips_) {
    longest = std::max(longest, av_rescale_q(clip->usual_duration(), clip->stream().time_base, kMicroseconds));
  }
  return longest / 2 + kRounding;
}

}  // namespace biseam::tool
