#include "video/frame_times.hpp"

#include <algorithm>

namespace biseam::tool {

std::vector<std::int64_t> FrameTimes::arrived(std::int64_t time) {
  std::vector<std::int64_t> missing = take_missing(expected_.lower_bound(time));
  expected_.erase(time);
  return missing;
}

std::vector<std::int64_t> FrameTimes::ended() { return take_missing(expected_.end()); }

std::vector<std::int64_t> FrameTimes::take_missing(std::multiset<std::int64_t>::iterator end) {
  std::vector<std::int64_t> missing(expected_.begin(), end);
  expected_.erase(expected_.begin(), end);
  if (complaints_ == 0) missing.clear();
  complaints_ = std::max<std::int64_t>(0, complaints_ - std::int64_t(missing.size()));
  missing.erase(std::unique(missing.begin(), missing.end()), missing.end());
  return missing;
}

}  // namespace biseam::tool
