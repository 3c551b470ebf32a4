#include <cstddef>
#include <cstdint>

#include "frame/blend/level_collapse.hpp"
#include "frame/blend/streamed_band.hpp"
#include "stages/blend/pyramid.hpp"
#include "stages/blend/widen.hpp"

namespace biseam {

namespace {

// Samples that belong together, in bytes.
struct Extent {
  uintptr_t begin, end;
};

Extent extent_of(const BlendImage& image) {
  const uintptr_t begin = reinterpret_cast<uintptr_t>(image.data[0]);
  const ptrdiff_t samples = ptrdiff_t{image.height} * image.stride;
  return {begin, begin + static_cast<uintptr_t>(samples) * sizeof(int32_t)};
}

bool overlap(const BlendImage& a, const BlendImage& b) {
  const Extent ea = extent_of(a), eb = extent_of(b);
  return ea.begin < eb.end && eb.begin < ea.end;
}

bool is_laid_out(const BlendImage& image, int width, int height) {
  return image.data[0] != nullptr && image.width == width && image.height == height && image.channels == 3 &&
         image.steps[0] == 3 && image.stride == int64_t{3} * width;
}

bool is_source(const BlendImage& source, const BlendInstance& instance) {
  return source.data[0] != nullptr && source.height == instance.height &&
         is_widened_exactly(source, instance.width, instance.trans_width) && source.stride >= int64_t{3} * source.width;
}

// Reductions of exact halves leave sources of two pixels alone.
bool is_left_alone(int width, int height) { return width % 2 == 0 && height % 2 == 0 && (width == 2 || height == 2); }

// Calls visit(image, width, height, k) for all of a pyramid and its top as long as it returns true.
template <class Visit>
bool for_all_levels(const BlendInstance& instance, Visit visit) {
  int width = instance.width, height = instance.height;
  for (int k = 0; k <= instance.pyr_level; ++k) {
    for (int i = 0; i < 4; ++i) {
      const BlendImage& image = k < instance.pyr_level ? instance.levels[i][k] : instance.top[i];
      if (!visit(image, width, height, k)) return false;
    }
    width = next_size(width);
    height = next_size(height);
  }
  return true;
}

bool levels_are_regular(const BlendInstance& instance) {
  return for_all_levels(instance, [&](const BlendImage& image, int width, int height, int k) {
    return is_laid_out(image, width, height) && (k == instance.pyr_level || !is_left_alone(width, height));
  });
}

// Whether an image lies apart from all that is written while the band is blended, or written in other order than stage by
// stage.
bool is_apart(const BlendImage& image, const BlendInstance& instance) {
  for (const BlendImage& band : instance.band) {
    if (overlap(image, band)) return false;
  }
  return for_all_levels(instance, [&](const BlendImage& level, int, int, int) { return !overlap(image, level); });
}

}  // namespace

bool can_be_streamed(const BlendInstance& instance, const BlendImage* const sources[2], const BlendImage& output) {
  if (instance.pyr_level < 1 || instance.width < 1 || instance.height < 1) return false;
  if (!is_source(*sources[0], instance) || !is_source(*sources[1], instance)) return false;
  if (output.data[0] == nullptr || output.stride != int64_t{3} * instance.width || output.height < instance.height)
    return false;
  if (!is_laid_out(instance.mask, instance.width, instance.height) || !levels_are_regular(instance)) return false;
  if (collapse_scratch(instance.width) > int64_t{3} * instance.width * instance.height) return false;
  for (int i = 0; i < 2; ++i) {
    if (overlap(*sources[i], output) || !is_apart(*sources[i], instance)) return false;
  }
  return !overlap(output, instance.mask) && is_apart(output, instance);
}

}  // namespace biseam
