#include "frame/seam/pick.hpp"

#include <cstring>

#include "base/loop_versions.hpp"
#include "stages/image/resize_map.hpp"

namespace biseam {

namespace {

// truncate_to_int of every sample's nearest float, without a branch, so that it becomes vector code.
BISEAM_LOOP void round_to_floats(int32_t* row, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) {
    const float value = static_cast<float>(row[i]);
    const bool fits = value < 2147483648.0f;
    const int32_t rounded = static_cast<int32_t>(fits ? value : 0.0f);
    row[i] = fits ? rounded : INT32_MAX;
  }
}

// Pixel x of dst takes the three samples at src + offsets[x], as their nearest floats, saturated: what resize makes of them.
// Offsets rise, src holds src_count samples.
void pick_pixels(const int32_t* src, int64_t src_count, const int32_t* offsets, int32_t* dst, int32_t count) noexcept {
  // Four samples go faster than three: the fourth is overwritten by the next pixel.
  int32_t x = 0;
  for (; x < count - 1 && offsets[x] + int64_t{4} <= src_count; ++x) {
    std::memcpy(dst + ptrdiff_t{3} * x, src + offsets[x], 4 * sizeof(int32_t));
  }
  for (; x < count; ++x) std::memcpy(dst + ptrdiff_t{3} * x, src + offsets[x], 3 * sizeof(int32_t));
  kRoundRow.best()(dst, ptrdiff_t{3} * count);
}

}  // namespace

constinit const Variants<RoundRow> kRoundRow = loop_versions<round_to_floats, RoundRow>;

void fill_picks(int32_t src_size, int32_t dst_size, int32_t* picks, int32_t count) noexcept {
  const float scale = resize_scale(src_size, dst_size);
  for (int32_t i = 0; i < count; ++i) picks[i] = picked_position(i, scale, src_size);
}

int64_t pick_memory_bytes(int32_t dst_width) noexcept { return int64_t{4} * dst_width * int64_t{sizeof(int32_t)}; }

void pick_image(const BlendImage& src, BlendImage& dst, void* memory) noexcept {
  if (src.width < 1 || src.height < 1 || dst.width < 1) return;
  int32_t* const row = static_cast<int32_t*>(memory);
  int32_t* const offsets = row + ptrdiff_t{3} * dst.width;
  fill_picks(src.width, dst.width, offsets, dst.width);
  for (int32_t x = 0; x < dst.width; ++x) offsets[x] *= 3;
  const float scale = dst.height > 0 ? resize_scale(src.height, dst.height) : 1.0f;
  const size_t src_count = size_t{3} * static_cast<size_t>(src.width);
  const int32_t* in_hand = nullptr;
  for (int32_t y = 0; y < dst.height; ++y) {
    const int32_t* const samples = src.data[0] + ptrdiff_t{picked_position(y, scale, src.height)} * src.stride;
    // Rows of a seam's mask are often those above.
    const bool same =
        samples == in_hand || (in_hand != nullptr && std::memcmp(samples, in_hand, src_count * sizeof(int32_t)) == 0);
    if (!same) pick_pixels(samples, static_cast<int64_t>(src_count), offsets, row, dst.width);
    in_hand = samples;
    std::memcpy(dst.data[0] + ptrdiff_t{y} * dst.stride, row, size_t{12} * static_cast<size_t>(dst.width));
  }
}

}  // namespace biseam
