#include "frame/tables/lens_row.hpp"

// 64-bit only: the 32-bit unit has no doubles and no division, and takes denormals for zeros.
#if defined(BISEAM_ARM) && defined(__aarch64__)

#include "base/intrinsics.hpp"
#include "frame/tables/lens_row_tables.hpp"

namespace biseam {

namespace {

constexpr int kLanes = 4;

inline float32x4_t floats(uint32x4_t bits) noexcept { return vreinterpretq_f32_u32(bits); }
inline uint32x4_t bits_of(float32x4_t value) noexcept { return vreinterpretq_u32_f32(value); }

// Products of doubles, rounded once to float.
inline float32x4_t rounded_products(const double* values, double factor) noexcept {
  const float32x2_t first = vcvt_f32_f64(vmulq_n_f64(vld1q_f64(values), factor));
  return vcvt_high_f32_f64(first, vmulq_n_f64(vld1q_f64(values + 2), factor));
}

// ratio in [0, 1].
inline float32x4_t look_up_arctangent(float32x4_t ratio) noexcept {
  const float32x4_t position = vsubq_f32(vmulq_n_f32(ratio, 256.0f), vdupq_n_f32(0.5f));
  const uint32x4_t index = vcvtq_u32_f32(position);
  const ArctangentStep* steps = kArctangentSteps.values;
  const auto step = [&](uint32_t i) { return vld1_f32(&steps[i].left); };
  const float32x4_t low = vcombine_f32(step(vgetq_lane_u32(index, 0)), step(vgetq_lane_u32(index, 1)));
  const float32x4_t high = vcombine_f32(step(vgetq_lane_u32(index, 2)), step(vgetq_lane_u32(index, 3)));
  const float32x4_t left = vuzp1q_f32(low, high), rise = vuzp2q_f32(low, high);
  const float32x4_t part = vsubq_f32(position, vcvtq_f32_u32(index));
  const uint32x4_t by_formula = vcltq_f32(ratio, vdupq_n_f32(kLeastTableRatio));
  return vbslq_f32(by_formula, ratio, vaddq_f32(left, vmulq_f32(rise, part)));
}

// Angle from the optical axis in [0, pi] by its tangent, which is not zero: fast_arctangent(tangent, 1), with pi added where it
// is negative.
inline float32x4_t angle_from_axis(float32x4_t tangent) noexcept {
  const float32x4_t one = vdupq_n_f32(1.0f), height = vabsq_f32(tangent);
  const uint32x4_t flat = vcltq_f32(height, one);
  const float32x4_t near = look_up_arctangent(vbslq_f32(flat, height, vdivq_f32(one, height)));
  const float32x4_t angle = vbslq_f32(flat, near, vsubq_f32(vdupq_n_f32(kHalfPi), near));
  return vbslq_f32(vcltzq_f32(tangent), vsubq_f32(vdupq_n_f32(kPi), angle), angle);
}

// A run of pixels between the passes.  Passes of short dependency chains keep the processor busy where one long chain does not.
constexpr int kRun = 128;
struct Run {
  float x[kRun], y[kRun], z[kRun];  // x and y: per unit of radius
  float angle[kRun];                // first its tangent
};

// False where an operand of an estimate is out of the range in which no estimate, and no tangent, is zero, infinite or
// denormal.
inline bool trace_rays(Latitude latitude, const double* sines, const double* cosines, int count, Run& run) noexcept {
  const float32x4_t y = vdupq_n_f32(latitude.sine), y_squared = vmulq_f32(y, y);
  uint32x4_t furthest_z = vdupq_n_u32(0), furthest_squared = vdupq_n_u32(0);
  for (int i = 0; i < count; i += kLanes) {
    const double latitude_cosine = static_cast<double>(latitude.cosine);
    const float32x4_t x = rounded_products(sines + i, latitude_cosine), z = rounded_products(cosines + i, latitude_cosine);
    const float32x4_t squared = vaddq_f32(vmulq_f32(x, x), y_squared);
    // Unsigned, so that lesser operands and no numbers are far above the least ordinary one.
    furthest_z = vmaxq_u32(furthest_z, vsubq_u32(bits_of(vabsq_f32(z)), vdupq_n_u32(kOrdinaryZ.least)));
    furthest_squared = vmaxq_u32(furthest_squared, vsubq_u32(bits_of(squared), vdupq_n_u32(kOrdinarySquare.least)));
    // For operands in these ranges the instructions keep to the estimates' definition.
    const float32x4_t inverse_radius = vrsqrteq_f32(squared), radius = vrecpeq_f32(inverse_radius);
    vst1q_f32(run.x + i, vmulq_f32(x, inverse_radius));
    vst1q_f32(run.y + i, vmulq_f32(y, inverse_radius));
    vst1q_f32(run.z + i, z);
    vst1q_f32(run.angle + i, vmulq_f32(vrecpeq_f32(z), radius));
  }
  return vmaxvq_u32(furthest_z) < kOrdinaryZ.range && vmaxvq_u32(furthest_squared) < kOrdinarySquare.range;
}

inline void find_angles(int count, Run& run) noexcept {
  for (int i = 0; i < count; i += kLanes) vst1q_f32(run.angle + i, angle_from_axis(vld1q_f32(run.angle + i)));
}

inline float32x4_t coordinate(const float* m, float32x4_t a, float32x4_t b, float32x4_t z, float centre) noexcept {
  const float32x4_t in_plane = vaddq_f32(vmulq_n_f32(a, m[0]), vmulq_n_f32(b, m[1]));
  return vaddq_f32(vaddq_f32(in_plane, vmulq_n_f32(z, m[2])), vdupq_n_f32(centre));
}

// False where an entry is no number.
inline bool place(const LensRecord& lens, float scale, int count, const Run& run, float* entries) noexcept {
  uint32x4_t number = vdupq_n_u32(0xFFFFFFFF);
  for (int i = 0; i < count; i += kLanes) {
    const float32x4_t distance = vmulq_n_f32(vld1q_f32(run.angle + i), scale);
    const float32x4_t a = vmulq_f32(vld1q_f32(run.x + i), distance), b = vmulq_f32(vld1q_f32(run.y + i), distance);
    const float32x4_t z = vld1q_f32(run.z + i);
    const float32x4_t u = coordinate(lens.matrix, a, b, z, lens.cx), v = coordinate(lens.matrix + 3, a, b, z, lens.cy);
    number = vandq_u32(number, vandq_u32(vceqq_f32(u, u), vceqq_f32(v, v)));
    vst2q_f32(entries + 2 * i, float32x4x2_t{{u, v}});
  }
  return vminvq_u32(number) != 0;
}

}  // namespace

void map_row_neon(const LensRecord& lens, float scale, Latitude latitude, const double* sines, const double* cosines, int count,
                  float* entries) noexcept {
  const int whole = count - count % kLanes;
  Run run;
  for (int done = 0; done < whole; done += kRun) {
    const int part = whole - done < kRun ? whole - done : kRun;
    bool ordinary = trace_rays(latitude, sines + done, cosines + done, part, run);
    if (ordinary) {
      find_angles(part, run);
      ordinary = place(lens, scale, part, run, entries + 2 * done);
    }
    if (!ordinary) map_row_scalar(lens, scale, latitude, sines + done, cosines + done, part, entries + 2 * done);
  }
  map_row_scalar(lens, scale, latitude, sines + whole, cosines + whole, count - whole, entries + 2 * whole);
}

}  // namespace biseam

#endif
