#include "video/pair_reader.hpp"

#include <algorithm>
#include <cstdlib>

namespace biseam::tool {
namespace {

constexpr AVRational kMicroseconds{1, AV_TIME_BASE};

void move_packets(ClipReader& clip, int index, std::vector<CopiedPacket>& to) {
  for (Libav<AVPacket>& packet : clip.take_packets()) to.push_back({index, std::move(packet)});
}

}  // namespace

PairReader::PairReader(std::unique_ptr<ClipReader> first, std::unique_ptr<ClipReader> second, std::int64_t offset)
    : clips_{std::move(first), std::move(second)}, offset_(offset) {}

std::optional<FramePair> PairReader::next() {
  std::optional<ClipFrame> frame = clips_[0]->next();
  FramePair to;
  if (frame) {
    to.picture[0] = std::move(frame->picture);
    to.time = frame->time;
    to.duration = frame->duration;
    to.repeated = frame->repeated;
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
  const std::int64_t duration = av_rescale_q(to.duration, clips_[0]->stream().time_base, kMicroseconds);
  const std::shared_ptr<const AVFrame> before = current_ ? current_->picture : nullptr;
  advance(time);
  const bool near = current_ && std::abs(second_time(*current_) - time) <= tolerance(duration, *current_);
  const bool inside = current_ && ahead_ && second_time(*current_) < time;
  if (!near && !inside) {
    ++report_.unpaired;
    return false;
  }
  if (!near) ++report_.held;
  to.picture[1] = current_->picture;
  to.repeated = to.repeated && current_->picture == before;
  return true;
}

// Makes the picture nearest to the time the current one.
void PairReader::advance(std::int64_t time) {
  if (!started_) {
    started_ = true;
    current_ = clips_[1]->next();
    if (current_) ahead_ = clips_[1]->next();
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
std::int64_t PairReader::tolerance(std::int64_t duration, const ClipFrame& partner) const {
  constexpr std::int64_t kRounding = 1500;
  const std::int64_t other = av_rescale_q(partner.duration, clips_[1]->stream().time_base, kMicroseconds);
  return std::max(duration, other) / 2 + kRounding;
}

}  // namespace biseam::tool
