#include "stages/lens/lens_position.hpp"

#include <math.h>

#include "stages/lens/trig.hpp"

namespace biseam {

// Coordinates, radius and angles are kept as floats; sine, cosine and arctangent are the library's in double, and the two
// products of a sine and a cosine are rounded once.
void map_position(float x, float y, float& u, float& v, const LensRecord& lens) {
  const float latitude = -kHalfPi + (y + 1.0f) * lens.row_step + lens.row_offset;
  const float longitude = -kHalfPi + (x + 1.0f) * lens.column_step + lens.column_offset;
  double latitude_sine, latitude_cosine, longitude_sine, longitude_cosine;
  sincos(latitude, &latitude_sine, &latitude_cosine);
  sincos(longitude, &longitude_sine, &longitude_cosine);
  const float px = static_cast<float>(longitude_sine * latitude_cosine);
  const float py = static_cast<float>(latitude_sine);
  const float pz = static_cast<float>(longitude_cosine * latitude_cosine);

  const float radius = sqrtf(px * px + py * py);
  float axis_angle = kHalfPi;
  if (fabs(static_cast<double>(pz)) > 1e-13) {
    axis_angle = static_cast<float>(atan(static_cast<double>(radius / pz)));
    if (axis_angle < 0.0f) axis_angle += kPi;
  }
  const float distance = lens.focal * axis_angle * lens.focus;
  const bool on_axis = static_cast<double>(radius) <= 1e-13;
  const float a = on_axis ? 0.0f : distance * px / radius, b = on_axis ? 0.0f : distance * py / radius;
  const float* m = lens.matrix;
  u = m[0] * a + m[1] * b + m[2] * pz + lens.cx;
  v = m[3] * a + m[4] * b + m[5] * pz + lens.cy;
}

}  // namespace biseam
