#pragma once

#include <cmath>
#include <cstdint>

#include "biseam/records.h"

// What a table's position reads of a picture, one value at a time and without the library's helpers.
namespace biseam::test {

inline uint32_t plain_truncate(float value) {
  if (std::isnan(value) || value <= 0.0f) return 0;
  return value >= 4294967296.0 ? 0xFFFFFFFFu : static_cast<uint32_t>(static_cast<uint64_t>(value));
}

inline uint8_t plain_low_byte(float value) { return static_cast<uint8_t>(plain_truncate(value) & 0xFF); }

inline uint8_t plain_luma(const ImageHeader& source, float u, float v) {
  const uint32_t iu = plain_truncate(u), iv = plain_truncate(v);
  const float fx = u - iu, fy = v - iv;
  const float p0 = source.planes[0][iv * source.strides[0] + iu];
  const float p1 = source.planes[0][(iv + 1) * source.strides[0] + iu];
  return plain_low_byte((fx - fx * fy) * p0 + ((1 - fy) - (fx - fx * fy)) * p0 + (fy - fx * fy) * p1 + (fx * fy) * p1);
}

inline uint8_t plain_chroma(const ImageHeader& source, float uc, float vc, int component) {
  const uint32_t iu = plain_truncate(uc), iv = plain_truncate(vc);
  const float fx = uc - iu, fy = vc - iv;
  const auto sample = [&](int dx, int dy) -> float {
    return source.planes[1][(iv + dy) * source.strides[1] + 2 * (iu + dx) + component];
  };
  const float w00 = (1 - fy) - (fx - fx * fy), w10 = fx - fx * fy, w01 = fy - fx * fy, w11 = fx * fy;
  return plain_low_byte(w00 * sample(0, 0) + w10 * sample(1, 0) + w01 * sample(0, 1) + w11 * sample(1, 1));
}

}  // namespace biseam::test
