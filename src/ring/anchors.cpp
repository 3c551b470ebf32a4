#include "ring/anchors.hpp"

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "base/loop_versions.hpp"
#include "camera/trigonometry.hpp"
#include "ring/ring_rows.hpp"

namespace biseam::ring {

namespace {

constexpr int32_t kFarthestFromSeam = 1 << 24;

BISEAM_LOOP void find_distances(const int32_t* path, const int32_t* t, const int32_t* b, int32_t* out, int count) noexcept {
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) {
    const int32_t row = t[i] >> 16, here = path[row];
    const int64_t rise = int64_t{path[row + 1] - here} * (t[i] & 0xffff);
    const int32_t distance = b[i] - (here + static_cast<int32_t>(rise >> 16));
    const int32_t low = distance < -kFarthestFromSeam ? -kFarthestFromSeam : distance;
    out[i] = low > kFarthestFromSeam ? kFarthestFromSeam : low;
  }
}

// Of at least one value.
BISEAM_LOOP void find_range(const int32_t* values, int count, int32_t* least, int32_t* largest) noexcept {
  int32_t low = values[0], high = values[0];
  for (ptrdiff_t i = 1; i < count; ++i) {
    low = values[i] < low ? values[i] : low;
    high = values[i] > high ? values[i] : high;
  }
  *least = low;
  *largest = high;
}

// Four places of anchors; the last one's own value is the next row's first.
BISEAM_LOOP void fill_row(const int32_t* anchors, int32_t* out, int count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) {
    const int32_t here = anchors[i], step = anchors[i + 1] - here;
    out[4 * i] = 4 * here;
    out[4 * i + 1] = 4 * here + step;
    out[4 * i + 2] = 4 * here + 2 * step;
    out[4 * i + 3] = 4 * here + 3 * step;
  }
}

BISEAM_LOOP void mix_rows(const int32_t* upper, const int32_t* lower, int below, int32_t* out, int count) noexcept {
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = (upper[i] * (kAnchorSpacing - below) + lower[i] * below + 8) >> 4;
}

BISEAM_LOOP void mix_row_pairs(const int32_t* const upper[2], const int32_t* const lower[2], int below, int32_t* out,
                               int count) noexcept {
  const int32_t *upper0 = upper[0], *upper1 = upper[1], *lower0 = lower[0], *lower1 = lower[1];
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) {
    out[2 * i] = (upper0[i] * (kAnchorSpacing - below) + lower0[i] * below + 8) >> 4;
    out[2 * i + 1] = (upper1[i] * (kAnchorSpacing - below) + lower1[i] * below + 8) >> 4;
  }
}

// Whether any of some columns lies below a reach beyond the seam, and above one before it.
struct Sides {
  int32_t lens[2];
};
template <class Length>
BISEAM_LOOP Sides sides_of(const int32_t* distances, int rows, Length length, int32_t reach) noexcept {
  const int count = length;
  int32_t least[kNeededColumns], largest[kNeededColumns];
  BISEAM_KEEP_LOOP
  for (int i = 0; i < count; ++i) least[i] = largest[i] = distances[i];
  for (int row = 1; row < rows; ++row) {
    const int32_t* const here = distances + row * kBlockWidth;
    BISEAM_KEEP_LOOP
    for (int i = 0; i < count; ++i) {
      least[i] = here[i] < least[i] ? here[i] : least[i];
      largest[i] = here[i] > largest[i] ? here[i] : largest[i];
    }
  }
  int32_t low = least[0], high = largest[0];
  BISEAM_KEEP_LOOP
  for (int i = 0; i < count; ++i) {
    low = least[i] < low ? least[i] : low;
    high = largest[i] > high ? largest[i] : high;
  }
  return {{low<reach, high> - reach}};
}

BISEAM_LOOP void find_needed(const int32_t* distances, int rows, int columns, int32_t reach, ColumnRange* needed) noexcept {
  for (int lens = 0; lens < 2; ++lens) needed[lens] = {columns, columns};
  for (int first = 0; first < columns; first += kNeededColumns) {
    const bool whole = columns - first >= kNeededColumns;
    const Sides sides = whole ? sides_of(distances + first, rows, std::integral_constant<int, kNeededColumns>{}, reach)
                              : sides_of(distances + first, rows, columns - first, reach);
    for (int lens = 0; lens < 2; ++lens) {
      if (sides.lens[lens] == 0) continue;
      if (needed[lens].first == columns) needed[lens].first = first;
      needed[lens].end = whole ? first + kNeededColumns : columns;
    }
  }
}

void fill_band(const AnchorValues& anchors, AnchorCount count, AnchorBand& band) noexcept {
  for (int j = 0; j < count.rows; ++j) {
    kFillAnchorRow.best()(anchors.values + j * count.columns, band.values[j], count.columns - 1);
  }
}

}  // namespace

