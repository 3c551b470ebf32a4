#pragma once

#include "base/status.hpp"
#include "biseam/records.h"

namespace biseam {

// Level 0 has the size of the image, every further one and the top half of the one before, rounded up.  With no levels there is
// nothing but a top of the image's size.
struct Pyramid {
  BlendImage* levels;
  BlendImage* top;
};

// Size of the level below a level in one direction, rounded up.
constexpr int next_size(int size) { return static_cast<int>((int64_t{size} + 1) >> 1); }

// Levels G_k - expanded G_(k+1), top G_L, where G_0 is the image and G_(k+1) the reduced G_k.  Without levels nothing is
// written.
Status build_laplacian(const BlendImage& image, const Pyramid& out, int level_count);

// Levels G_k, top G_L.  A level whose predecessor is too small to be reduced keeps what it held.  Without levels the image
// still goes to levels[0], unless levels is null.
Status build_gaussian(const BlendImage& image, const Pyramid& out, int level_count);

// out = a * mask + b * (64 - mask) at every level and the top.  a and b are left with the products.
void mix_pyramids(const Pyramid& a, const Pyramid& b, const Pyramid& mask, const Pyramid& out, int level_count);

// The image of a Laplacian pyramid, which stays as it is.
Status collapse(const BlendImage& top, const BlendImage* levels, BlendImage& out, int level_count);

}  // namespace biseam
