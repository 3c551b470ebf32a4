// What targets that read pictures and clips have in common.
#pragma once

extern "C" {
#include <libavutil/log.h>
}

#include "fuzz/expect.hpp"
#include "fuzz/memory_file.hpp"
#include "media/container.hpp"

namespace biseam::fuzz {

// No complaints of libraries.
inline void be_quiet() { av_log_set_level(AV_LOG_QUIET); }

// Large pictures only take time.
inline bool takes_long(const tool::Container& file) {
  constexpr std::int64_t kMostPixels = 1 << 18;
  for (unsigned k = 0; k < file->nb_streams; ++k) {
    const AVCodecParameters& told = *file->streams[k]->codecpar;
    if (std::int64_t{told.width} * told.height > kMostPixels) return true;
  }
  return file->nb_streams > 8;
}

}  // namespace biseam::fuzz
