#pragma once

#include <cstddef>
#include <cstdint>

#include "ring/strip/picture.hpp"
#include "ring/strip/reduce_rows.hpp"

namespace biseam::ring {

// One axis of a reduced plane.  Index i stands for the plane's samples round factor * i + (factor - 1) / 2; there are kMargin
// indices more at either end, made of the plane's edge sample repeated.
struct ReducedAxis {
  static constexpr int kMargin = 2;

  int samples;     // of the plane: its width or height
  int factor;      // a power of two
  int count;       // indices without the margins
  int32_t origin;  // where index 0 lies, Q16 luma pixels
  int shift;       // log2 of the luma pixels from index to index

  // The index of a place given in luma pixels (Q16), in 1/256, rounded; held within one index of the plane.
  int32_t index_of(int32_t place) const noexcept {
    const int32_t index = (place - origin + (1 << (shift + 7))) >> (shift + 8);
    const int32_t last = 256 * count - 1;
    return index < -256 ? -256 : index > last ? last : index;
  }
};

// A plane reduced to about the strip's pitch, where strip samples need it only: in tiles of kTile samples of a row.
struct Reduction {
  static constexpr int kTile = 16;
  static constexpr int kBand = 16;  // rows of a part

  ReducedAxis x, y;
  int tiles;  // of a row
  ReductionKernel kernel_x, kernel_y;

  ptrdiff_t stride() const noexcept { return ptrdiff_t{tiles} * kTile; }
  int rows() const noexcept { return y.count + 2 * ReducedAxis::kMargin; }
  ptrdiff_t samples() const noexcept { return stride() * rows(); }
  ptrdiff_t tile_count() const noexcept { return ptrdiff_t{tiles} * rows(); }
  int parts() const noexcept { return (rows() + kBand - 1) / kBand; }
};

// factor: luma pixels that become one, a power of two.  Planes that are coarser than luma are reduced by less.
Reduction plan_reduction(const PlaneGeometry& plane, int factor) noexcept;

// Marks the tiles that count positions need: 1 in needed, which holds tile_count() bytes and is 0 elsewhere.
void mark_tiles(const Reduction& reduction, StripPositions positions, ptrdiff_t count, uint8_t* needed) noexcept;

// Computes the needed tiles of a part, kBand rows, into reduced.
void reduce_part(const Reduction& reduction, const PlaneSamples& plane, SampleFormat format, const uint8_t* needed, int part,
                 int16_t* reduced) noexcept;

}  // namespace biseam::ring
