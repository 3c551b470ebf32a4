#pragma once

#include <cstdint>

// Weights of the sampling kernels, along one axis.
//
// Every phase's weights add up to kTapsOne exactly, so that flat pictures stay flat.  The sum of their magnitudes is at most
// 1.5 times that, which the sums of the samplers are laid out for.
namespace biseam::ring {

enum class Quality { fast, good, best };  // bilinear, cubic (4 x 4), spline36 (6 x 6)

inline constexpr int kTapBits = 13;
inline constexpr int32_t kTapsOne = 1 << kTapBits;

// One kernel at one width.  Phase p of 2^phase_bits stands for positions p / 2^phase_bits past a sample; tap k is the sample
// k - before from that one.  The same weights in two layouts: by phase, for one position at a time, and by tap, for vectors of
// positions.  What is past the last tap weighs nothing.
struct AxisWeights {
  const int16_t* words;  // [phase][padded taps]
  const int8_t* parts;   // [tap][2][phase]: weight = 128 * part 0 + part 1, both from -64 to 64
  int taps;              // even
  int padded_taps;       // a multiple of 4
  int before;
  int phase_bits;

  int phases() const noexcept { return 1 << phase_bits; }
};

// Where the panorama shrinks the picture the kernel is widened by one of these factors, so that no moire is left.  Beyond 8 a
// triangle serves all qualities: such panoramas are thumbnails.
inline constexpr double kWidenings[] = {1, 1.5, 2, 2.5, 3, 4, 5, 6, 8, 12, 16, 24, 32, 48, 64};

// scale: source samples for each sample of the panorama along this axis, positive.  The kernel stays as it is up to 1.55: a
// lens of 195 degrees is shrunk that much along its rim by a panorama of twice its width, and pictures hold next to nothing
// there that such a scale turns into moire.  Beyond, it is widened by the least factor that is at most a tenth below the scale.
int widening_for(double scale) noexcept;  // an index of kWidenings

const AxisWeights& axis_weights(Quality quality, int widening) noexcept;

}  // namespace biseam::ring
