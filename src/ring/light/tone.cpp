#include "ring/light/tone.hpp"

#include <cmath>

namespace biseam::ring {

namespace {

constexpr double kNaturalOfTwo = 0x1.62e42fefa39efp-1;

// To the base 2, in a fixed order of operations; value > 0.  Within 1e-12.
double log_of(double value) noexcept {
  int exponent = 0;
  const double part = std::frexp(value, &exponent);
  const double z = (part - 0.75) / (part + 0.75), u = z * z;  // |z| <= 1/5
  double sum = 0;
  for (int i = 17; i >= 1; i -= 2) sum = sum * u + 1.0 / i;
  constexpr double kLogOfMiddle = -0x1.a8ff971810a5ep-2;  // of 0.75
  return exponent + kLogOfMiddle + 2 * z * sum / kNaturalOfTwo;
}

// Of the range from black to white, by which the pivot lies below black.
double depth_of(Transfer transfer, bool rgb) noexcept {
  switch (transfer) {
    case Transfer::usual:
      return rgb ? 0.055 : 0.099;
    case Transfer::bt709:
      return 0.099;
    case Transfer::srgb:
      return 0.055;
    case Transfer::power:
      return 0;
    case Transfer::log:
      return 0.3;
  }
  return 0;
}

}  // namespace

Tone make_tone(Transfer transfer, bool rgb, bool full_range) noexcept {
  Tone tone{.black = full_range ? 0 : 16 << (kFineBits - 8),
            .white = (full_range ? 255 : 235) << (kFineBits - 8),
            .pivot = 0,
            .rgb = rgb,
            .full_range = full_range};
  tone.pivot = tone.black - static_cast<int32_t>(depth_of(transfer, rgb) * (tone.white - tone.black) + 0.5);
  return tone;
}

void fill_logs(const Tone& tone, LogTable& table) noexcept {
  const double range = tone.white - tone.black;
  for (int i = 0; i <= LogTable::kSteps; ++i) {
    const int level = 16 * i + tone.black - tone.pivot;
    table.values[i] = static_cast<int32_t>(std::floor(log_of((level < 8 ? 8 : level) / range) * kLogOne + 0.5));
  }
}

double power_of(double log) noexcept {
  const double exponent = log / kLogOne, whole = std::floor(exponent), x = (exponent - whole) * kNaturalOfTwo;
  constexpr double kInverse[] = {1, 1 / 2.0, 1 / 3.0, 1 / 4.0, 1 / 5.0, 1 / 6.0, 1 / 7.0, 1 / 8.0, 1 / 9.0, 1 / 10.0, 1 / 11.0};
  double sum = 1;
  for (int i = 10; i >= 0; --i) sum = 1 + sum * (x * kInverse[i]);
  return std::ldexp(sum, static_cast<int>(whole));
}

}  // namespace biseam::ring
