#pragma once

#include <cstdint>

// The colour formulas in integers, for the vector versions.
//
// The coefficients have four decimals, so a result is a whole number of ten-thousandths (of 1 / 40000 for chroma, whose red,
// green and blue are quarters).  The definition rounds it to the nearest float, adds a half and truncates.  Below 256 a float
// is at most 2^-17 off, less than the distance of any result from the next half, and halves are floats: the definition rounds
// exactly, halves up.  Results from 255.5 on and negative ones clamp.  So division that rounds down gives the same bytes,
// wherever its dividend fits.
namespace biseam {

// RGB from YUV, in ten-thousandths of what is added to luma; u and v less 128.
//   red 14020 v, green -3441 u - 7141 v, blue 17720 u
inline constexpr int16_t kRedOfV = 14020, kGreenOfU = -3441, kGreenOfV = -7141, kBlueOfU = 17720;
inline constexpr int32_t kOffsetScale = 10000;
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

// Integer RGB that is read: its fractional bits, and the least sample that does not fit 16 bits without them.
inline constexpr int kFractionBits = 6;
inline constexpr int32_t kWholeLimit = 1 << (15 + kFractionBits);

// Luma in thousandths, from samples without fractional bits that fit 16 bits: 299 r + 587 g + 114 b.
inline constexpr int16_t kLumaOfRed = 299, kLumaOfGreen = 587, kLumaOfBlue = 114;
inline constexpr int32_t kLumaScale = 1000, kLumaRounding = kLumaScale / 2;
// Division in 16 bits: n / 8 * 33555 >> 22 is n / 1000 while n / 8 is below 59074, and more than 255 from there on.
inline constexpr uint16_t kLumaReciprocal = 33555;
inline constexpr int kLumaEase = 3, kLumaShift = 6;
// By the upper half of a doubled product: n * 2^9 / 1000.
inline constexpr int32_t kLumaWideReciprocal = 1099511628;  // 2^40 / 1000
inline constexpr int kLumaWideShift = 9;

// Chroma in units of 1 / 40000, from sums of four samples without fractional bits that fit 16 bits.  Sums of two count double.
//   u = -1687 r - 3313 g + 5000 b, v = 5000 r - 4187 g - 813 b
inline constexpr int16_t kUOfRed = -1687, kUOfGreen = -3313, kUOfBlue = 5000;
inline constexpr int16_t kVOfRed = 5000, kVOfGreen = -4187, kVOfBlue = -813;
inline constexpr int32_t kChromaScale = 40000, kChromaRounding = 128 * kChromaScale + kChromaScale / 2;
// Division in floats: of n >> 6 by 625, with the float after 1 / 625.
inline constexpr int kChromaEase = 6;
inline constexpr float kPerChromaScale = 1.60000008e-3f;
static_assert(double{kPerChromaScale} * 625 > 1 && double{kPerChromaScale} * 625 < 1 + 0x1p-23);
// By kDecimalReciprocal.
inline constexpr int kChromaShift = 15;

}  // namespace biseam
