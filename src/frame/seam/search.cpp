#include "frame/seam/search.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "frame/blend/workspace.hpp"
#include "frame/seam/grid_cut.hpp"
#include "frame/seam/pick.hpp"
#include "frame/seam/shrunk_strip.hpp"
#include "stages/blend/module.hpp"
#include "stages/blend/widen.hpp"

namespace biseam {

namespace {

// The part of level 0 that is not mirrored.
BytePixels source_in_level(const ByteImage& level, int trans_width, int side) {
  return {level.data + ptrdiff_t{3} * covered_column(trans_width, side), level.width - trans_width, level.height,
          level.row_samples()};
}

}  // namespace

bool can_search_bytes(const BlendInstance& instance) {
  const int64_t cut = cut_memory_bytes(instance.detail[0]);
  if (cut < 0) return false;
  const int64_t strip = strip_memory_bytes(instance.gray[0].width, instance.gray[0].height);
  return std::max({cut, strip, pick_memory_bytes(instance.mask.width)}) <= search_memory(instance).bytes;
}

void search_bytes(BlendInstance& instance) {
  const Workspace workspace(instance);
  uint8_t* const memory = search_memory(instance).data;
  for (const Pyramids source : {kSource1, kSource2}) {
    const int side = source == kSource1 ? 1 : 0;
    const BytePixels pixels = source_in_level(workspace.level(source, 0), instance.trans_width, side);
    gray_of_strip(pixels, instance.strip[source], instance.findpath_width, instance.trans_width, side, instance.gray[source],
                  memory);
    detail_of_gray(instance.gray[source], instance.detail[source], memory);
  }
  cut_seam_within(strip_column(instance), instance.seam_mask, instance.detail[0], instance.detail[1], memory);
  pick_image(instance.seam_mask, instance.mask, memory);
}

}  // namespace biseam
