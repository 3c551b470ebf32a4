// What either lens's light is multiplied by, over the ring and to both sides of it: a table, and the same at a mesh's nodes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"
#include "ring/light/match_place.hpp"
#include "ring/light/matching.hpp"
#include "ring/mesh.hpp"
#include "ring/ring_shape.hpp"

namespace biseam::ring {

// Row r stands for the angle r / kRows of a turn, column c for the strip's column (c - before) 2^bits, from one lens's axis to
// the other's.
struct MatchField {
  static constexpr int kRows = 64, kMostColumns = 118;
  int bits, before, columns;
  MatchPlace places[2][kRows][kMostColumns];  // by lens
};

void plan_match_field(StripShape strip, MatchField& field) noexcept;

// Halves of the difference to either lens, but for what it grows by across the ring, as that is falloff, which darkens rims.
// It is undone as that of two equal lenses, growing with the square of the angle to the axis: together they are as dark where
// they meet as the slope says, however they share it.  Where the slope is steeper than such lenses have it, the rest is the
// rims' own, and goes to the lens that is at its rim: what the other one shows is right.
void fill_match_field(const LightModel& model, const Tone& tone, StripShape strip, MatchField& field) noexcept;

// Places of the field, in 1/256 of rows and columns, columns before the last one: linear both ways, rounded half up.
using FindMatchPlaces = void(const MatchField& field, int lens, const int32_t* rows, const int32_t* columns, MatchPlace* out,
                             int count) noexcept;
extern constinit const Variants<FindMatchPlaces> kFindMatchPlaces;

// The field's columns in a row of the strips, and what lies between them: a value for each of its samples.
struct MatchStripRow {
  MatchPlace places[MatchField::kMostColumns];
};
void match_strip_row(const MatchField& field, StripShape strip, int lens, int t, MatchStripRow& row) noexcept;
void match_strip_values(const MatchField& field, StripShape strip, const MatchStripRow& row, int value, int16_t* out) noexcept;

// At the nodes of a mesh, of either lens.
struct MatchNodes {
  MatchPlace* places[2];
};
size_t match_node_bytes(const MeshShape& shape) noexcept;
MatchNodes carve_match_nodes(const MeshShape& shape, void* block) noexcept;
// A row of nodes.
void fill_match_nodes(const MatchField& field, StripShape strip, const Mesh& mesh, int row, const MatchNodes& nodes) noexcept;

}  // namespace biseam::ring
