#pragma once

#include <cstdint>

#include "stages/format/colour.hpp"

// The colour formulas in integers, for the vector versions.
//
// The coefficients have four decimals, so a result is a whole number of ten-thousandths (of 1 / 40000 for chroma, whose red,
// green and blue are quarters).  The definition rounds it to the nearest float, adds a half and truncates.  Below 256 a float
// is at most 2^-17 off, less than the distance of any result from the next half, and halves are floats: the definition rounds
// exactly, halves up.  Results from 255.5 on and negative ones clamp.  So division that rounds down gives the same bytes,
// wherever its dividend fits.
namespace biseam {

void not_a_whole_number_of_units();  // nowhere: what would call it is no constant

// A coefficient in units of one over scale, which it is a whole number of.
consteval int16_t in_units(double coefficient, int scale) {
  const double units = coefficient * scale;
  const int nearest = static_cast<int>(units < 0 ? units - 0.5 : units + 0.5);
  if (static_cast<double>(nearest) / scale != coefficient) not_a_whole_number_of_units();
  return static_cast<int16_t>(nearest);
}

// RGB from YUV, in ten-thousandths of what is added to luma; u and v less 128.
inline constexpr int32_t kOffsetScale = 10000;
inline constexpr int16_t kRedOfV = in_units(colour::kRedOfV, kOffsetScale);
inline constexpr int16_t kGreenOfU = in_units(colour::kGreenOfU, kOffsetScale);
inline constexpr int16_t kGreenOfV = in_units(colour::kGreenOfV, kOffsetScale);
inline constexpr int16_t kBlueOfU = in_units(colour::kBlueOfU, kOffsetScale);
// Keeps dividends positive; taken off again after the division.
inline constexpr int16_t kOffsetBias = 256;
inline constexpr int32_t kOffsetRounding = kOffsetBias * kOffsetScale + kOffsetScale / 2;
// The float after 1 / 10000: products of multiples of 10000 don't fall below the quotient, and what is 1 / 10000 short of a
// whole number below 500 stays short of it.
inline constexpr float kPerOffsetScale = 1.00000005e-4f;
static_assert(double{kPerOffsetScale} * kOffsetScale > 1 && double{kPerOffsetScale} * kOffsetScale < 1 + 0x1p-24);
// The same by the upper half of a doubled product: n * 2^13 / 10000, or n * 2^15 / 40000, less than 2^-10 too large.
inline constexpr int32_t kDecimalReciprocal = 1759218605;  // 2^44 / 10000
inline constexpr int kOffsetShift = 13;

// The least sample of integer RGB that does not fit 16 bits without its fractional bits.
inline constexpr int32_t kWholeLimit = 1 << (15 + kFractionBits);

// Luma in thousandths, from samples without fractional bits that fit 16 bits.
inline constexpr int32_t kLumaScale = 1000, kLumaRounding = kLumaScale / 2;
inline constexpr int16_t kLumaOfRed = in_units(colour::kLumaOfRed, kLumaScale);
inline constexpr int16_t kLumaOfGreen = in_units(colour::kLumaOfGreen, kLumaScale);
inline constexpr int16_t kLumaOfBlue = in_units(colour::kLumaOfBlue, kLumaScale);
// Division in 16 bits: n / 8 * 33555 >> 22 is n / 1000 while n / 8 is below 59074, and more than 255 from there on.
inline constexpr uint16_t kLumaReciprocal = 33555;
inline constexpr int kLumaEase = 3, kLumaShift = 6;
// By the upper half of a doubled product: n * 2^9 / 1000.
inline constexpr int32_t kLumaWideReciprocal = 1099511628;  // 2^40 / 1000
inline constexpr int kLumaWideShift = 9;

// Chroma in units of 1 / 40000, from sums of four samples without fractional bits that fit 16 bits.  Sums of two count double.
// The coefficients are ten-thousandths.
inline constexpr int16_t kUOfRed = in_units(colour::kUOfRed, kOffsetScale),
                         kUOfGreen = in_units(colour::kUOfGreen, kOffsetScale);
inline constexpr int16_t kUOfBlue = in_units(colour::kUOfBlue, kOffsetScale), kVOfRed = in_units(colour::kVOfRed, kOffsetScale);
inline constexpr int16_t kVOfGreen = in_units(colour::kVOfGreen, kOffsetScale);
inline constexpr int16_t kVOfBlue = in_units(colour::kVOfBlue, kOffsetScale);
inline constexpr int32_t kChromaScale = 4 * kOffsetScale, kChromaRounding = 128 * kChromaScale + kChromaScale / 2;
// Division in floats: of n >> 6 by 625, with the float after 1 / 625.
inline constexpr int kChromaEase = 6;
inline constexpr float kPerChromaScale = 1.60000008e-3f;
static_assert(double{kPerChromaScale} * 625 > 1 && double{kPerChromaScale} * 625 < 1 + 0x1p-23);
// By kDecimalReciprocal.
inline constexpr int kChromaShift = 15;

}  // namespace biseam
