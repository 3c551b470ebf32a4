// Whether two frames show the same scene.
#pragma once

#include <cstdint>

#include "ring/strip/shape.hpp"

namespace biseam::ring {

// What a lens shows in the ring, in means of cells.
struct RingImage {
  static constexpr int kAround = 64, kAcross = 2, kCells = kAround * kAcross;
  int32_t cells[kCells];  // fine
};
RingImage ring_image(const int16_t* luma, StripShape shape) noexcept;

// The pattern of light and dark is another one, by more than noise.  What becomes brighter or darker everywhere is no cut.
bool is_other_scene(const RingImage& before, const RingImage& after) noexcept;

// Frame by frame, of both lenses: a cut changes both.
struct SceneWatch {
  int32_t any;  // 0: there was no frame yet
  RingImage last[2];

  // strips: of either lens, by plane, before their light is matched.
  template <int planes>
  bool changes(int16_t* const (&strips)[2][planes], StripShape shape) noexcept {
    const RingImage now[2] = {ring_image(strips[0][0], shape), ring_image(strips[1][0], shape)};
    const bool changed = any != 0 && is_other_scene(last[0], now[0]) && is_other_scene(last[1], now[1]);
    last[0] = now[0];
    last[1] = now[1];
    any = 1;
    return changed;
  }
};
void forget(SceneWatch& watch) noexcept;
// Whether a watch from outside can be gone on with.
bool is_valid(const SceneWatch& watch) noexcept;

}  // namespace biseam::ring
