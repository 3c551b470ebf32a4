// What past frames have to say about the next one, kept as bytes.
#pragma once

#include <cstddef>

#include "ring/light/matching.hpp"
#include "ring/light/scene_cut.hpp"
#include "ring/near/displacement.hpp"
#include "ring/strip/seam_memory.hpp"

namespace biseam::ring {

// Where an engine keeps it; null: it has nothing of the kind.
struct StateParts {
  StripShape strip;
  int seam_margin;  // rows
  SceneWatch* scene;
  LightMemory* light;
  NearMemory* near;
  SeamMemory* seams;
};

// How many past frames have a say, at most.
int history(const StateParts& parts) noexcept;
void forget(const StateParts& parts) noexcept;

// Bytes that begin with their number (uint32_t).
size_t state_bytes(const StateParts& parts) noexcept;
void save_state(const StateParts& parts, void* state) noexcept;
// Refuses what an engine with other parts saved, and what none can have saved, and changes nothing then.
bool load_state(const StateParts& parts, const void* state) noexcept;

}  // namespace biseam::ring
