#include "frame/tables/lens_row.hpp"

#if defined(BISEAM_X86_64)

#include "base/intrinsics.hpp"
#include "frame/tables/lens_row_tables.hpp"

namespace biseam {

namespace {

constexpr int kLanes = 8;

BISEAM_AVX2 inline __m256 floats(__m256i bits) noexcept { return _mm256_castsi256_ps(bits); }
BISEAM_AVX2 inline __m256i bits_of(__m256 value) noexcept { return _mm256_castps_si256(value); }
BISEAM_AVX2 inline __m256i all(uint32_t value) noexcept { return _mm256_set1_epi32(static_cast<int>(value)); }

// Products of doubles, rounded once to float.
BISEAM_AVX2 inline __m256 rounded_products(const double* values, __m256d factor) noexcept {
  const __m128 first = _mm256_cvtpd_ps(_mm256_mul_pd(_mm256_loadu_pd(values), factor));
  const __m128 second = _mm256_cvtpd_ps(_mm256_mul_pd(_mm256_loadu_pd(values + 4), factor));
  return _mm256_set_m128(second, first);
}

BISEAM_AVX2 inline __m256i join(__m256i exponent, __m256i fraction) noexcept {
  return _mm256_or_si256(_mm256_and_si256(exponent, all(0x7F800000)), _mm256_and_si256(fraction, all(0x007F8000)));
}

struct Radius {
  __m256 inverse, itself;
};

// Estimates of 1 / sqrt(squared) and of that one's reciprocal, for positive normal operands.
BISEAM_AVX2 inline Radius estimate_radius(__m256 squared) noexcept {
  const __m256i bits = bits_of(squared), index = _mm256_and_si256(_mm256_srli_epi32(bits, 16), all(0xFF));
  const __m256i fractions = _mm256_i32gather_epi32(reinterpret_cast<const int*>(kRootPairs.values), index, 4);
  // No borrow from the fraction reaches the exponent.
  const __m256i root_exponent = _mm256_srli_epi32(_mm256_sub_epi32(all(380u << 23 | 0x007FFFFF), bits), 1);
  const __m256i root = join(root_exponent, fractions);
  const __m256i radius_exponent = _mm256_sub_epi32(all(253u << 23 | 0x007FFFFF), root);
  return {floats(root), floats(join(radius_exponent, _mm256_srli_epi32(fractions, 8)))};
}

// For normal operands below 2^126: the reciprocal of the middle of a step, rounded to eight bits.  No such reciprocal is nearer
// than 1/2046 of a result's step to where rounding turns, and the division's own error is less than a sixteenth of that.
BISEAM_AVX2 inline __m256 estimate_reciprocal(__m256 operand) noexcept {
  const __m256i middle = _mm256_or_si256(_mm256_and_si256(bits_of(operand), all(0xFFFF8000)), all(0x4000));
  const __m256i quotient = bits_of(_mm256_div_ps(_mm256_set1_ps(1.0f), floats(middle)));
  return floats(_mm256_and_si256(_mm256_add_epi32(quotient, all(0x4000)), all(0xFFFF8000)));
}

// ratio in [0, 1].
BISEAM_AVX2 inline __m256 look_up_arctangent(__m256 ratio) noexcept {
  const __m256 position = _mm256_sub_ps(_mm256_mul_ps(ratio, _mm256_set1_ps(256.0f)), _mm256_set1_ps(0.5f));
  const __m256i index = _mm256_cvttps_epi32(position);
  const __m256 left = _mm256_i32gather_ps(&kArctangentSteps.values[0].left, index, 8);
  const __m256 rise = _mm256_i32gather_ps(&kArctangentSteps.values[0].rise, index, 8);
  const __m256 part = _mm256_sub_ps(position, _mm256_cvtepi32_ps(index));
  const __m256 by_table = _mm256_cmp_ps(ratio, _mm256_set1_ps(kLeastTableRatio), _CMP_NLT_UQ);
  return _mm256_blendv_ps(ratio, _mm256_add_ps(left, _mm256_mul_ps(rise, part)), by_table);
}

// Angle from the optical axis in [0, pi] by its tangent, which is not zero: fast_arctangent(tangent, 1), with pi added where it
// is negative.
BISEAM_AVX2 inline __m256 angle_from_axis(__m256 tangent) noexcept {
  const __m256 one = _mm256_set1_ps(1.0f);
  const __m256 height = _mm256_andnot_ps(floats(all(kSignBit)), tangent);
  const __m256 steep = _mm256_cmp_ps(height, one, _CMP_NLT_UQ);
  const __m256 near = look_up_arctangent(_mm256_blendv_ps(height, _mm256_div_ps(one, height), steep));
  const __m256 angle = _mm256_blendv_ps(near, _mm256_sub_ps(_mm256_set1_ps(kHalfPi), near), steep);
  return _mm256_blendv_ps(angle, _mm256_sub_ps(_mm256_set1_ps(kPi), angle), tangent);  // by the sign
}

// A run of pixels between the passes.  Passes of short dependency chains keep the processor busy where one long chain does not.
constexpr int kRun = 256;
struct Run {
  alignas(32) float x[kRun], y[kRun], z[kRun];  // x and y: per unit of radius
  alignas(32) float angle[kRun];                // first its tangent
};

// How far an operand's magnitude is above the least one that needs no special case, in bits; unsigned, so that lesser ones and
// no numbers are far above.
BISEAM_AVX2 inline __m256i place_in_range(__m256i magnitude, uint32_t least) noexcept {
  return _mm256_sub_epi32(magnitude, all(least));
}

// False where an operand of an estimate is out of the range in which no estimate, and no tangent, is zero, infinite or
// denormal.
BISEAM_AVX2 inline bool trace_rays(Latitude latitude, const double* sines, const double* cosines, int count,
                                   Run& run) noexcept {
  const __m256d latitude_cosine = _mm256_set1_pd(static_cast<double>(latitude.cosine));
  const __m256 y = _mm256_set1_ps(latitude.sine), y_squared = _mm256_mul_ps(y, y);
  __m256i furthest_z = _mm256_setzero_si256(), furthest_squared = _mm256_setzero_si256();
  for (int i = 0; i < count; i += kLanes) {
    const __m256 x = rounded_products(sines + i, latitude_cosine), z = rounded_products(cosines + i, latitude_cosine);
    const __m256 squared = _mm256_add_ps(_mm256_mul_ps(x, x), y_squared);
    const __m256i z_magnitude = _mm256_andnot_si256(all(kSignBit), bits_of(z));
    furthest_z = _mm256_max_epu32(furthest_z, place_in_range(z_magnitude, kOrdinaryZ.least));
    furthest_squared = _mm256_max_epu32(furthest_squared, place_in_range(bits_of(squared), kOrdinarySquare.least));
    const Radius radius = estimate_radius(squared);
    _mm256_store_ps(run.x + i, _mm256_mul_ps(x, radius.inverse));
    _mm256_store_ps(run.y + i, _mm256_mul_ps(y, radius.inverse));
    _mm256_store_ps(run.z + i, z);
    _mm256_store_ps(run.angle + i, _mm256_mul_ps(estimate_reciprocal(z), radius.itself));
  }
  // Unsigned comparisons: the greater of both is the bound itself.
  const __m256i z_bound = all(kOrdinaryZ.range), squared_bound = all(kOrdinarySquare.range);
  const __m256i outside =
      _mm256_or_si256(_mm256_cmpeq_epi32(_mm256_max_epu32(furthest_z, z_bound), furthest_z),
                      _mm256_cmpeq_epi32(_mm256_max_epu32(furthest_squared, squared_bound), furthest_squared));
  return _mm256_testz_si256(outside, outside) != 0;
}

BISEAM_AVX2 inline void find_angles(int count, Run& run) noexcept {
  for (int i = 0; i < count; i += kLanes) _mm256_store_ps(run.angle + i, angle_from_axis(_mm256_load_ps(run.angle + i)));
}

BISEAM_AVX2 inline __m256 coordinate(const __m256* m, __m256 a, __m256 b, __m256 z, __m256 centre) noexcept {
  const __m256 in_plane = _mm256_add_ps(_mm256_mul_ps(m[0], a), _mm256_mul_ps(m[1], b));
  return _mm256_add_ps(_mm256_add_ps(in_plane, _mm256_mul_ps(m[2], z)), centre);
}

// False where an entry is no number.
BISEAM_AVX2 inline bool place(const LensRecord& lens, float scale, int count, const Run& run, float* entries) noexcept {
  __m256 matrix[6];
  for (int i = 0; i < 6; ++i) matrix[i] = _mm256_set1_ps(lens.matrix[i]);
  const __m256 cx = _mm256_set1_ps(lens.cx), cy = _mm256_set1_ps(lens.cy);
  __m256 no_number = _mm256_setzero_ps();
  for (int i = 0; i < count; i += kLanes) {
    const __m256 distance = _mm256_mul_ps(_mm256_set1_ps(scale), _mm256_load_ps(run.angle + i));
    const __m256 a = _mm256_mul_ps(_mm256_load_ps(run.x + i), distance), b = _mm256_mul_ps(_mm256_load_ps(run.y + i), distance);
    const __m256 z = _mm256_load_ps(run.z + i);
    const __m256 u = coordinate(matrix, a, b, z, cx), v = coordinate(matrix + 3, a, b, z, cy);
    no_number = _mm256_or_ps(no_number, _mm256_cmp_ps(u, v, _CMP_UNORD_Q));
    const __m256 even = _mm256_unpacklo_ps(u, v), odd = _mm256_unpackhi_ps(u, v);  // pairs 0 1 4 5 and 2 3 6 7
    _mm256_storeu_ps(entries + 2 * i, _mm256_permute2f128_ps(even, odd, 0x20));
    _mm256_storeu_ps(entries + 2 * i + kLanes, _mm256_permute2f128_ps(even, odd, 0x31));
  }
  return _mm256_movemask_ps(no_number) == 0;
}

}  // namespace

BISEAM_AVX2 void map_row_avx2(const LensRecord& lens, float scale, Latitude latitude, const double* sines,
                              const double* cosines, int count, float* entries) noexcept {
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
