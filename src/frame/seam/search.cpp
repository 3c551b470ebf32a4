#include "frame/seam/search.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "base/heap.hpp"
#include "frame/blend/byte_image.hpp"
#include "frame/seam/grid_cut.hpp"
#include "frame/seam/pick.hpp"
#include "frame/seam/shrunk_strip.hpp"
#include "stages/blend/widen.hpp"

namespace biseam {

namespace {

constexpr int64_t kAlignment = 64;

// Column of the shrunk band at which the shrunk strips start.
int strip_column(const BlendInstance& instance) {
  return static_cast<int>((int64_t{instance.scaled_trans_width} + instance.scaled_band_width - instance.scaled_findpath_width) /
                          2);
}

// Bytes that the largest step needs, boundary included; negative: more than can be had.
int64_t memory_bytes(const BlendInstance& instance) {
  const int64_t cut = cut_memory_bytes(instance.detail[0]);
  if (cut < 0) return -1;
  return std::max({cut, strip_memory_bytes(instance.gray[0].width, instance.gray[0].height),
                   pick_memory_bytes(instance.mask.width)}) +
         kAlignment;
}

// The search's working memory: the samples of the strips and the shrunk strips, which lie one after the other in the instance's
// block and hold nothing from frame to frame.  Strips that are smaller than what is searched for take it from the heap.
class SearchMemory {
 public:
  explicit SearchMemory(const BlendInstance& instance) : heap_(HeapArray<uint8_t>::none()) {
    const int64_t bytes = memory_bytes(instance);
    uint8_t* const first = reinterpret_cast<uint8_t*>(instance.strip[0].data[0]);
    uint8_t* const end = reinterpret_cast<uint8_t*>(instance.gray[0].data);
    if (bytes < 0) return;
    if (end - first >= bytes) {
      data_ = align(first);
      return;
    }
    heap_ = HeapArray<uint8_t>::plain(static_cast<std::size_t>(bytes));
    if (heap_) data_ = align(heap_.data());
  }

  void* data() { return data_; }  // null: could not be had

 private:
  static uint8_t* align(uint8_t* data) { return data + (-reinterpret_cast<intptr_t>(data) & (kAlignment - 1)); }

  HeapArray<uint8_t> heap_;
  uint8_t* data_ = nullptr;
};

// The part of level 0 that is not mirrored.
BytePixels source_in_level(const BlendInstance& instance, int source, int side) {
  const ByteImage level = ByteImage::in(instance.levels[source][0]);
  return {level.data + ptrdiff_t{3} * covered_column(instance.trans_width, side), level.width - instance.trans_width,
          level.height, level.row_samples()};
}

}  // namespace

Status search_seam(BlendInstance& instance, const BlendImage* const sources[2], MemoryReport report) {
  SearchMemory memory(instance);
  if (memory.data() == nullptr) {
    if (report != nullptr) report("melloc memory for pdTemp failed!!");
    return Status::no_memory;
  }
  for (int i = 0; i < 2; ++i) {
    const int side = i == 0 ? 1 : 0;
    const auto gray_of = [&](const auto& source) {
      gray_of_strip(source, instance.strip[i], instance.findpath_width, instance.trans_width, side, instance.gray[i],
                    memory.data());
    };
    if (sources != nullptr) {
      gray_of(*sources[i]);
    } else {
      gray_of(source_in_level(instance, i, side));
    }
    detail_of_gray(instance.gray[i], instance.detail[i], memory.data());
  }
  cut_seam_within(strip_column(instance), instance.seam_mask, instance.detail[0], instance.detail[1], memory.data());
  pick_image(instance.seam_mask, instance.mask, memory.data());
  return Status::ok;
}

}  // namespace biseam
