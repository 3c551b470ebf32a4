// A block of the panorama, from the pictures of both lenses and what the strips have to say about the ring.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ring/anchors.hpp"
#include "ring/blocks.hpp"
#include "ring/format.hpp"
#include "ring/light.hpp"
#include "ring/light/match_paint.hpp"
#include "ring/mesh.hpp"
#include "ring/strip/lookup.hpp"

namespace biseam::ring {

// The panorama's planes.
struct PanoramaPlane {
  uint8_t* first;
  ptrdiff_t stride;  // bytes, of any sign
};

// What the strips give a frame.
struct RingBand {
  StripShape shape;
  SeamRamp ramp;
  const int16_t* corrections[2][kMostPlanes];  // by lens and channel
};

struct Painting {
  const Mesh* mesh;
  Quality quality;
  PictureFormat picture, panorama;       // alike but for the chroma's place
  SampleSource sources[2][kMostPlanes];  // by lens and plane
  PanoramaPlane planes[kMostPlanes];
  const Light* lights;  // of either lens
  MatchedLight match;
  RingBand ring;
};

// Rows of a block that are sampled together where they are changed afterwards: from one lens, and from both beside a seam.
inline constexpr int kSampledRows = 16, kMixedRows = 8;
static_assert(kSampledRows % kSharedRows == 0 && kMixedRows % kSharedRows == 0 && kMixedRows <= kSampledRows);

// Working memory of one thread.
struct PaintMemory {
  BlockValues x[2], y[2];  // where the samples lie in either lens's picture
  AnchorPlaces places;
  RingEdge edge;
  AnchorBand distances, across;
  AnchorBand corrections[2][2], light[2][2];  // of either lens, by the channels of a plane
  MatchBlock match[2];
  // Of rows that are sampled together.  Of a row a pair takes two places.
  alignas(64) int16_t fine[2][kSampledRows][2 * kBlockWidth];
  alignas(64) int16_t luma[kSampledRows][2 * kBlockWidth];
  alignas(64) int32_t added[2 * kBlockWidth];
  alignas(64) int32_t factors[2 * kBlockWidth];
};

// A block that one lens covers alone.
void paint_lens_block(const Painting& painting, const BlockPlan& plan, PaintMemory& memory) noexcept;

// A block of the ring.
void paint_ring_block(const Painting& painting, const BlockPlan& plan, PaintMemory& memory) noexcept;

}  // namespace biseam::ring
