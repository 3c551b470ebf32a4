// From what frames say about the lenses' light to what is undone: over about half a second, and nothing before a cut.
#pragma once

#include <cstdint>

#include "ring/light/measure.hpp"

namespace biseam::ring {

struct LightFrame {
  SectorLight sectors[kSectors];
};

// Frames that count, the newest last at next - 1.  What came before them has no effect: a clip's parts equal the whole when
// span frames before a part are known.
struct LightMemory {
  static constexpr int kMostFrames = 32;
  int32_t span, filled, next;  // span: 1 .. kMostFrames
  LightFrame frames[kMostFrames];
};

// Half a second; rate: frames a second.
int light_span(double rate) noexcept;

void forget(LightMemory& memory) noexcept;
void remember(LightMemory& memory, const LightFrame& frame) noexcept;
// Whether light that comes from outside can have been measured, or be the mean of what was.
bool is_valid(const SectorLight& light) noexcept;
// Whether a memory from outside can be gone on from.
bool is_valid(const LightMemory& memory, int span) noexcept;

// Logs of lens 1's factor against lens 0's, in 1/kLogOne.
struct LightModel {
  double whole[3];           // of a whole lens, by channel as sectors know them
  double rest[kSectors][3];  // what a sector has beyond it
  double slope;              // the same for a strip sample towards lens 1
};
LightModel model_of(const LightFrame* frames, int count) noexcept;
inline LightModel model_of(const LightMemory& memory) noexcept { return model_of(memory.frames, memory.filled); }

}  // namespace biseam::ring
