#include "frame/tables/lens_row.hpp"

namespace biseam {

void turn_columns(const LensRecord& lens, int first, int count, double* sines, double* cosines) noexcept {
  for (int i = 0; i < count; ++i) {
    const double longitude = column_longitude(lens, first + i);
    sines[i] = fast_sine(longitude);
    cosines[i] = fast_cosine(longitude);
  }
}

void map_row_scalar(const LensRecord& lens, float scale, Latitude latitude, const double* sines, const double* cosines,
                    int count, float* entries) noexcept {
  for (int i = 0; i < count; ++i) map_entry(lens, scale, latitude, sines[i], cosines[i], entries + 2 * i);
}

// 32-bit ARM's vector unit has no doubles and no division, and takes denormals for zeros.
#if defined(__aarch64__)
constexpr MapRow* kMapRowNeon = map_row_neon;
#else
constexpr MapRow* kMapRowNeon = nullptr;
#endif

constinit const Variants<MapRow> kMapRow{map_row_scalar, kMapRowNeon, BISEAM_ON_X86_64(map_row_avx2),
                                         BISEAM_ON_X86_64(map_row_avx512)};

}  // namespace biseam
