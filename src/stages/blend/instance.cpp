#include "stages/blend/module.hpp"

#include <algorithm>
#include <cstdint>

#include "base/arena.hpp"
#include "base/records.hpp"
#include "base/truncate.hpp"
#include "stages/blend/instance_levels.hpp"
#include "stages/blend/pyramid.hpp"

namespace biseam {

namespace {

constexpr int kPixelBytes = 3 * sizeof(int32_t);  // of a BlendImage
constexpr int kGrayBytes = sizeof(int32_t);

int saturated_sum(int a, int b) { return static_cast<int>(std::clamp<int64_t>(int64_t{a} + b, INT32_MIN, INT32_MAX)); }

void store_sizes(const BlendConfig& config, BlendInstance& instance) {
  instance.trans_width = config.trans_width;
  instance.findpath_width = config.findpath_width;
  instance.band_width = config.band_width;
  instance.height = config.in_h;
  instance.width = saturated_sum(config.trans_width, config.band_width);
  instance.pyr_level = config.pyr_level;
  instance.scaled_findpath_width = shrunk(config.findpath_width, config.inv_scale);
  instance.scaled_band_width = shrunk(config.band_width, config.inv_scale);
  instance.scaled_trans_width = shrunk(config.trans_width, config.inv_scale);
  instance.scaled_height = shrunk(config.in_h, config.inv_scale);
  instance.scaled_width = shrunk(instance.width, config.inv_scale);
  instance.inv_scale = config.inv_scale;
  instance.config = &config;
  instance.findpath_enable = config.findpath_enable;
}

// Bytes of an image, -1 for a negative size.  What no block holds comes out as some number that no block holds either.
int64_t image_bytes(int width, int height, int pixel_bytes) {
  if (width < 0 || height < 0) return -1;
  return std::min(int64_t{width} * height, int64_t{1} << 40) * pixel_bytes;
}

// Calls visit(k, width, height) for the levels and last for the top, k = level_count.
template <class Visit>
void for_each_level(const BlendInstance& instance, Visit visit) {
  int width = instance.width;
  int height = instance.height;
  for (int k = 0; k < instance.pyr_level; ++k) {
    visit(k, width, height);
    width = next_size(width);
    height = next_size(height);
  }
  visit(std::max(instance.pyr_level, 0), width, height);
}

// The pieces of a block in their order, visit(its pointer, bytes): first what does not depend on levels, and their records.
template <class Visit>
void for_each_first_piece(BlendInstance& instance, Visit visit) {
  const int64_t strip = image_bytes(instance.findpath_width, instance.height, kPixelBytes);
  const int64_t scaled_strip = image_bytes(instance.scaled_findpath_width, instance.scaled_height, kPixelBytes);
  const int64_t gray = image_bytes(instance.scaled_findpath_width, instance.scaled_height, kGrayBytes);
  const int64_t band = image_bytes(instance.width, instance.height, kPixelBytes);
  for (BlendImage& image : instance.strip) visit(image.data[0], strip);
  for (BlendImage& image : instance.scaled_strip) visit(image.data[0], scaled_strip);
  for (BlendGray& image : instance.gray) visit(image.data, gray);
  for (BlendGray& image : instance.detail) visit(image.data, gray);
  visit(instance.seam_mask.data[0], image_bytes(instance.scaled_width, instance.scaled_height, kPixelBytes));
  for (BlendImage& image : instance.band) visit(image.data[0], band);
  visit(instance.mask.data[0], band);
  for (BlendImage*& levels : instance.levels) visit(levels, int64_t{instance.pyr_level} * int64_t{sizeof(BlendImage)});
}

// Then the samples of all levels, and of the tops.
template <class Visit>
void for_each_level_piece(BlendInstance& instance, Visit visit) {
  int32_t* unused;
  // The samples of level 0 are set aside even where there is no level.
  for (int i = 0; i < 4 && instance.pyr_level < 1; ++i) {
    visit(unused, image_bytes(instance.width, instance.height, kPixelBytes));
  }
  for_each_level(instance, [&](int k, int width, int height) {
    const int64_t bytes = image_bytes(width, height, kPixelBytes);
    for (int i = 0; i < 4; ++i) {
      const bool has_record = k >= instance.pyr_level || instance.levels[i] != nullptr;
      visit(has_record ? level_of(instance, i, k).data[0] : unused, bytes);
    }
  });
}

// The sum of add(bytes) over all pieces; what no block holds as some number that no block holds either.
template <class Add>
int64_t sum_of_pieces(const BlendConfig& config, Add add) {
  BlendInstance sizes{};
  store_sizes(config, sizes);
  int64_t sum = 0;
  const auto visit = [&](auto*&, int64_t bytes) { sum += add(bytes); };
  for_each_first_piece(sizes, visit);
  if (sum <= UINT32_MAX) for_each_level_piece(sizes, visit);  // else too many levels to be counted one by one
  return sum;
}

}  // namespace

int shrunk(int size, float inv_scale) { return truncate_to_int(static_cast<float>(size) / inv_scale); }

void size_blend_memory(const BlendConfig& config, BlendMemory& memory) {
  const int64_t bytes = sum_of_pieces(config, [](int64_t piece) { return piece; }) + kCustomaryRoom;
  memory.size = static_cast<uint32_t>(std::clamp<int64_t>(block_size(bytes), 0, UINT32_MAX));
  memory.base = nullptr;
}

int64_t blend_room(const BlendConfig& config) {
  return sum_of_pieces(config, room_for) + 1;  // the last byte of a block is no piece's
}

Status create_blend(const BlendConfig& config, const BlendMemory& memory, BlendInstance& instance) {
  instance = BlendInstance{};
  store_sizes(config, instance);
  Carver carver(memory.base, memory.size);
  const auto take = [&](auto*& piece, int64_t bytes) { carver.take(piece, bytes); };
  for_each_first_piece(instance, take);
  if (carver.complete()) for_each_level_piece(instance, take);
  if (carver.complete()) return Status::ok;
  instance = BlendInstance{};  // of no size: blends nothing
  return Status::no_memory;
}

void layout_blend(BlendInstance& instance) {
  for (BlendImage& image : instance.strip) describe_blend_image(image, instance.findpath_width, instance.height);
  for (BlendImage& image : instance.scaled_strip) {
    describe_blend_image(image, instance.scaled_findpath_width, instance.scaled_height);
  }
  for (BlendGray& image : instance.gray) describe_gray(image, instance.scaled_findpath_width, instance.scaled_height);
  for (BlendGray& image : instance.detail) describe_gray(image, instance.scaled_findpath_width, instance.scaled_height);
  describe_blend_image(instance.seam_mask, instance.scaled_width, instance.scaled_height);
  for (BlendImage& image : instance.band) describe_blend_image(image, instance.width, instance.height);
  describe_blend_image(instance.mask, instance.width, instance.height);
  for_each_level(instance, [&](int k, int width, int height) {
    for (int i = 0; i < 4; ++i) {
      describe_blend_image(level_of(instance, i, k), width, height);
    }
  });
}

}  // namespace biseam
