#include "ring/light/measure.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

namespace biseam::ring {

namespace {

constexpr int kMostSamples = 1024;  // of a sector
constexpr int kLeastSamples = 24;   // below, a sector knows nothing
constexpr int kBinBits = 6;         // logs of a bin of the histogram
constexpr int kBins = 256;
constexpr int32_t kWindow = kLogOne / 10;  // from the middle: what is farther is something else

struct Colour {
  int32_t level[3];  // red, green, blue: fine codes above black
};

// By BT.709, in 1/8192 of chroma: of full range, and of chroma that spans 224 where luma spans 219.
struct Matrix {
  int32_t red, blue, green_of_red, green_of_blue;
};
constexpr Matrix kFull{12901, 15201, 3835, 1535}, kLimited{12613, 14862, 3749, 1500};

Colour colour_at(const StripPair& strips, const Tone& tone, int lens, ptrdiff_t i) noexcept {
  const auto& planes = strips.planes[lens];
  const int32_t first = planes[0][i] - tone.black;
  if (planes[1] == nullptr) return {{first, first, first}};
  if (tone.rgb) return {{planes[2][i] - tone.black, first, planes[1][i] - tone.black}};
  constexpr int32_t kMiddle = 1 << (kFineBits - 1);
  const Matrix& m = tone.full_range ? kFull : kLimited;
  const int32_t cb = planes[1][i] - kMiddle, cr = planes[2][i] - kMiddle;
  return {{first + ((m.red * cr) >> 13), first - ((m.green_of_red * cr + m.green_of_blue * cb) >> 13),
           first + ((m.blue * cb) >> 13)}};
}

// What makes a sample count.
class Sieve {
 public:
  explicit Sieve(const Tone& tone) noexcept
      : darkest_((tone.white - tone.black) / 20), lightest_((tone.white - tone.black) * 31 / 32) {}

  bool passes(const Colour& colour) const noexcept {
    return std::min({colour.level[0], colour.level[1], colour.level[2]}) >= darkest_ &&
           std::max({colour.level[0], colour.level[1], colour.level[2]}) <= lightest_;
  }
  // Brightness two samples apart.
  static bool is_edge(int32_t before, int32_t after, int32_t level) noexcept {
    constexpr int32_t kLeastStep = 3 << (kFineBits - 8);
    return std::abs(after - before) > kLeastStep + (level >> 4);
  }

 private:
  int32_t darkest_, lightest_;
};

struct Samples {
  int count = 0;
  int16_t across[kMostSamples];
  int16_t logs[3][kMostSamples];
};

bool is_on_edge(const StripPair& strips, int t, int b, int32_t level) noexcept {
  const StripShape shape = strips.shape;
  const ptrdiff_t before = ptrdiff_t{t == 0 ? shape.length - 1 : t - 1} * shape.width + b;
  const ptrdiff_t after = ptrdiff_t{t + 1 == shape.length ? 0 : t + 1} * shape.width + b;
  const ptrdiff_t here = ptrdiff_t{t} * shape.width + b;
  for (int lens = 0; lens < 2; ++lens) {
    const int16_t* const luma = strips.planes[lens][0];
    if (Sieve::is_edge(luma[before], luma[after], level) || Sieve::is_edge(luma[here - 1], luma[here + 1], level)) return true;
  }
  return false;
}

void gather(const StripPair& strips, const Tone& tone, const LogTable& table, int sector, Samples& samples) noexcept {
  const StripShape shape = strips.shape;
  const int rows = shape.length / kSectors, columns = shape.width - 2, first = sector * rows;
  int step = 1;
  while ((rows + step - 1) / step * ((columns + step - 1) / step) > kMostSamples) ++step;
  const Sieve sieve(tone);
  for (int t = first; t < first + rows; t += step) {
    for (int b = 1; b <= columns; b += step) {
      const ptrdiff_t at = ptrdiff_t{t} * shape.width + b;
      const Colour colour0 = colour_at(strips, tone, 0, at), colour1 = colour_at(strips, tone, 1, at);
      if (!sieve.passes(colour0) || !sieve.passes(colour1)) continue;
      if (is_on_edge(strips, t, b, std::max(colour0.level[1], colour1.level[1]))) continue;
      for (int c = 0; c < 3; ++c) {
        const int32_t log = table.at(colour1.level[c]) - table.at(colour0.level[c]);
        samples.logs[c][samples.count] = static_cast<int16_t>(std::clamp(log, -2 * kLogOne, 2 * kLogOne - 1));
      }
      samples.across[samples.count++] = static_cast<int16_t>(2 * b - (shape.width - 1));
    }
  }
}

int32_t middle_of(const int16_t* logs, int count) noexcept {
  static_assert(kBins << kBinBits == 4 * kLogOne);
  uint16_t bins[kBins] = {};
  for (int i = 0; i < count; ++i) ++bins[(logs[i] + 2 * kLogOne) >> kBinBits];
  int bin = 0;
  for (int below = bins[0]; 2 * below < count; below += bins[bin]) ++bin;
  int32_t middle = (bin << kBinBits) + (1 << (kBinBits - 1)) - 2 * kLogOne;
  for (int turn = 0; turn < 3; ++turn) {
    int32_t sum = 0, within = 0;
    for (int i = 0; i < count; ++i) {
      const bool counts = std::abs(logs[i] - middle) <= kWindow;
      sum += counts ? logs[i] - middle : 0;
      within += counts ? 1 : 0;
    }
    if (within > 0) middle += (2 * sum + (sum < 0 ? -within : within)) / (2 * within);
  }
  return middle;
}

void regress(const Samples& samples, int32_t middle, SectorLight& light) noexcept {
  int64_t n = 0, x = 0, y = 0, xy = 0, xx = 0;
  for (int i = 0; i < samples.count; ++i) {
    const int32_t log = samples.logs[1][i] - middle;
    if (std::abs(log) > kWindow) continue;
    ++n;
    x += samples.across[i];
    y += log;
    xy += samples.across[i] * log;
    xx += samples.across[i] * samples.across[i];
  }
  if (n == 0) return;
  // Twice the strip samples were counted across.
  light.slope_xy = (xy - x * y / n) / 2;
  light.slope_xx = (xx - x * x / n) / 4;
}

}  // namespace

SectorLight measure_sector(const StripPair& strips, const Tone& tone, const LogTable& logs, int sector) noexcept {
  Samples samples;
  gather(strips, tone, logs, sector, samples);
  SectorLight light{};
  if (samples.count < kLeastSamples) return light;
  light.count = samples.count;
  for (int c = 0; c < 3; ++c) light.logs[c] = middle_of(samples.logs[c], samples.count);
  regress(samples, light.logs[1], light);
  return light;
}

}  // namespace biseam::ring
