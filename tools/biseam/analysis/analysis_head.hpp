// What an analysis of a clip is an analysis of.
//
// The file: the head; a guide for each picture, in order; where they belong: their times, their number and a sum over both; and
// four last bytes that only a whole file has.  Numbers begin with their lowest byte.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/size.hpp"
#include "biseam/panorama.h"
#include "media/libav.hpp"

namespace biseam::tool {

// The clip's pictures.
struct ClipMark {
  AVRational time_base{0, 1};
  std::uint64_t bytes[2] = {0, 0};  // of either file; 0: unknown, or there is none
};

struct AnalysisHead {
  std::uint32_t guide_bytes = 0;
  Size panorama, lens[2];
  BiseamSeam seam = BISEAM_SEAM_STEADY;
  bool light = false, near = false;
  std::uint64_t camera = 0;  // camera_mark()
  ClipMark clip;
};

// The same for the same camera, and hardly ever for another one.
std::uint64_t camera_mark(const BiseamCamera& camera);

inline constexpr std::size_t kAnalysisHeadBytes = 96;
std::vector<std::uint8_t> head_bytes(const AnalysisHead& head);

// bytes: kAnalysisHeadBytes of them; name: of the file.  Throws Failure (input).
AnalysisHead read_head(std::span<const std::uint8_t> bytes, const std::string& name);

// The end of the file.
inline constexpr std::size_t kAnalysisEndBytes = 16;  // after the times, 8 bytes each
inline constexpr std::uint32_t kAnalysisEnd = 0x0a646e65;

std::uint32_t sum_of(std::span<const std::uint8_t> bytes);

}  // namespace biseam::tool
