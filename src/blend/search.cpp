#include "blend/search.hpp"

#include <cstdint>

#include "imgproc/resize.hpp"
#include "seam/cut.hpp"
#include "seam/detail.hpp"
#include "seam/path.hpp"

namespace biseam {

namespace {

// The strips of both sources, shrunk and turned into detail images.
Status prepare_details(BlendInstance& instance, const BlendImage* const sources[2], MemoryReport report) {
  for (int i = 0; i < 2; ++i) {
    const int side = i == 0 ? 1 : 0;
    copy_strip(*sources[i], instance.strip[i], instance.findpath_width, instance.trans_width, side);
    if (resize(instance.strip[i], instance.scaled_strip[i]) == Status::no_memory) return Status::no_memory;
    to_gray(instance.scaled_strip[i], instance.gray[i]);
    if (extract_detail(instance.gray[i], instance.detail[i], report) == Status::no_memory) return Status::no_memory;
  }
  return Status::ok;
}

// Column of the shrunk band at which the shrunk strips start.
int strip_column(const BlendInstance& instance) {
  return static_cast<int>((int64_t{instance.scaled_trans_width} + instance.scaled_band_width - instance.scaled_findpath_width) /
                          2);
}

}  // namespace

Status search_seam(BlendInstance& instance, const BlendImage* const sources[2], MemoryReport report) {
  if (prepare_details(instance, sources, report) == Status::no_memory) return Status::no_memory;
  const Status cut = cut_seam(strip_column(instance), instance.seam_mask, instance.detail[0], instance.detail[1]);
  if (cut == Status::no_memory) return Status::no_memory;
  return resize(instance.seam_mask, instance.mask);
}

}  // namespace biseam
