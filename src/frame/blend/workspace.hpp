#pragma once

#include <cstddef>
#include <cstdint>

#include "biseam/records.h"
#include "frame/blend/byte_image.hpp"
#include "stages/blend/instance_levels.hpp"

namespace biseam {

// What the memory of a blend instance holds while a frame is blended by bytes.  The images' records keep describing 32-bit
// samples; these are the views that a frame has of their memory instead.
//
//   memory of                  | conversion        | search              | reduction           | collapse
//   ---------------------------|-------------------|---------------------|---------------------|--------------------------
//   levels 0, source 1 and 2   | widened RGB bytes | (read)              | (read), then a row  | (read)
//                              |                   |                     | of sums behind them |
//   level 0, mask              |                   |                     | weights as bytes,   | (read)
//                              |                   |                     | a row of sums       |
//   levels 1 .., tops of these |                   |                     | Gaussian levels     | (read)
//   level 0, result            |                   |                     |                     | scratch rows
//   levels 1 .., top, result   |                   |                     |                     | collapsed, 32-bit samples
//   strips, shrunk strips      |                   | working memory      |                     |
//   gray, detail, seam mask    |                   | themselves          |                     |
//   mask                       |                   | weights, 32 bits    | (read)              |
//   widened bands              |                   |                     |                     |
//
// Bytes take the first quarter of an image's memory.  Nothing but the masks outlives a frame.
class Workspace {
 public:
  explicit Workspace(BlendInstance& instance) : instance_(instance) {}

  int level_count() const { return instance_.pyr_level; }

  // A level of source 1, source 2 or the mask, or the top behind the last one.
  ByteImage level(Pyramids pyramid, int k) const;

  // Collapsed levels from the first on.
  BlendImage& blended(int k) const { return level_of(instance_, kBlended, k); }

  // One row of sums while the pyramid is reduced.
  uint16_t* sums(Pyramids pyramid) const;

  // Rows for a collapse; 32-byte aligned or better, as all pieces of an instance are.
  int32_t* collapse_scratch() const { return instance_.levels[kBlended][0].data[0]; }

 private:
  BlendInstance& instance_;
};

// What a search works in: the samples of the strips and the shrunk strips, which lie one after the other.
struct SearchMemory {
  uint8_t* data;  // on a boundary of 64 bytes
  int64_t bytes;
};
SearchMemory search_memory(const BlendInstance& instance);

}  // namespace biseam
