// How many frames can be stitched at once in the memory there is.
#pragma once

#include <algorithm>
#include <cstdint>

#include "biseam/records.h"

namespace biseam::tool {

// About what each takes: an engine, measured as 18 bytes for each pixel of the panorama, and two frames on their way, each a
// pair of pictures and a panorama.
inline std::uint64_t job_bytes(const StitchConfig& config) {
  const std::uint64_t panorama = std::uint64_t(config.out_w[0]) * std::uint64_t(config.out_h[0]);
  const std::uint64_t pair = 2 * std::uint64_t(config.in_w) * std::uint64_t(config.in_h);
  return 18 * panorama + 2 * (panorama + pair) * 3 / 2;
}

// At least one.
inline int jobs_that_fit(int wanted, const StitchConfig& config, std::uint64_t bytes) {
  return int(std::clamp<std::uint64_t>(bytes / std::max<std::uint64_t>(1, job_bytes(config)), 1, std::uint64_t(wanted)));
}

}  // namespace biseam::tool
