// How many frames may wait between the threads of a clip's run.
#pragma once

#include <algorithm>
#include <cstdint>

namespace biseam::tool {

inline constexpr std::uint64_t kMostWaiting = 3;  // more gain nothing

// frame_bytes: of a pair of pictures and its panorama.  Half of what is available is left to decoder and encoder.  At least
// one.
inline std::size_t frames_that_may_wait(std::uint64_t frame_bytes, std::uint64_t available) {
  return std::size_t(std::clamp<std::uint64_t>(available / 2 / std::max<std::uint64_t>(1, frame_bytes), 1, kMostWaiting));
}

}  // namespace biseam::tool
