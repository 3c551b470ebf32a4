#include "ring/near/displacement.hpp"

#include <algorithm>

namespace biseam::ring {

namespace {

// Values of the search's rows, in 1/kDisparityOne samples of it.
struct Ring {
  int length;
  int32_t values[kMostSearchLength];
};

// What is near reaches a little over its edge, and falls off from there no faster than half of it may be.
void spread(Ring& ring) noexcept {
  constexpr int kOver = 2;
  constexpr int32_t kFall = static_cast<int32_t>(2 * kSteepest * kDisparityOne);
  int32_t over[kMostSearchLength];
  for (int t = 0; t < ring.length; ++t) {
    over[t] = 0;
    for (int i = -kOver; i <= kOver; ++i) over[t] = std::max(over[t], ring.values[(t + i + ring.length) % ring.length]);
  }
  // Two turns, so that what is before the first row counts too.
  int32_t forwards = 0, backwards = 0;
  for (int i = 0; i < 2 * ring.length; ++i) {
    int32_t& ahead = over[i % ring.length];
    ahead = forwards = std::max(ahead, forwards - kFall);
    int32_t& back = over[(2 * ring.length - 1 - i) % ring.length];
    back = backwards = std::max(back, backwards - kFall);
  }
  std::copy_n(over, ring.length, ring.values);
}

// Weights 1 2 3 2 1, ninths.
void smooth(Ring& ring) noexcept {
  int32_t before[kMostSearchLength];
  std::copy_n(ring.values, ring.length, before);
  const auto at = [&](int t) { return before[(t + ring.length) % ring.length]; };
  for (int t = 0; t < ring.length; ++t) {
    ring.values[t] = (at(t - 2) + at(t + 2) + 2 * (at(t - 1) + at(t + 1)) + 3 * at(t) + 4) / 9;
  }
}

}  // namespace

int near_span(double rate) noexcept {
  const double known = rate > 0 ? std::min(rate, 1000.0) : 0;  // also where the rate is not a number
  return std::clamp(static_cast<int>(known / 8 + 0.5), 1, NearMemory::kMostFrames);
}

void forget(NearMemory& memory) noexcept { memory.filled = memory.next = 0; }

void remember(const NearShape& shape, const int16_t* disparities, NearMemory& memory) noexcept {
  std::copy_n(disparities, shape.length, memory.frames[memory.next]);
  memory.next = (memory.next + 1) % memory.span;
  memory.filled = std::min(memory.filled + 1, memory.span);
}

bool is_valid(const NearMemory& memory, const NearShape& shape, int span) noexcept {
  if (memory.span != span || memory.filled < 0 || memory.filled > span || memory.next < 0 || memory.next >= span) return false;
  // Until all of them are filled, they are from the first one on.
  if (memory.filled < span && memory.next != memory.filled) return false;
  const int most = most_disparity(shape);
  for (int i = 0; i < memory.filled; ++i) {
    for (int t = 0; t < shape.length; ++t) {
      if (memory.frames[i][t] < 0 || memory.frames[i][t] > most) return false;
    }
  }
  return true;
}

void displace(const NearShape& shape, const NearMemory& memory, Displacement& displacement) noexcept {
  int16_t mean[kMostSearchLength];
  for (int t = 0; t < shape.length; ++t) {
    int32_t sum = memory.filled / 2;
    for (int i = 0; i < memory.filled; ++i) sum += memory.frames[i][t];
    mean[t] = static_cast<int16_t>(memory.filled == 0 ? 0 : sum / memory.filled);
  }
  displace(shape, mean, displacement);
}

void displace(const NearShape& shape, const int16_t* disparities, Displacement& displacement) noexcept {
  Ring ring;
  ring.length = shape.length;
  std::copy_n(disparities, ring.length, ring.values);
  displacement.any = std::any_of(ring.values, ring.values + ring.length, [](int32_t value) { return value != 0; });
  if (!displacement.any) return;
  spread(ring);
  smooth(ring);
  // The middle of 2^bits strip samples, in halves of one.
  const int side = 1 << shape.bits;
  for (int t = 0; t <= shape.strip.length; ++t) {
    const int halves = 2 * (t % shape.strip.length) - (side - 1) + 2 * shape.strip.length;
    const int row = (halves >> (shape.bits + 1)) % shape.length, past = halves & (2 * side - 1);
    const int32_t here = ring.values[row], next = ring.values[(row + 1) % shape.length];
    const int32_t sum = here * (2 * side - past) + next * past;  // 2 side times as much
    // A search sample is side strip samples, and half of it goes to either lens: 1/4 of sum in 1/kDisparityOne.
    displacement.values[t] = sum << (16 - kDisparityBits - 2);
  }
}

}  // namespace biseam::ring
