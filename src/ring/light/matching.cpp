#include "ring/light/matching.hpp"

#include <algorithm>
#include <cmath>

namespace biseam::ring {

namespace {

constexpr double kMostWhole = 1.2 * kLogOne, kMostRest = 0.4 * kLogOne;
// Samples of a frame that pull a sector towards the whole lens, and the whole towards no difference at all.
constexpr double kDoubt = 24;
// A sector that differs by more than this from the others has light of its own, and counts no more than this for the whole.
constexpr double kOwnLight = 0.08 * kLogOne;
constexpr int kTurns = 8;
// A frame whose samples have a smaller sum of squares across pulls the slope towards none.
constexpr double kSlopeDoubt = 1e3;
constexpr double kMostSlope = 0.03 * kLogOne;

struct Sector {
  double count, logs[3];
};

Sector sum_of(const LightFrame* frames, int frame_count, int sector) noexcept {
  int64_t count = 0, sums[3] = {};
  for (int i = 0; i < frame_count; ++i) {
    const SectorLight& light = frames[i].sectors[sector];
    count += light.count;
    for (int c = 0; c < 3; ++c) sums[c] += int64_t{light.count} * light.logs[c];
  }
  Sector found{static_cast<double>(count), {}};
  for (int c = 0; c < 3 && count > 0; ++c) found.logs[c] = static_cast<double>(sums[c]) / static_cast<double>(count);
  return found;
}

// A mean that no sector moves by more than its share of kOwnLight.
double whole_of(const Sector* sectors, int channel, int filled) noexcept {
  double count = 0, whole = 0;
  for (int s = 0; s < kSectors; ++s) {
    count += sectors[s].count;
    whole += sectors[s].count * sectors[s].logs[channel];
  }
  if (count == 0) return 0;
  whole /= count;
  for (int turn = 0; turn < kTurns; ++turn) {
    double moved = 0;
    for (int s = 0; s < kSectors; ++s) {
      moved += sectors[s].count * std::clamp(sectors[s].logs[channel] - whole, -kOwnLight, kOwnLight);
    }
    whole += moved / count;
  }
  return std::clamp(whole * count / (count + kDoubt * filled), -kMostWhole, kMostWhole);
}

}  // namespace

int light_span(double rate) noexcept {
  return std::clamp(static_cast<int>(std::clamp(rate, 0.0, 1000.0) / 2 + 0.5), 1, LightMemory::kMostFrames);
}

void forget(LightMemory& memory) noexcept { memory.filled = memory.next = 0; }

void remember(LightMemory& memory, const LightFrame& frame) noexcept {
  memory.frames[memory.next] = frame;
  memory.next = (memory.next + 1) % memory.span;
  memory.filled = std::min(memory.filled + 1, memory.span);
}

bool is_valid(const SectorLight& light) noexcept {
  constexpr int32_t kMostCount = 1 << 16, kMostLog = 2 * kLogOne;
  constexpr int64_t kMostSum = int64_t{1} << 50;
  for (const int32_t log : light.logs) {
    if (log < -kMostLog || log > kMostLog) return false;
  }
  return light.count >= 0 && light.count <= kMostCount && light.slope_xx >= 0 && light.slope_xx <= kMostSum &&
         light.slope_xy >= -kMostSum && light.slope_xy <= kMostSum;
}

bool is_valid(const LightMemory& memory, int span) noexcept {
  if (memory.span != span || memory.filled < 0 || memory.filled > span || memory.next < 0 || memory.next >= span) return false;
  for (int i = 0; i < memory.filled; ++i) {
    for (const SectorLight& light : memory.frames[i].sectors) {
      if (!is_valid(light)) return false;
    }
  }
  return true;
}

LightModel model_of(const LightFrame* frames, int count) noexcept {
  Sector sectors[kSectors];
  for (int s = 0; s < kSectors; ++s) sectors[s] = sum_of(frames, count, s);
  LightModel model{};
  for (int c = 0; c < 3; ++c) {
    model.whole[c] = whole_of(sectors, c, count);
    for (int s = 0; s < kSectors; ++s) {
      const double known = sectors[s].count / (sectors[s].count + kDoubt * count + 1);
      model.rest[s][c] = std::clamp((sectors[s].logs[c] - model.whole[c]) * known, -kMostRest, kMostRest);
    }
  }
  int64_t xy = 0, xx = 0;
  for (int i = 0; i < count; ++i) {
    for (const SectorLight& light : frames[i].sectors) {
      xy += light.slope_xy;
      xx += light.slope_xx;
    }
  }
  model.slope =
      std::clamp(static_cast<double>(xy) / (static_cast<double>(xx) + kSlopeDoubt * count + 1), -kMostSlope, kMostSlope);
  return model;
}

}  // namespace biseam::ring
