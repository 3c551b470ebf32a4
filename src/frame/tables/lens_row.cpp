#include "frame/tables/lens_row.hpp"

#include <math.h>

#include <bit>

#include "frame/tables/lens_row_kernels.hpp"
#include "stages/lens/estimate.hpp"
#include "stages/lens/trig.hpp"

namespace biseam {

namespace {

// Hosts differ in the sign of the NaN that 0 times infinity gives; the table holds the default NaN of the ARM vector unit.
float one_nan(float value) noexcept { return value == value ? value : std::bit_cast<float>(kDefaultNan); }

// One panorama position, to the eight bits of the estimates.
void map_pixel(const LensRecord& lens, float scale, Latitude latitude, double sine, double cosine, float* entry) noexcept {
  const float x = static_cast<float>(sine * static_cast<double>(latitude.cosine));
  const float y = latitude.sine;
  const float z = static_cast<float>(cosine * static_cast<double>(latitude.cosine));
  const float inverse_radius = reciprocal_root_estimate(x * x + y * y);
  const float radius = reciprocal_estimate(inverse_radius);
  float axis_angle = fast_arctangent(reciprocal_estimate(z) * radius, 1.0f);
  if (axis_angle < 0.0f) axis_angle += kPi;  // behind the lens plane
  const float distance = scale * axis_angle;
  const float a = (x * inverse_radius) * distance, b = (y * inverse_radius) * distance;
  const float* m = lens.matrix;
  entry[0] = one_nan(m[0] * a + m[1] * b + m[2] * z + lens.cx);
  entry[1] = one_nan(m[3] * a + m[4] * b + m[5] * z + lens.cy);
}

}  // namespace

Latitude row_latitude(const LensRecord& lens, int row) {
  const float angle = -kHalfPi + static_cast<float>(row + 1) * lens.row_step + lens.row_offset;
  double sine, cosine;
  sincos(angle, &sine, &cosine);
  return {static_cast<float>(sine), static_cast<float>(cosine)};
}

void turn_columns(const LensRecord& lens, int first, int count, double* sines, double* cosines) noexcept {
  float longitude = 0.0f;
  for (int i = 0; i < count; ++i) {
    longitude = i % 4 == 0 ? -kHalfPi + static_cast<float>(first + i + 1) * lens.column_step + lens.column_offset
                           : longitude + lens.column_step;
    sines[i] = fast_sine(longitude);
    cosines[i] = fast_cosine(longitude);
  }
}

// The definition.
void map_row_scalar(const LensRecord& lens, float scale, Latitude latitude, const double* sines, const double* cosines,
                    int count, float* entries) noexcept {
  for (int i = 0; i < count; ++i) map_pixel(lens, scale, latitude, sines[i], cosines[i], entries + 2 * i);
}

// 32-bit ARM's vector unit has no doubles and no division, and takes denormals for zeros.
#if defined(__aarch64__)
constexpr MapRow* kMapRowNeon = map_row_neon;
#else
constexpr MapRow* kMapRowNeon = nullptr;
#endif

constinit const Variants<MapRow> kMapRow{map_row_scalar, kMapRowNeon, BISEAM_ON_X86_64(map_row_avx2),
                                         BISEAM_ON_X86_64(map_row_avx512)};

void map_row(const LensRecord& lens, float scale, Latitude latitude, const double* sines, const double* cosines, int count,
             float* entries) noexcept {
  kMapRow.best()(lens, scale, latitude, sines, cosines, count, entries);
}

}  // namespace biseam
