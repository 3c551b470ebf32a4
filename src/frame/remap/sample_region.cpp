#include "frame/remap/sample_region.hpp"

#include "frame/remap/sample_row.hpp"

namespace biseam {

void sample_region(const RemapRegion& region) {
  const ImageHeader& s = *region.source;
  const SampleSource source{s.planes[0], s.planes[1], s.strides[0], s.strides[1]};
  const float y_factor = static_cast<float>(region.chroma_y_factor);
  for (int64_t row = region.first_row; row < region.end_row; row += 2) {
    const RegionRow upper = luma_row_of(region, row), lower = luma_row_of(region, row + 1), chroma = chroma_row_of(region, row);
    if (lower.count == upper.count && chroma.count == upper.count / 2 && chroma.entries == upper.entries) {
      kSampleRowPair.best()(upper.entries, lower.entries, source, y_factor, {upper.samples, lower.samples, chroma.samples},
                            upper.count);
    } else {
      kSampleLumaRow.best()(upper.entries, source.luma, source.luma_stride, upper.samples, upper.count);
      kSampleLumaRow.best()(lower.entries, source.luma, source.luma_stride, lower.samples, lower.count);
      kSampleChromaRow.best()(chroma.entries, source.chroma, source.chroma_stride, y_factor, chroma.samples, chroma.count);
    }
  }
}

}  // namespace biseam
