#include "stages/lens/flip.hpp"

#include "frame/compose/exchange.hpp"

namespace biseam {

namespace {

bool has_half_height_chroma(int format) { return format == BISEAM_YUV420_SEMIPLANAR || format == BISEAM_YUV420_SEMIPLANAR_VU; }
bool has_full_height_chroma(int format) { return format == BISEAM_YUV422_SEMIPLANAR || format == BISEAM_YUV422_SEMIPLANAR_VU; }

// Other formats stay as they are, the planar ones included.
bool has_chroma_pairs(int format) { return has_half_height_chroma(format) || has_full_height_chroma(format); }

int chroma_rows(const ImageHeader& image) { return has_half_height_chroma(image.format) ? image.height / 2 : image.height; }

PlanePair* chroma_pairs(const ImageHeader& image) { return reinterpret_cast<PlanePair*>(image.planes[1]); }

}  // namespace

void flip_rows(const ImageHeader& image) {
  if (!has_chroma_pairs(image.format)) return;
  flip_plane(image.planes[0], image.width, image.strides[0], image.height);
  flip_plane(chroma_pairs(image), image.width / 2, image.strides[1] / 2, chroma_rows(image));
}

void mirror_columns(const ImageHeader& image) {
  if (!has_chroma_pairs(image.format)) return;
  mirror_plane(image.planes[0], image.width, image.strides[0], image.height);
  mirror_plane(chroma_pairs(image), image.width / 2, image.strides[1] / 2, chroma_rows(image));
}

}  // namespace biseam
