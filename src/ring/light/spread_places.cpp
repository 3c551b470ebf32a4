#include "ring/light/spread_places.hpp"

#include <cstddef>

#include "base/loop_versions.hpp"
#include "ring/light/match_arithmetic.hpp"

namespace biseam::ring {

namespace {

constexpr ptrdiff_t kPitch = sizeof(MatchPlace) / sizeof(int16_t);

// From a place to the next; what is past it is in 1/2^15.
struct Line {
  int16_t left, rise;

  BISEAM_LOOP explicit Line(const int16_t* place) : left(place[0]), rise(difference(place[kPitch], place[0])) {}
  BISEAM_LOOP int16_t at(int16_t past) const { return sum(left, product(rise, past)); }
};

BISEAM_LOOP void spread_places(const PlaceRow& row, int16_t* out, int count) noexcept {
  const int bits = row.bits, step = 1 << row.step_bits;
  int place = row.start;
  for (int done = 0; done < count;) {
    const int column = place >> bits, past = place & ((1 << bits) - 1),
              within = ((1 << bits) - past + step - 1) >> row.step_bits;
    const int some = within < count - done ? within : count - done;
    const int16_t begin = static_cast<int16_t>(past << (15 - bits)), on = static_cast<int16_t>(step << (15 - bits));
    const Line first(row.first + column * kPitch);
    if (row.second == nullptr) {
      int16_t* const to = out + done;
      BISEAM_TURNS_APART
      for (ptrdiff_t i = 0; i < some; ++i) to[i] = first.at(static_cast<int16_t>(begin + static_cast<int16_t>(i) * on));
    } else {
      const Line second(row.second + column * kPitch);
      int16_t* const to = out + ptrdiff_t{2} * done;
      BISEAM_TURNS_APART
      for (ptrdiff_t i = 0; i < some; ++i) {
        const int16_t at = static_cast<int16_t>(begin + static_cast<int16_t>(i) * on);
        to[2 * i] = first.at(at);
        to[2 * i + 1] = second.at(at);
      }
    }
    place += some * step;
    done += some;
  }
}

}  // namespace

constinit const Variants<SpreadPlaces> kSpreadPlaces = loop_versions<spread_places, SpreadPlaces>;

}  // namespace biseam::ring