constinit const Variants<DistancesFromSeam> kDistancesFromSeam = loop_versions<find_distances, DistancesFromSeam>;
constinit const Variants<FindRange> kFindRange = loop_versions<find_range, FindRange>;
constinit const Variants<FillAnchorRow> kFillAnchorRow = loop_versions<fill_row, FillAnchorRow>;
constinit const Variants<MixAnchorRows> kMixAnchorRows = loop_versions<mix_rows, MixAnchorRows>;
constinit const Variants<MixAnchorRowPairs> kMixAnchorRowPairs = loop_versions<mix_row_pairs, MixAnchorRowPairs>;
constinit const Variants<FindNeededColumns> kFindNeededColumns = loop_versions<find_needed, FindNeededColumns>;

void place_anchors(const Mesh& mesh, const Block& block, const PlaneGrid& grid, StripShape shape,
                   AnchorPlaces& places) noexcept {
  const AnchorCount count = anchors_around(block.width >> grid.bits_x, block.height >> grid.bits_y);
  BlockValues t, b;
  ring_positions(mesh, block, grid, {kAnchorBits, count.columns, count.rows}, t, b);
  places.count = count;
  for (int j = 0; j < count.rows; ++j) {
    std::copy_n(t.values + j * kBlockWidth, count.columns, places.t.values + j * count.columns);
    std::copy_n(b.values + j * kBlockWidth, count.columns, places.b.values + j * count.columns);
  }
  kToStripSamples.best()(shape, places.t.values, places.b.values, count.all());
}

void place_anchors_in_picture(const Mesh& mesh, int lens, const Block& block, const PlaneGrid& grid,
                              AnchorPositions& positions) noexcept {
  const AnchorCount count = anchors_around(block.width >> grid.bits_x, block.height >> grid.bits_y);
  BlockValues x, y;
  luma_positions(mesh, lens, block, grid, {kAnchorBits, count.columns, count.rows}, x, y);
  positions.count = count;
  for (int j = 0; j < count.rows; ++j) {
    std::copy_n(x.values + j * kBlockWidth, count.columns, positions.x.values + j * count.columns);
    std::copy_n(y.values + j * kBlockWidth, count.columns, positions.y.values + j * count.columns);
  }
}

void look_up_light(const Light& light, int channel, const AnchorPositions& positions, AnchorBand& band) noexcept {
  AnchorValues found;
  kFindLight.best()(light, channel, positions.x.values, positions.y.values, found.values, positions.count.all());
  fill_band(found, positions.count, band);
}

// Between anchors h radians apart an angle that is filled in linearly in both directions errs by h^2 / 4 at most: what is less
// than that from the edge is left out, so that nothing outside the ring counts as within.
RingEdge find_edge(const Mesh& mesh, const PlaneGrid& grid, StripShape shape, const AnchorPlaces& places) noexcept {
  const double across = 2 * kPi / mesh.shape.width * (kAnchorSpacing << grid.bits_x);
  const double down = kPi / mesh.shape.height * (kAnchorSpacing << grid.bits_y), apart = std::max(across, down);
  const int32_t margin = static_cast<int32_t>(apart * apart / 4 * shape.length / (2 * kPi) * 65536) + 2;
  const int32_t low = margin, high = ((shape.width - 1) << 16) - margin;
  int32_t least, largest;
  kFindRange.best()(places.b.values, places.count.all(), &least, &largest);
  return {least < low || largest > high, low, high};
}

void look_up_across(const AnchorPlaces& places, AnchorBand& band) noexcept { fill_band(places.b, places.count, band); }

void look_up_corrections(const int16_t* corrections, StripShape shape, const AnchorPlaces& places, AnchorBand& band) noexcept {
  AnchorValues found;
  kLookUpCorrections.best()(corrections, shape, places.t.values, places.b.values, found.values, places.count.all());
  fill_band(found, places.count, band);
}

DistanceRange look_up_distances(const SeamRamp& ramp, const AnchorPlaces& places, AnchorBand& band) noexcept {
  AnchorValues found;
  kDistancesFromSeam.best()(ramp.path, places.t.values, places.b.values, found.values, places.count.all());
  DistanceRange range;
  kFindRange.best()(found.values, places.count.all(), &range.least, &range.largest);
  fill_band(found, places.count, band);
  return range;
}

void row_of_band(const AnchorBand& band, int y, int32_t* out, int count) noexcept {
  const int row = y >> kAnchorBits;
  kMixAnchorRows.best()(band.values[row], band.values[row + 1], y & (kAnchorSpacing - 1), out, count);
}

void row_of_bands(const AnchorBand& first, const AnchorBand& second, int y, int32_t* out, int count) noexcept {
  const int row = y >> kAnchorBits;
  const int32_t* const upper[2] = {first.values[row], second.values[row]};
  const int32_t* const lower[2] = {first.values[row + 1], second.values[row + 1]};
  kMixAnchorRowPairs.best()(upper, lower, y & (kAnchorSpacing - 1), out, count);
}

}  // namespace biseam::ring
