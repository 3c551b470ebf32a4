// What past frames have to say about a seam.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ring/strip/shape.hpp"

namespace biseam::ring {

// What a seam would have cost in the last frames, and where they found it.  A frame's seam is searched where it has cost least
// in all of them: noise hardly counts there, and what has come into the way soon does.  Frames are joined along the mean of
// what they found, so that a seam which has found another place goes there over as many frames.  What came before has no
// effect: a clip's parts equal the whole when kHistory frames before a part are known.
struct SeamMemory {
  static constexpr int kFrames = 8, kHistory = 2 * (kFrames - 1);
  // Frames that count, the newest at next - 1.
  struct Count {
    int32_t filled, next;
  };
  StripShape shape;
  Count* count;
  int16_t* paths[kFrames];   // rows
  uint16_t* costs[kFrames];  // of every sample
  uint16_t* sum;             // of the costs that count

  // What there is from count to the end of the costs can be kept and gone on with.
  size_t kept_bytes() const noexcept;
};

// Of a sample in one frame.
inline constexpr int kMostSeamCost = 65535 / SeamMemory::kFrames;

// Bytes of the block, to be aligned to 64.
size_t seam_memory_bytes(StripShape shape) noexcept;
SeamMemory lay_out_seam_memory(StripShape shape, void* block) noexcept;

void forget(SeamMemory& memory) noexcept;

// Of a frame, in this order.  A cost is SeamCostRow's without a pull; more than kMostSeamCost counts as that much.
void remember_costs(SeamMemory& memory, const uint16_t* cost) noexcept;
// What the next search is for: the sum of what counts beyond what noise does, and a pull to the middle that decides where there
// is no more than that.  In between, remembered costs belong to a path that is not yet remembered.
void fill_lasting_cost(const SeamMemory& memory, uint16_t* cost) noexcept;
void remember_path(SeamMemory& memory, const int16_t* rows) noexcept;

// The mean of the paths, Q16; there is one.
void mean_path(const SeamMemory& memory, int32_t* path) noexcept;

// Whether kept bytes from outside can be gone on with: of frames that can have been, with closed paths that keep margin rows
// off the strip's edges.
bool are_valid_seams(const SeamMemory& memory, int margin, const char* kept) noexcept;
void go_on(SeamMemory& memory, const char* kept) noexcept;

}  // namespace biseam::ring
