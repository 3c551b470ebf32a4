#include "clip/read/frame_times.hpp"

#include <algorithm>

namespace biseam::tool {

FrameTimes::Arrival FrameTimes::arrived(std::int64_t time) {
  Arrival arrival;
  arrival.missing = take_missing(expected_.lower_bound(time));
  const auto place = expected_.find(time);
  arrival.expected = place != expected_.end();
  if (arrival.expected) expected_.erase(place);
  return arrival;
}

std::vector<std::int64_t> FrameTimes::ended() { return take_missing(expected_.end()); }

std::vector<std::int64_t> FrameTimes::take_missing(std::multiset<std::int64_t>::iterator end) {
  std::vector<std::int64_t> missing(expected_.begin(), end);
  expected_.erase(expected_.begin(), end);
  if (complaints_ == 0 && !every_packet_has_one_) missing.clear();
  complaints_ = std::max<std::int64_t>(0, complaints_ - std::int64_t(missing.size()));
  missing.erase(std::unique(missing.begin(), missing.end()), missing.end());
  return missing;
}

}  // namespace biseam::tool
