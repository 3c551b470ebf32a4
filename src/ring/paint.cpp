#include "ring/paint.hpp"

#include <algorithm>

#include "ring/anchors.hpp"
#include "ring/combine_rows.hpp"
#include "ring/fine.hpp"
#include "ring/light/match_chroma_rows.hpp"
#include "ring/plane_block.hpp"

namespace biseam::ring {

namespace {

SampleJob job_of(const Painting& painting, const BlockPlan& plan, int lens, int plane, SampleOutput output) noexcept {
  const Widenings widenings = plane == 0 ? plan.luma[lens] : plan.chroma[lens];
  return {painting.sources[lens][plane], &axis_weights(painting.quality, widenings.across),
          &axis_weights(painting.quality, widenings.down), output};
}

// Whether a plane's samples stand where the one before has them, so that all that depends on places is there already.
bool stands_as_before(const Painting& painting, int plane) noexcept {
  return plane > 0 && painting.panorama.plane[plane].grid == painting.panorama.plane[plane - 1].grid &&
         painting.picture.plane[plane].grid == painting.picture.plane[plane - 1].grid;
}

// In some columns; there may be none, as a lens may be needed by places past the block alone.
void find_positions(const Painting& painting, const Block& block, int lens, const PlaneBlock& samples,
                    const ColumnRange& columns, PaintMemory& memory) noexcept {
  if (columns.first >= columns.end) return;
  const PlaneGrid& grid = samples.format->grid;
  const Block part{block.x + (columns.first << grid.bits_x), block.y, (columns.end - columns.first) << grid.bits_x,
                   block.height};
  lens_positions(*painting.mesh, lens, part, grid, painting.picture.plane[samples.plane].grid,
                 memory.x[lens].values + columns.first, memory.y[lens].values + columns.first);
}

int channels_of(const PlaneBlock& samples) noexcept { return is_pairs(samples.format->type) ? 2 : 1; }

// Which lenses a plane's samples in a block need, by how far from the seam they are.
struct Needed {
  bool lens[2];
};

// Values between anchors lie between theirs; the ramp's ends are taken into it by a little more than all rounding.
int32_t reach_of(int32_t ramp) noexcept { return ramp / 2 + 16; }

Needed needed_within(const DistanceRange& distances, int32_t ramp) noexcept {
  const int32_t reach = reach_of(ramp);
  return {{distances.least < reach, -reach < distances.largest}};
}

// A block's rows from first on.
struct SampledRows {
  int first, count;
};

// Columns of rows that each lens is needed in.
void find_needed(const Painting& painting, const SampledRows& rows, int columns, const PaintMemory& memory,
                 ColumnRange (&needed)[2]) noexcept {
  const int anchors = ((rows.first + rows.count - 1) >> kAnchorBits) + 2 - (rows.first >> kAnchorBits);
  // Bands hold 4 times the values.
  kFindNeededColumns.best()(memory.distances.values[rows.first >> kAnchorBits], anchors, columns,
                            4 * reach_of(painting.ring.ramp.across), needed);
}

// Where a plane's samples lie on the ring, and in the pictures of the lenses that they need.
Needed place_in_ring(const Painting& painting, const BlockPlan& plan, const PlaneBlock& samples, PaintMemory& memory) noexcept {
  const PlaneGrid& grid = samples.format->grid;
  place_anchors(*painting.mesh, plan.block, grid, painting.ring.shape, memory.places);
  const DistanceRange distances = look_up_distances(painting.ring.ramp, memory.places, memory.distances);
  memory.edge = find_edge(*painting.mesh, grid, painting.ring.shape, memory.places);
  if (memory.edge.near) look_up_across(memory.places, memory.across);
  const Needed needed = needed_within(distances, painting.ring.ramp.across);
  ColumnRange columns[2] = {{0, samples.columns}, {0, samples.columns}};
  if (needed.lens[0] && needed.lens[1]) find_needed(painting, {0, samples.rows}, samples.columns, memory, columns);
  for (int lens = 0; lens < 2; ++lens) {
    if (needed.lens[lens]) find_positions(painting, plan.block, lens, samples, columns[lens], memory);
  }
  return needed;
}

// Fine samples of the panorama's luma, which is painted before its chroma, at the places of rows of chroma samples.
void find_luma(const Painting& painting, const PlaneBlock& samples, int first_row, int rows, PaintMemory& memory) noexcept {
  const PanoramaPlane& plane = painting.planes[0];
  const PlaneGrid& grid = samples.format->grid;
  const SampleType type = painting.panorama.plane[0].type;
  const ptrdiff_t y = (ptrdiff_t{samples.y} + first_row) << grid.bits_y,
                  x = (ptrdiff_t{samples.x} << grid.bits_x) * bytes_of(type);
  const LumaCodes codes{plane.first + y * plane.stride + x,
                        plane.stride,
                        1 << grid.bits_x,
                        1 << grid.bits_y,
                        is_words(type),
                        painting.panorama.bits,
                        painting.panorama.shift};
  kLumaMeans.best()(codes, channels_of(samples), memory.luma[0], {rows, 2 * kBlockWidth}, samples.columns);
}

bool is_chroma(const Painting& painting, const PlaneBlock& samples) noexcept {
  return samples.plane != 0 && !painting.panorama.rgb;
}

void prepare_light(const Painting& painting, const BlockPlan& plan, int lens, const PlaneBlock& samples,
                   PaintMemory& memory) noexcept {
  const Light& light = painting.lights[lens];
  if (!light.any) return;
  AnchorPositions positions;
  place_anchors_in_picture(*painting.mesh, lens, plan.block, samples.format->grid, positions);
  for (int c = 0; c < channels_of(samples); ++c) {
    look_up_light(light, samples.format->channels[c], positions, memory.light[lens][c]);
  }
}

// Undoes what the lens did to the light of a row of fine samples, which is number i of those sampled together.
void undo_light(const Painting& painting, int lens, const PlaneBlock& samples, int row, int i, PaintMemory& memory) noexcept {
  int16_t* const fine = memory.fine[lens][i];
  const Light& light = painting.lights[lens];
  const int channels = channels_of(samples), *const channel = samples.format->channels;
  const AnchorBand* const bands = memory.light[lens];
  if (channels == 2) {
    row_of_bands(bands[0], bands[1], row, memory.factors, samples.columns);
  } else {
    row_of_band(bands[0], row, memory.factors, samples.columns);
  }
  kLightRow.best()(fine, memory.factors, light.pivot[channel[0]], channels * samples.columns);
  if (light.tint[channel[0]] == 0 && light.tint[channel[1]] == 0) return;
  const Tint tint{memory.luma[i], light.pivot[0], {light.tint[channel[0]], light.tint[channel[1]]}};
  kTintRow.best()(fine, tint, channels, samples.columns);
}

bool changes_light(const Painting& painting, int lens) noexcept {
  return painting.lights[lens].any || painting.match.nodes != nullptr;
}

// Both what the lens did to the light and by how much the lenses differ.
void prepare_lights(const Painting& painting, const BlockPlan& plan, int lens, const PlaneBlock& samples,
                    PaintMemory& memory) noexcept {
  prepare_light(painting, plan, lens, samples, memory);
  if (painting.match.nodes == nullptr) return;
  prepare_match(painting.match, *painting.mesh, plan.block, samples.format->grid, lens, samples.format->channels,
                channels_of(samples) == 2, memory.match[lens]);
}

// Of rows that are sampled together.
void change_light(const Painting& painting, const Block& block, int lens, const PlaneBlock& samples, int first_row, int rows,
                  PaintMemory& memory) noexcept {
  if (!changes_light(painting, lens)) return;
  if (is_chroma(painting, samples)) find_luma(painting, samples, first_row, rows, memory);
  if (painting.lights[lens].any) {
    for (int i = 0; i < rows; ++i) undo_light(painting, lens, samples, first_row + i, i, memory);
  }
  if (painting.match.nodes == nullptr) return;
  match_block_rows(painting.match, *painting.mesh, block, samples.format->grid, lens, first_row, memory.luma[0],
                   memory.fine[lens][0], {rows, 2 * kBlockWidth}, samples.columns, memory.match[lens]);
}

// What a lens gives to a plane's samples in a block.
struct LensSamples {
  SampleJob job;
  const Block* block;
  int lens;
};

LensSamples prepare_lens(const Painting& painting, const BlockPlan& plan, int lens, const PlaneBlock& samples,
                         PaintMemory& memory) noexcept {
  for (int c = 0; c < channels_of(samples); ++c) {
    look_up_corrections(painting.ring.corrections[lens][samples.format->channels[c]], painting.ring.shape, memory.places,
                        memory.corrections[lens][c]);
  }
  prepare_lights(painting, plan, lens, samples, memory);
  return {job_of(painting, plan, lens, samples.plane, SampleOutput::fine), &plan.block, lens};
}

// No more rows are sampled together than places are kept for.
void sample_columns(const LensSamples& from, const PlaneBlock& samples, const SampledRows& rows, const ColumnRange& columns,
                    PaintMemory& memory) noexcept {
  const int at = rows.first * kBlockWidth + columns.first;
  int16_t* const fine = memory.fine[from.lens][0] + channels_of(samples) * columns.first;
  sample_rows(from.job,
              {memory.x[from.lens].values + at, memory.y[from.lens].values + at, kBlockWidth, reinterpret_cast<uint8_t*>(fine),
               2 * kBlockWidth * sizeof *fine, columns.end - columns.first, rows.count});
}

// From first_row on.
SampledRows sample_some_rows(const Painting& painting, const LensSamples& from, const PlaneBlock& samples, int first_row,
                             PaintMemory& memory) noexcept {
  const SampledRows rows{first_row, std::min(kSampledRows, samples.rows - first_row)};
  sample_columns(from, samples, rows, {0, samples.columns}, memory);
  change_light(painting, *from.block, from.lens, samples, rows.first, rows.count, memory);
  return rows;
}

Storage storage_of(const Painting& painting) noexcept { return {painting.panorama.bits, painting.panorama.shift}; }

CorrectedEdge edge_of(const PaintMemory& memory) noexcept {
  return {memory.edge.near ? &memory.across : nullptr, memory.edge.low, memory.edge.high};
}

const AnchorBand* second_band(const PlaneBlock& samples, const AnchorBand* bands) noexcept {
  return channels_of(samples) == 2 ? bands + 1 : nullptr;
}

FineSamples fine_samples(const PlaneBlock& samples, int lens, const SampledRows& rows, const ColumnRange& columns,
                         const PaintMemory& memory) noexcept {
  return {memory.fine[lens][0] + channels_of(samples) * columns.first, 2 * kBlockWidth, columns.end - columns.first,
          rows.count};
}

// Where columns of a row are painted.
uint8_t* place_of(const Painting& painting, const PlaneBlock& samples, int row, int column) noexcept {
  return samples.row_of(painting, row) + ptrdiff_t{column} * bytes_of(samples.format->type);
}

void store_corrected(const Painting& painting, int lens, const PlaneBlock& samples, const SampledRows& rows,
                     const ColumnRange& columns, const PaintMemory& memory) noexcept {
  if (columns.first >= columns.end) return;
  const AnchorBand* const bands = memory.corrections[lens];
  const auto store = (is_words(samples.format->type) ? kStoreCorrectedWords : kStoreCorrectedBytes).best();
  store({fine_samples(samples, lens, rows, columns, memory),
         columns.first,
         rows.first,
         {bands, second_band(samples, bands)},
         edge_of(memory)},
        storage_of(painting), place_of(painting, samples, rows.first, columns.first), painting.planes[samples.plane].stride);
}

void paint_corrected(const Painting& painting, const BlockPlan& plan, int lens, const PlaneBlock& samples,
                     PaintMemory& memory) noexcept {
  const LensSamples from = prepare_lens(painting, plan, lens, samples, memory);
  for (int first = 0; first < samples.rows; first += kSampledRows) {
    const SampledRows rows = sample_some_rows(painting, from, samples, first, memory);
    store_corrected(painting, lens, samples, rows, {0, samples.columns}, memory);
  }
}

void mix_corrected(const Painting& painting, const PlaneBlock& samples, const SampledRows& rows, const ColumnRange& columns,
                   const PaintMemory& memory) noexcept {
  if (columns.first >= columns.end) return;
  const auto& bands = memory.corrections;
  const auto mix = (is_words(samples.format->type) ? kMixCorrectedWords : kMixCorrectedBytes).best();
  mix({{fine_samples(samples, 0, rows, columns, memory), fine_samples(samples, 1, rows, columns, memory)},
       columns.first,
       rows.first,
       {{bands[0], second_band(samples, bands[0])}, {bands[1], second_band(samples, bands[1])}},
       edge_of(memory),
       &memory.distances,
       painting.ring.ramp.across},
      storage_of(painting), place_of(painting, samples, rows.first, columns.first), painting.planes[samples.plane].stride);
}

// What isn't sampled doesn't count, but light is changed everywhere.
void clear_columns(const PlaneBlock& samples, int lens, int rows, const ColumnRange& columns, PaintMemory& memory) noexcept {
  const int channels = channels_of(samples);
  for (int row = 0; row < rows && columns.first < columns.end; ++row) {
    std::fill_n(memory.fine[lens][row] + channels * columns.first, channels * (columns.end - columns.first), int16_t{0});
  }
}

void sample_needed(const Painting& painting, const LensSamples& from, const PlaneBlock& samples, const SampledRows& rows,
                   const ColumnRange& needed, PaintMemory& memory) noexcept {
  if (needed.first >= needed.end) return;
  sample_columns(from, samples, rows, needed, memory);
  if (!changes_light(painting, from.lens)) return;
  clear_columns(samples, from.lens, rows.count, {0, needed.first}, memory);
  clear_columns(samples, from.lens, rows.count, {needed.end, samples.columns}, memory);
  change_light(painting, *from.block, from.lens, samples, rows.first, rows.count, memory);
}

// Rows that a seam may pass.  Both lenses are mixed where both are needed; every column needs one.
void paint_beside_seam(const Painting& painting, const LensSamples (&from)[2], const PlaneBlock& samples,
                       const SampledRows& rows, PaintMemory& memory) noexcept {
  ColumnRange needed[2];
  find_needed(painting, rows, samples.columns, memory, needed);
  for (const LensSamples& lens : from) sample_needed(painting, lens, samples, rows, needed[lens.lens], memory);
  for (int lens = 0; lens < 2; ++lens) {
    const ColumnRange &own = needed[lens], &other = needed[1 - lens];
    store_corrected(painting, lens, samples, rows, {own.first, std::min(own.end, other.first)}, memory);
    store_corrected(painting, lens, samples, rows, {std::max(own.first, other.end), own.end}, memory);
  }
  mix_corrected(painting, samples, rows, {std::max(needed[0].first, needed[1].first), std::min(needed[0].end, needed[1].end)},
                memory);
}

void paint_mixed(const Painting& painting, const BlockPlan& plan, const PlaneBlock& samples, PaintMemory& memory) noexcept {
  const LensSamples from[2] = {prepare_lens(painting, plan, 0, samples, memory),
                               prepare_lens(painting, plan, 1, samples, memory)};
  for (int first = 0; first < samples.rows; first += kMixedRows) {
    paint_beside_seam(painting, from, samples, {first, std::min(kMixedRows, samples.rows - first)}, memory);
  }
}

// Of a lens whose light has to be changed.
void paint_lit(const Painting& painting, const BlockPlan& plan, int lens, const PlaneBlock& samples,
               PaintMemory& memory) noexcept {
  const LensSamples from{job_of(painting, plan, lens, samples.plane, SampleOutput::fine), &plan.block, lens};
  prepare_lights(painting, plan, lens, samples, memory);
  const bool words = is_words(samples.format->type);
  if (words) std::fill_n(memory.added, 2 * kBlockWidth, 0);
  for (int first = 0; first < samples.rows; first += kSampledRows) {
    const int rows = sample_some_rows(painting, from, samples, first, memory).count;
    if (!words) {
      kStoreFineBytes.best()({memory.fine[lens][0], 2 * kBlockWidth, channels_of(samples) * samples.columns, rows},
                             samples.row_of(painting, first), painting.planes[samples.plane].stride);
    }
    for (int i = 0; words && i < rows; ++i) {
      kStoreWords.best()({memory.fine[lens][i], memory.added}, storage_of(painting),
                         reinterpret_cast<uint16_t*>(samples.row_of(painting, first + i)),
                         channels_of(samples) * samples.columns);
    }
  }
}

}  // namespace

void paint_lens_block(const Painting& painting, const BlockPlan& plan, PaintMemory& memory) noexcept {
  const int lens = plan.kind == BlockKind::lens1 ? 1 : 0;
  for (int plane = 0; plane < painting.panorama.planes; ++plane) {
    const PlaneBlock samples(painting, plan.block, plane);
    if (!stands_as_before(painting, plane)) {
      find_positions(painting, plan.block, lens, samples, {0, samples.columns}, memory);
    }
    if (changes_light(painting, lens)) {
      paint_lit(painting, plan, lens, samples, memory);
      continue;
    }
    const SampleJob job = job_of(painting, plan, lens, plane, SampleOutput::samples);
    sample_rows(job, {memory.x[lens].values, memory.y[lens].values, kBlockWidth, samples.row_of(painting, 0),
                      painting.planes[plane].stride, samples.columns, samples.rows});
  }
}

void paint_ring_block(const Painting& painting, const BlockPlan& plan, PaintMemory& memory) noexcept {
  Needed needed{};
  for (int plane = 0; plane < painting.panorama.planes; ++plane) {
    const PlaneBlock samples(painting, plan.block, plane);
    if (!stands_as_before(painting, plane)) needed = place_in_ring(painting, plan, samples, memory);
    if (!needed.lens[1]) {
      paint_corrected(painting, plan, 0, samples, memory);
    } else if (!needed.lens[0]) {
      paint_corrected(painting, plan, 1, samples, memory);
    } else {
      paint_mixed(painting, plan, samples, memory);
    }
  }
}

}  // namespace biseam::ring
