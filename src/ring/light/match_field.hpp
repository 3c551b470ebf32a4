// What either lens's light is multiplied by, over the ring and to both sides of it: a table, and the same at a mesh's nodes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ring/light.hpp"
#include "ring/light/matching.hpp"
#include "ring/mesh.hpp"
#include "ring/ring_shape.hpp"

namespace biseam::ring {

// Factors of the planes' channels about the tone's pivot, or about the middle of chroma, and what of luma is added to chroma:
// all in 1/kLightOne, factors from 1/4 to just below 4.
enum MatchValue { first_factor, second_factor, third_factor, first_tint, second_tint, kMatchValues };

// Row r stands for the angle r / kRows of a turn, column c for the strip's column (c - before) 2^bits.  Beyond the columns
// factors are those of the whole lens.
struct MatchField {
  static constexpr int kRows = 64, kMostColumns = 96;
  int bits, before, columns;
  int16_t values[2][kMatchValues][kRows][kMostColumns];  // by lens
};

void plan_match_field(StripShape strip, MatchField& field) noexcept;

// Halves of the difference to either lens; but what it grows by across the ring to the lens that is at its rim there, as
// falloff darkens rims: what the other one shows is right.
void fill_match_field(const LightModel& model, const Tone& tone, StripShape strip, MatchField& field) noexcept;

// Values of a row of strip samples, by linear interpolation: width of each.
struct MatchRows {
  int16_t values[kMatchValues][kMaxStripWidth];
};
void match_strip_row(const MatchField& field, StripShape strip, int lens, int t, MatchRows& rows) noexcept;

// Values at the nodes of a mesh, plane after plane: of lens 0, then of lens 1.
struct MatchNodes {
  int16_t* values[2][kMatchValues];
};
size_t match_node_bytes(const MeshShape& shape) noexcept;
MatchNodes carve_match_nodes(const MeshShape& shape, void* block) noexcept;
// A row of nodes.
void fill_match_nodes(const MatchField& field, StripShape strip, const Mesh& mesh, int row, const MatchNodes& nodes) noexcept;

}  // namespace biseam::ring
