// What the strips say about a block of the panorama, looked up at every fourth sample only: strips are as coarse as that.
#pragma once

#include <cstdint>

#include "base/variants.hpp"
#include "ring/light.hpp"
#include "ring/positions.hpp"
#include "ring/strip/lookup.hpp"

namespace biseam::ring {

inline constexpr int kAnchorBits = 2;
inline constexpr int kAnchorSpacing = 1 << kAnchorBits;
inline constexpr int kAnchorColumns = kBlockWidth / kAnchorSpacing + 1, kAnchorRows = kBlockHeight / kAnchorSpacing + 1;

// Anchors of a block, as many rows and columns as surround its samples.  The first one lies on its first sample.
struct AnchorCount {
  int columns, rows;

  constexpr int all() const noexcept { return columns * rows; }
};

// Row after row, without gaps.
struct AnchorValues {
  int32_t values[kAnchorRows * kAnchorColumns];
};

// The same, filled in between along the rows: 4 times the values.
struct AnchorBand {
  alignas(64) int32_t values[kAnchorRows][kBlockWidth];
};

constexpr AnchorCount anchors_around(int columns, int rows) noexcept {
  return {(columns + kAnchorSpacing - 1) / kAnchorSpacing + 1, (rows + kAnchorSpacing - 1) / kAnchorSpacing + 1};
}

// Where the anchors of a plane's samples lie, in strip samples, Q16.
struct AnchorPlaces {
  AnchorCount count;
  AnchorValues t, b;
};
void place_anchors(const Mesh& mesh, const Block& block, const PlaneGrid& grid, StripShape shape,
                   AnchorPlaces& places) noexcept;

void look_up_corrections(const int16_t* corrections, StripShape shape, const AnchorPlaces& places, AnchorBand& band) noexcept;

// Distances from the seam towards lens 1, Q16, held within 2^24 of it: the least and the largest of the anchors'.
struct DistanceRange {
  int32_t least, largest;
};
DistanceRange look_up_distances(const SeamRamp& ramp, const AnchorPlaces& places, AnchorBand& band) noexcept;

// Where the anchors lie in the luma of a lens's picture.
struct AnchorPositions {
  AnchorCount count;
  AnchorValues x, y;
};
void place_anchors_in_picture(const Mesh& mesh, int lens, const Block& block, const PlaneGrid& grid,
                              AnchorPositions& positions) noexcept;

// What undoes a lens's light in a channel, 1/kLightOne.
void look_up_light(const Light& light, int channel, const AnchorPositions& positions, AnchorBand& band) noexcept;

// Whether a block reaches beyond the ring, and how far across samples are within it, in strip samples, Q16.
struct RingEdge {
  bool near;
  int32_t low, high;
};
RingEdge find_edge(const Mesh& mesh, const PlaneGrid& grid, StripShape shape, const AnchorPlaces& places) noexcept;

// How far across a plane's samples lie.
void look_up_across(const AnchorPlaces& places, AnchorBand& band) noexcept;

// out: how far places of the strip, t within its length, lie from a path.
using DistancesFromSeam = void(const int32_t* path, const int32_t* t, const int32_t* b, int32_t* out, int count) noexcept;
// Of at least one value.
using FindRange = void(const int32_t* values, int count, int32_t* least, int32_t* largest) noexcept;
using FillAnchorRow = void(const int32_t* anchors, int32_t* out, int count) noexcept;
// out: the values of a row between two rows of a band, below the upper one by so many samples.
using MixAnchorRows = void(const int32_t* upper, const int32_t* lower, int below, int32_t* out, int count) noexcept;
// The same of two bands, whose values take turns in out: 2 count of them.
using MixAnchorRowPairs = void(const int32_t* const upper[2], const int32_t* const lower[2], int below, int32_t* out,
                               int count) noexcept;
// Of rows of a band of distances, kBlockWidth apart: the columns that lie nearer to a lens's side of the seam than a reach
// beyond it, rounded outwards to multiples of kNeededColumns, by lens.
inline constexpr int kNeededColumns = 16;
struct ColumnRange {
  int first, end;  // none: both are the number of columns
};
using FindNeededColumns = void(const int32_t* distances, int rows, int columns, int32_t reach, ColumnRange* needed) noexcept;

extern constinit const Variants<DistancesFromSeam> kDistancesFromSeam;
extern constinit const Variants<FindRange> kFindRange;
extern constinit const Variants<FillAnchorRow> kFillAnchorRow;
extern constinit const Variants<MixAnchorRows> kMixAnchorRows;
extern constinit const Variants<MixAnchorRowPairs> kMixAnchorRowPairs;
extern constinit const Variants<FindNeededColumns> kFindNeededColumns;

// Row y of the block's samples.
void row_of_band(const AnchorBand& band, int y, int32_t* out, int count) noexcept;
void row_of_bands(const AnchorBand& first, const AnchorBand& second, int y, int32_t* out, int count) noexcept;

}  // namespace biseam::ring
