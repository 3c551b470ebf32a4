#include "stages/lens/flip.hpp"

#include <utility>

namespace biseam {

namespace {

template <class Element>
void flip(const PlaneView<Element>& plane) {
  for (int upper = 0, lower = plane.height - 1; upper < lower; ++upper, --lower) {
    for (int k = 0; k < plane.width; ++k) std::swap(plane.row(upper)[k], plane.row(lower)[k]);
  }
}

template <class Element>
void mirror(const PlaneView<Element>& plane) {
  for (int y = 0; y < plane.height; ++y) {
    for (int left = 0, right = plane.width - 1; left < right; ++left, --right) {
      std::swap(plane.row(y)[left], plane.row(y)[right]);
    }
  }
}

}  // namespace

MovedPlanes moved_planes(const ImageHeader& image) {
  const int format = image.format;
  const bool half_chroma = format == BISEAM_YUV420_SEMIPLANAR || format == BISEAM_YUV420_SEMIPLANAR_VU;
  const bool full_chroma = format == BISEAM_YUV422_SEMIPLANAR || format == BISEAM_YUV422_SEMIPLANAR_VU;
  if (!half_chroma && !full_chroma) return {};
  return {{image.planes[0], image.width, image.strides[0], image.height},
          {reinterpret_cast<PlanePair*>(image.planes[1]), image.width / 2, image.strides[1] / 2,
           half_chroma ? image.height / 2 : image.height}};
}

void flip_plane(const PlaneView<uint8_t>& plane) { flip(plane); }
void flip_plane(const PlaneView<PlanePair>& plane) { flip(plane); }
void mirror_plane(const PlaneView<uint8_t>& plane) { mirror(plane); }
void mirror_plane(const PlaneView<PlanePair>& plane) { mirror(plane); }

}  // namespace biseam
