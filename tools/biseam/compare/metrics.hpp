// How much two luma planes differ.
#pragma once

#include <span>
#include <vector>

#include "base/size.hpp"

namespace biseam::tool {

struct LumaPair {
  Size size;
  std::span<const float> a, b;  // rows without padding, 0 to 255 whatever the depth
};

// Over the chosen columns of a panorama.
struct Quality {
  double psnr;           // dB, peak 255; infinite where nothing differs
  double weighted_psnr;  // every row weighted by the cosine of its latitude, so by its area on the sphere
  double ssim;           // -1 .. 1, mean over the windows whose middle lies in a chosen column
};

inline constexpr int kSsimWindow = 11;

// True for the columns to be measured; as many as the picture is wide.
using Columns = std::vector<bool>;

Columns all_columns(int width);

// Within half_width degrees of longitude of a seam: 90 degrees for seam 0, 270 for seam 1.  Column x lies at
// (x + 1) * 360 / width degrees.
Columns seam_columns(int width, int seam, double half_width);

Columns either_column(const Columns& a, const Columns& b);

// Structural similarity: Gaussian window of 11 x 11, standard deviation 1.5, K1 0.01, K2 0.03; only windows that lie wholly
// in the picture count.  Both sides of the picture must be at least kSsimWindow; NaN where no window counts.
Quality measure(const LumaPair& pair, const Columns& columns);

}  // namespace biseam::tool
