#pragma once

#include <cstdint>

// The colour formulas of one pixel and of one chroma pair: full-range YCbCr.  RGB is interleaved, R first.
namespace biseam {

// Of the chroma less 128, and of red, green and blue.
namespace colour {
inline constexpr double kRedOfV = 1.402, kGreenOfU = -0.3441, kGreenOfV = -0.7141, kBlueOfU = 1.772;
inline constexpr double kLumaOfRed = 0.299, kLumaOfGreen = 0.587, kLumaOfBlue = 0.114;
inline constexpr double kUOfRed = -0.1687, kUOfGreen = -0.3313, kUOfBlue = 0.5;
inline constexpr double kVOfRed = 0.5, kVOfGreen = -0.4187, kVOfBlue = -0.0813;
}  // namespace colour

inline constexpr int kNeutralChroma = 128;

// Integer RGB that becomes YUV has this many fractional bits.
inline constexpr int kFractionBits = 6;

// Rounds through single precision, then truncates half up and clamps.  |value| below 2^26.
inline uint8_t to_byte(double value) noexcept {
  const int rounded = static_cast<int>(static_cast<double>(static_cast<float>(value)) + 0.5);
  return static_cast<uint8_t>(rounded < 0 ? 0 : rounded > 255 ? 255 : rounded);
}

// What one chroma pair adds to the luma of all its pixels.
struct ChromaTerms {
  double red, green_u, green_v, blue;
};

inline ChromaTerms terms_of(int u, int v) noexcept {
  return {colour::kRedOfV * (v - kNeutralChroma), colour::kGreenOfU * (u - kNeutralChroma),
          colour::kGreenOfV * (v - kNeutralChroma), colour::kBlueOfU * (u - kNeutralChroma)};
}

// Sample receives 0..255.
template <class Sample>
void store_pixel(int luma, const ChromaTerms& terms, Sample* rgb) noexcept {
  rgb[0] = to_byte(luma + terms.red);
  rgb[1] = to_byte(luma + terms.green_u + terms.green_v);
  rgb[2] = to_byte(luma + terms.blue);
}

inline uint8_t luma_of(const int32_t* rgb) noexcept {
  return to_byte(colour::kLumaOfRed * (rgb[0] >> kFractionBits) + colour::kLumaOfGreen * (rgb[1] >> kFractionBits) +
                 colour::kLumaOfBlue * (rgb[2] >> kFractionBits));
}

struct ChromaPair {
  uint8_t u, v;
};

inline ChromaPair chroma_of(double red, double green, double blue) noexcept {
  return {to_byte(colour::kUOfRed * red + colour::kUOfGreen * green + colour::kUOfBlue * blue + kNeutralChroma),
          to_byte(colour::kVOfRed * red + colour::kVOfGreen * green + colour::kVOfBlue * blue + kNeutralChroma)};
}

inline int32_t wrapping_sum(int32_t a, int32_t b) noexcept {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

// The raw samples of a block are summed (wrapping) before the fractional bits are dropped: once per block.
inline float mean_of(int32_t a, int32_t b) noexcept { return static_cast<float>(wrapping_sum(a, b) >> kFractionBits) * 0.5f; }

inline float mean_of(int32_t a, int32_t b, int32_t c, int32_t d) noexcept {
  return static_cast<float>(wrapping_sum(wrapping_sum(a, b), wrapping_sum(c, d)) >> kFractionBits) * 0.25f;
}

// Of two pixels side by side.
inline ChromaPair chroma422_of(const int32_t* p0, const int32_t* p1) noexcept {
  return chroma_of(mean_of(p0[0], p1[0]), mean_of(p0[1], p1[1]), mean_of(p0[2], p1[2]));
}

// Of two pixels and the two below them.
inline ChromaPair chroma420_of(const int32_t* p00, const int32_t* p10, const int32_t* p01, const int32_t* p11) noexcept {
  return chroma_of(mean_of(p00[0], p10[0], p01[0], p11[0]), mean_of(p00[1], p10[1], p01[1], p11[1]),
                   mean_of(p00[2], p10[2], p01[2], p11[2]));
}

}  // namespace biseam
