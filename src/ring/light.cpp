#include "ring/light.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "base/loop_versions.hpp"
#include "camera/trigonometry.hpp"
#include "ring/fine.hpp"

namespace biseam::ring {

namespace {

constexpr int kStepBits = 23, kMostDistance = (1 << 15) - 1;
constexpr double kPixel = 4096;  // distances' units in one

// What light of strength 1 is multiplied by in each channel of a format, but for the falloff, and what is added to chroma.
struct ChannelFactors {
  double factor[3], tint[3];
};

// With the weights of BT.709's luma.  Grays of the world come out gray, and as bright as they were; what the chroma of other
// colours adds to luma where the gains differ is left out: below 3 codes of 255 for full colours with gains 5 % apart.
ChannelFactors channel_factors(const Lens& lens, const PictureFormat& format, bool full_range) noexcept {
  constexpr double kRed = 0.2126, kBlue = 0.0722, kGreen = 1 - kRed - kBlue;
  const double red = lens.gain[0], green = lens.gain[1], blue = lens.gain[2];
  if (format.rgb) return {{1 / green, 1 / blue, 1 / red}, {}};
  const double luma = kRed * red + kGreen * green + kBlue * blue, scale = full_range ? 1 : 224.0 / 219;
  const double cb = (1 - kBlue) / blue + kBlue / green, cr = (1 - kRed) / red + kRed / green;
  return {{1 / luma, cb, cr},
          {0, scale * cb * (luma - blue) / (2 * (1 - kBlue)), scale * cr * (luma - red) / (2 * (1 - kRed))}};
}

// At so many pixels from the axis, up to the rim.
double falloff(const Lens& lens, double distance) noexcept {
  const double angle = angle_of_radius(lens, distance, lens.fov / 2 * kDegree), u = angle * angle;
  return 1 + u * (lens.vignette[0] + u * lens.vignette[1]);
}

int32_t rounded(double value) noexcept { return static_cast<int32_t>(std::floor(value + 0.5)); }

BISEAM_LOOP int32_t held(int32_t value, int32_t low, int32_t high) { return value < low ? low : value > high ? high : value; }

BISEAM_LOOP void find_light(const Light& light, int channel, const int32_t* x, const int32_t* y, int32_t* factors,
                            int count) noexcept {
  const int32_t* const table = light.factors[channel];
  const int32_t cx = light.cx, cy = light.cy;
  const int shift = light.shift;
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) {
    const int32_t dx = held(((x[i] >> 4) - cx) >> shift, -kMostDistance, kMostDistance);
    const int32_t dy = held(((y[i] >> 4) - cy) >> shift, -kMostDistance, kMostDistance);
    const uint32_t square = static_cast<uint32_t>(dx * dx) + static_cast<uint32_t>(dy * dy);
    const uint32_t step = square >> kStepBits;
    const int32_t past = static_cast<int32_t>(square >> (kStepBits - 15)) & 0x7fff;
    factors[i] = table[step] + (((table[step + 1] - table[step]) * past) >> 15);
  }
}

BISEAM_LOOP void light_row(int16_t* samples, const int32_t* factors, int32_t pivot, int count) noexcept {
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) {
    const int32_t lit = pivot + (((samples[i] - pivot) * factors[i] + kLightOne / 2) >> kLightBits);
    samples[i] = static_cast<int16_t>(held(lit, INT16_MIN, INT16_MAX));
  }
}

BISEAM_LOOP void tint_row(int16_t* samples, const Tint& tint, int channels, int count) noexcept {
  for (int c = 0; c < channels; ++c) {
    const int32_t black = tint.black, share = tint.share[c];
    BISEAM_TURNS_APART
    for (ptrdiff_t i = 0; i < count; ++i) {
      int16_t& sample = samples[i * channels + c];
      const int32_t tinted = sample + (((tint.luma[i * channels + c] - black) * share + kLightOne / 2) >> kLightBits);
      sample = static_cast<int16_t>(held(tinted, INT16_MIN, INT16_MAX));
    }
  }
}

}  // namespace

constinit const Variants<FindLight> kFindLight = loop_versions<find_light, FindLight>;
constinit const Variants<LightRow> kLightRow = loop_versions<light_row, LightRow>;
constinit const Variants<TintRow> kTintRow = loop_versions<tint_row, TintRow>;

Light make_light(const Lens& lens, const PictureFormat& format, bool full_range) noexcept {
  Light light{};
  for (const double v : lens.vignette) light.any = light.any || v != 0;
  for (const double gain : lens.gain) light.any = light.any || gain != 1;
  if (!light.any) return light;
  const ChannelFactors channels = channel_factors(lens, format, full_range);
  const double rim = radius(lens, lens.fov / 2 * kDegree);
  light.cx = rounded(lens.cx * kPixel);
  light.cy = rounded(lens.cy * kPixel);
  while (rim * kPixel >= static_cast<double>(kMostDistance << light.shift)) ++light.shift;
  for (int c = 0; c < 3; ++c) {
    light.pivot[c] = format.rgb || c == 0 ? (full_range ? 0 : 16 << (kFineBits - 8)) : 1 << (kFineBits - 1);
    light.tint[c] = rounded(channels.tint[c] * kLightOne);
  }
  double before = 1;
  for (int i = 0; i <= Light::kSteps; ++i) {
    const double step = std::ldexp(std::ldexp(1, 2 * light.shift) / (kPixel * kPixel), kStepBits), square = i * step;
    const double past = rim * rim - (square - step);
    // The first step past the rim goes on as the last one within it ends; the others stay there.
    if (past >= step) {
      before = 1 / falloff(lens, std::sqrt(square));
    } else if (past > 0) {
      before += (1 / falloff(lens, rim) - before) * step / past;
    }
    for (int c = 0; c < 3; ++c) light.factors[c][i] = std::min(rounded(channels.factor[c] * before * kLightOne), kMostLight);
  }
  return light;
}

}  // namespace biseam::ring
