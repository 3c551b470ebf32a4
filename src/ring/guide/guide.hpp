// What a frame takes for its light, near things and seam, as bytes that are the same on every processor.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ring/light/matching.hpp"
#include "ring/near/displacement.hpp"
#include "ring/strip/shape.hpp"

namespace biseam::ring {

// What an engine's guides hold.
struct GuideShape {
  StripShape strip;
  int margin;        // rows that seams keep off the strip's edges
  int light_span;    // frames over which light is smooth in time; 0: there is none
  int near_length;   // disparities; 0: there are none
  int near_most;     // the largest of them that is found
  int near_span;     // frames
  bool seams;        // there is one
  bool steady_seam;  // and it is smooth in time too
};

// Bytes, all little-endian: the head, of kHeadBytes, begins with their number; then sectors, disparities, rows of the seam and
// a sum over it all.
size_t guide_bytes(const GuideShape& shape) noexcept;

enum class GuideTrouble {
  none,
  other,   // of another version or shape
  damaged  // no engine wrote it
};
// guide: guide_bytes of it.
GuideTrouble check_guide(const GuideShape& shape, const void* guide) noexcept;

// Rows of seams are in 1/kGuideRow strip samples.
inline constexpr int kGuideRowBits = 7, kGuideRow = 1 << kGuideRowBits;
static_assert(kMaxStripWidth <= 65536 / kGuideRow);

// One that is valid.  What its shape lacks is not asked for.
class GuideReader {
 public:
  GuideReader(const GuideShape& shape, const void* guide) noexcept;

  bool starts() const noexcept;  // with this frame a scene begins
  SectorLight sector(int sector) const noexcept;
  int disparity(int t) const noexcept;
  int row(int t) const noexcept;

 private:
  const uint8_t *head_, *light_, *near_, *seam_;
};

// All that the shape has is written, then finish().
class GuideWriter {
 public:
  GuideWriter(const GuideShape& shape, void* guide) noexcept;

  void starts(bool starts) noexcept;
  void sector(int sector, const SectorLight& light) noexcept;
  void disparity(int t, int disparity) noexcept;
  void row(int t, int row) noexcept;
  void finish() noexcept;

 private:
  size_t bytes_;
  uint8_t *head_, *light_, *near_, *seam_;
};

}  // namespace biseam::ring
