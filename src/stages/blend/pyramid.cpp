#include "stages/blend/pyramid.hpp"

#include <cstdint>
#include <optional>

#include "base/records.hpp"
#include "stages/blend/arithmetic.hpp"
#include "stages/image/pyr_down.hpp"
#include "stages/image/pyr_up.hpp"

namespace biseam {

namespace {

using WorkImage = Temporary<BlendImage>;

// The stages pair samples of several images by the layout of one.  An image with anything between its rows or pixels is taken
// as one run of samples, by way of a packed copy.
class Packed {
 public:
  explicit Packed(const BlendImage& image) : image_(&image) {
    if (image.channels == 3 && image.steps[0] == 3 && image.stride == int64_t{3} * image.width) return;
    WorkImage& copy = copy_.emplace(image.width, image.height);
    image_ = copy ? &*copy : nullptr;
    if (copy) copy_own_samples(image, *copy);
  }

  const BlendImage* get() const { return image_; }  // null: no memory

 private:
  std::optional<WorkImage> copy_;
  const BlendImage* image_;
};

}  // namespace

Status build_laplacian(const BlendImage& image, const Pyramid& out, int level_count) {
  if (level_count < 1) return Status::ok;
  const Packed packed(image);
  const BlendImage* current = packed.get();
  if (current == nullptr) return Status::no_memory;
  // Sizes that the pyramid routines leave alone count as zero: the work images start out so.
  std::optional<WorkImage> reduced[2];  // of this level and of the one before, in turn
  for (int k = 0; k < level_count; ++k) {
    WorkImage& down = reduced[k & 1].emplace(next_size(current->width), next_size(current->height));
    WorkImage up(current->width, current->height);
    if (!down || !up) return Status::no_memory;
    if (pyr_down(*current, *down) == Status::no_memory) return Status::no_memory;
    if (pyr_up(*down, *up) == Status::no_memory) return Status::no_memory;
    subtract(*current, *up, out.levels[k]);
    current = &*down;
  }
  copy_own_samples(*current, *out.top);
  return Status::ok;
}

Status build_gaussian(const BlendImage& image, const Pyramid& out, int level_count) {
  if (out.levels != nullptr) copy_samples(image, out.levels[0]);
  if (level_count < 1) return Status::ok;
  for (int k = 1; k < level_count; ++k) {
    if (pyr_down(out.levels[k - 1], out.levels[k]) == Status::no_memory) return Status::no_memory;
  }
  const BlendImage& last = out.levels[level_count - 1];
  WorkImage down(next_size(last.width), next_size(last.height));
  if (!down) return Status::no_memory;
  if (pyr_down(last, *down) == Status::no_memory) return Status::no_memory;
  copy_own_samples(*down, *out.top);
  return Status::ok;
}

void mix_pyramids(const Pyramid& a, const Pyramid& b, const Pyramid& mask, const Pyramid& out, int level_count) {
  mix(*a.top, *b.top, *mask.top, *out.top);
  for (int k = 0; k < level_count; ++k) mix(a.levels[k], b.levels[k], mask.levels[k], out.levels[k]);
}

Status collapse(const BlendImage& top, const BlendImage* levels, BlendImage& out, int level_count) {
  std::optional<WorkImage> work[2];  // of this level and of the one below, in turn
  const Packed packed(top);
  const BlendImage* current = packed.get();
  if (current == nullptr) return Status::no_memory;
  for (int k = level_count - 1; k >= 0; --k) {
    WorkImage& up = work[k & 1].emplace(levels[k].width, levels[k].height);
    if (!up) return Status::no_memory;
    if (pyr_up(*current, *up) == Status::no_memory) return Status::no_memory;
    add(*up, levels[k], *up);
    current = &*up;
  }
  copy_own_samples(*current, out);
  return Status::ok;
}

}  // namespace biseam
