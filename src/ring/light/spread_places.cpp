#include "ring/light/spread_places.hpp"

#include <cstddef>

#include "base/loop_versions.hpp"

namespace biseam::ring {

namespace {

constexpr ptrdiff_t kPitch = sizeof(MatchPlace) / sizeof(int16_t);

// A line from a place to the next, in 1/2^bits.
struct Line {
  int32_t first, rise;

  BISEAM_LOOP Line(const int16_t* left, int bits, int past, int step_bits)
      : first((left[0] << bits) + (left[kPitch] - left[0]) * past + (1 << bits >> 1)),
        rise((left[kPitch] - left[0]) << step_bits) {}
  BISEAM_LOOP int16_t at(ptrdiff_t i, int bits) const {
    return static_cast<int16_t>((first + rise * static_cast<int32_t>(i)) >> bits);
  }
};

BISEAM_LOOP void spread_places(const PlaceRow& row, int16_t* out, int count) noexcept {
  const int bits = row.bits, step = 1 << row.step_bits;
  int place = row.start;
  for (int done = 0; done < count;) {
    const int column = place >> bits, past = place & ((1 << bits) - 1),
              within = ((1 << bits) - past + step - 1) >> row.step_bits;
    const int some = within < count - done ? within : count - done;
    const Line first(row.first + column * kPitch, bits, past, row.step_bits);
    if (row.second == nullptr) {
      int16_t* const to = out + done;
      BISEAM_TURNS_APART
      for (ptrdiff_t i = 0; i < some; ++i) to[i] = first.at(i, bits);
    } else {
      const Line second(row.second + column * kPitch, bits, past, row.step_bits);
      int16_t* const to = out + ptrdiff_t{2} * done;
      BISEAM_TURNS_APART
      for (ptrdiff_t i = 0; i < some; ++i) {
        to[2 * i] = first.at(i, bits);
        to[2 * i + 1] = second.at(i, bits);
      }
    }
    place += some * step;
    done += some;
  }
}

}  // namespace

constinit const Variants<SpreadPlaces> kSpreadPlaces = loop_versions<spread_places, SpreadPlaces>;

}  // namespace biseam::ring
