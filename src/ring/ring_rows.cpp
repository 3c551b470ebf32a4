#include "ring/ring_rows.hpp"

#include <cstddef>

#include "base/loop_versions.hpp"
#include "ring/mesh.hpp"

namespace biseam::ring {

namespace {

// A turn of 2^24 is length samples of 2^16, length a multiple of 16 up to 4096: an angle times length / 16 stays within 32 bits
// and is 16 times a position.
static_assert(kTurnBits == 24 && kMaxStripLength == 4096);

BISEAM_LOOP void to_strip_samples(StripShape shape, int32_t* t, int32_t* b, int count) noexcept {
  constexpr int32_t kMost = 1 << (kTurnBits - 3);
  const uint32_t factor = static_cast<uint32_t>(shape.length) / 16;
  const int32_t middle = (shape.width - 1) << 15;
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) {
    const uint32_t turn = static_cast<uint32_t>(t[i]) & ((1u << kTurnBits) - 1);
    const int32_t across = b[i] < -kMost ? -kMost : b[i] > kMost ? kMost : b[i];
    t[i] = static_cast<int32_t>(turn * factor >> 4);
    b[i] = (across * static_cast<int32_t>(factor) >> 4) + middle;
  }
}

}  // namespace

constinit const Variants<ToStripSamples> kToStripSamples = loop_versions<to_strip_samples, ToStripSamples>;

}  // namespace biseam::ring
