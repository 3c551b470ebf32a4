#include "frame/remap/sample_row.hpp"

#include "stages/lens/sample.hpp"

namespace biseam {

void sample_luma_row_scalar(const float* entries, const uint8_t* source, std::ptrdiff_t stride, uint8_t* destination,
                            int count) noexcept {
  for (int k = 0; k < count; ++k) destination[k] = sample_luma(entries + 2 * k, source, stride);
}

void sample_chroma_row_scalar(const float* entries, const uint8_t* source, std::ptrdiff_t stride, float y_factor,
                              uint8_t* destination, int count) noexcept {
  for (int k = 0; k < count; ++k) sample_chroma(entries + 4 * k, 2.0f, y_factor, source, stride, destination + 2 * k);
}

constinit const Variants<SampleLumaRow> kSampleLumaRow{sample_luma_row_scalar, BISEAM_ON_ARM(sample_luma_row_neon),
                                                       BISEAM_ON_X86_64(sample_luma_row_avx2),
                                                       BISEAM_ON_X86_64(sample_luma_row_avx512)};
constinit const Variants<SampleChromaRow> kSampleChromaRow{sample_chroma_row_scalar, BISEAM_ON_ARM(sample_chroma_row_neon),
                                                           BISEAM_ON_X86_64(sample_chroma_row_avx2),
                                                           BISEAM_ON_X86_64(sample_chroma_row_avx512)};
constinit const Variants<SampleRowPair> kSampleRowPair{
    sample_rows_one_by_one<sample_luma_row_scalar, sample_chroma_row_scalar>,
    BISEAM_ON_ARM((sample_rows_one_by_one<sample_luma_row_neon, sample_chroma_row_neon>)),
    BISEAM_ON_X86_64((sample_rows_one_by_one<sample_luma_row_avx2, sample_chroma_row_avx2>)),
    BISEAM_ON_X86_64(sample_row_pair_avx512)};

}  // namespace biseam
