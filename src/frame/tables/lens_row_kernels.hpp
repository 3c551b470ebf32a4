#pragma once

#include "base/variants.hpp"
#include "frame/tables/lens_row.hpp"

// The versions behind map_row.
namespace biseam {

using MapRow = void(const LensRecord& lens, float scale, Latitude latitude, const double* sines, const double* cosines,
                    int count, float* entries) noexcept;

void map_row_scalar(const LensRecord& lens, float scale, Latitude latitude, const double* sines, const double* cosines,
                    int count, float* entries) noexcept;
void map_row_neon(const LensRecord& lens, float scale, Latitude latitude, const double* sines, const double* cosines, int count,
                  float* entries) noexcept;  // 64-bit ARM
void map_row_avx2(const LensRecord& lens, float scale, Latitude latitude, const double* sines, const double* cosines, int count,
                  float* entries) noexcept;
void map_row_avx512(const LensRecord& lens, float scale, Latitude latitude, const double* sines, const double* cosines,
                    int count, float* entries) noexcept;

extern const Variants<MapRow> kMapRow;

}  // namespace biseam
