#pragma once

#include <cstdint>

// Where destination columns and rows fall in the source of a resize: centres on centres.
namespace biseam {

inline float resize_scale(int32_t src_size, int32_t dst_size) noexcept {
  return static_cast<float>(src_size) / static_cast<float>(dst_size);
}

// Positions from -0.5 up; rounded once, to float.
inline float mapped_position(int32_t position, float scale) noexcept {
  return static_cast<float>((static_cast<double>(position) + 0.5) * static_cast<double>(scale) - 0.5);
}

// The last column or row at or before the mapped position.  In large sources that position can be rounded past the last one.
inline int32_t picked_position(int32_t position, float scale, int32_t src_size) noexcept {
  const float mapped = mapped_position(position, scale);
  if (mapped < 0.0f) return 0;
  const int64_t index = static_cast<int64_t>(mapped);  // scale <= 2^31, position < 2^31
  return index >= src_size ? src_size - 1 : static_cast<int32_t>(index);
}

}  // namespace biseam
