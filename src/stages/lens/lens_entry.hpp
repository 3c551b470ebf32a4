#pragma once

#include <bit>

#include "biseam/records.h"
#include "stages/lens/estimate.hpp"
#include "stages/lens/trig.hpp"

// The formulas of a lens table's entries.
namespace biseam {

// Sine and cosine of a panorama row's latitude.  Row 0 is one step below the pole, the last row exactly at the other.
struct Latitude {
  float sine, cosine;
};
Latitude row_latitude(const LensRecord& lens, int row);

// Every fourth longitude comes from the column's index, the others by addition.
inline float column_longitude(const LensRecord& lens, int column) noexcept {
  float longitude = -kHalfPi + static_cast<float>(column / 4 * 4 + 1) * lens.column_step + lens.column_offset;
  for (int i = 0; i < column % 4; ++i) longitude += lens.column_step;
  return longitude;
}

// Pixels per radian of angle from the optical axis.
inline float lens_scale(const LensRecord& lens) noexcept { return lens.focal * lens.focus; }

// Hosts differ in the sign of the NaN that 0 times infinity gives; the table holds the default NaN of the ARM vector unit.
inline float one_nan(float value) noexcept { return value == value ? value : std::bit_cast<float>(kDefaultNan); }

// u and v of one panorama position, to the eight bits of the estimates.  sine, cosine: of its longitude.
inline void map_entry(const LensRecord& lens, float scale, Latitude latitude, double sine, double cosine,
                      float* entry) noexcept {
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

}  // namespace biseam
