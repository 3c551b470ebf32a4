#include <algorithm>
#include <cstdint>

#include "base/arena.hpp"
#include "base/records.hpp"
#include "base/truncate.hpp"
#include "stages/blend/module.hpp"
#include "stages/blend/pyramid.hpp"

namespace biseam {

namespace {

constexpr int kPixelBytes = 3 * sizeof(int32_t);  // of a BlendImage
constexpr int kGrayBytes = sizeof(int32_t);
constexpr int64_t kRoundingSlack = 4096;  // the carved pieces' rounding to 128 bytes; enough on average only

int shrunk(int size, float inv_scale) { return truncate_to_int(static_cast<float>(size) / inv_scale); }

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

void carve_images(BlendInstance& instance, Carver& carver) {
  const int64_t strip = image_bytes(instance.findpath_width, instance.height, kPixelBytes);
  const int64_t scaled_strip = image_bytes(instance.scaled_findpath_width, instance.scaled_height, kPixelBytes);
  const int64_t gray = image_bytes(instance.scaled_findpath_width, instance.scaled_height, kGrayBytes);
  const int64_t band = image_bytes(instance.width, instance.height, kPixelBytes);
  for (BlendImage& image : instance.strip) carver.take(image.data[0], strip);
  for (BlendImage& image : instance.scaled_strip) carver.take(image.data[0], scaled_strip);
  for (BlendGray& image : instance.gray) carver.take(image.data, gray);
  for (BlendGray& image : instance.detail) carver.take(image.data, gray);
  carver.take(instance.seam_mask.data[0], image_bytes(instance.scaled_width, instance.scaled_height, kPixelBytes));
  for (BlendImage& image : instance.band) carver.take(image.data[0], band);
  carver.take(instance.mask.data[0], band);
}

void carve_pyramids(BlendInstance& instance, Carver& carver) {
  for (BlendImage*& levels : instance.levels) carver.take(levels, int64_t{instance.pyr_level} * int64_t{sizeof(BlendImage)});
  if (!carver.complete()) return;
  if (instance.pyr_level < 1) {
    int32_t* unused;
    // The samples of level 0 are set aside even where there is no level.
    for (int i = 0; i < 4; ++i) carver.take(unused, image_bytes(instance.width, instance.height, kPixelBytes));
  }
  for_each_level(instance, [&](int k, int width, int height) {
    const int64_t bytes = image_bytes(width, height, kPixelBytes);
    for (int i = 0; i < 4; ++i) {
      carver.take(k < instance.pyr_level ? instance.levels[i][k].data[0] : instance.top[i].data[0], bytes);
    }
  });
}

}  // namespace

void size_blend_memory(const BlendConfig& config, BlendMemory& memory) {
  BlendInstance sizes{};
  store_sizes(config, sizes);
  int64_t bytes = 4 * int64_t{sizeof(BlendImage)} * config.pyr_level + kRoundingSlack;
  bytes += image_bytes(config.findpath_width, config.in_h, 2 * kPixelBytes);
  bytes += image_bytes(sizes.width, config.in_h, 7 * kPixelBytes);  // two bands, the mask and four times level 0
  bytes += image_bytes(sizes.scaled_findpath_width, sizes.scaled_height, 2 * kPixelBytes + 4 * kGrayBytes);
  bytes += image_bytes(sizes.scaled_width, sizes.scaled_height, kPixelBytes);
  if (bytes > UINT32_MAX) sizes.pyr_level = 0;  // too many to be counted one by one, and too large already
  for_each_level(sizes, [&](int k, int width, int height) {
    if (k > 0 || config.pyr_level < 1) bytes += image_bytes(width, height, 4 * kPixelBytes);
  });
  memory.size = static_cast<uint32_t>(std::clamp<int64_t>(block_size(bytes), 0, UINT32_MAX));
  memory.base = nullptr;
}

Status create_blend(const BlendConfig& config, const BlendMemory& memory, BlendInstance& instance) {
  instance = BlendInstance{};
  store_sizes(config, instance);
  Carver carver(memory.base, memory.size);
  carve_images(instance, carver);
  carve_pyramids(instance, carver);
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
      describe_blend_image(k < instance.pyr_level ? instance.levels[i][k] : instance.top[i], width, height);
    }
  });
}

}  // namespace biseam
