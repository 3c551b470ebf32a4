#include "cpu/isa.hpp"

#if defined(BISEAM_X86_64)

#include "cpu/x86_intrinsics.hpp"
#include "geometry/lens_row_kernels.hpp"
#include "geometry/lens_row_tables.hpp"

namespace biseam {

namespace {

constexpr int kLanes = 16;

BISEAM_AVX512 inline __m512 floats(__m512i bits) noexcept { return _mm512_castsi512_ps(bits); }
BISEAM_AVX512 inline __m512i bits_of(__m512 value) noexcept { return _mm512_castps_si512(value); }
BISEAM_AVX512 inline __m512i all(uint32_t value) noexcept { return _mm512_set1_epi32(static_cast<int>(value)); }

// Products of doubles, rounded once to float.
BISEAM_AVX512 inline __m512 rounded_products(__m512d low, __m512d high, __m512d factor) noexcept {
  const __m256 first = _mm512_cvtpd_ps(_mm512_mul_pd(low, factor)), second = _mm512_cvtpd_ps(_mm512_mul_pd(high, factor));
  return _mm512_insertf32x8(_mm512_castps256_ps512(first), second, 1);
}

// values[index] for the eight lowest bits of each 32-bit lane, in bits 15 to 22; what is around them is of no meaning.
BISEAM_AVX512 inline __m512i look_up_fraction(const uint8_t (&values)[256], __m512i index, __mmask16 upper_half) noexcept {
  const __m512i* table = reinterpret_cast<const __m512i*>(values);
  const __m512i low = _mm512_permutex2var_epi8(table[0], index, table[1]);
  const __m512i high = _mm512_permutex2var_epi8(table[2], index, table[3]);
  return _mm512_slli_epi32(_mm512_mask_mov_epi32(low, upper_half, high), 15);
}

// Bits 23 to 31 of the one, the others of the other.
BISEAM_AVX512 inline __m512i join(__m512i exponent, __m512i fraction) noexcept {
  return _mm512_ternarylogic_epi32(all(0x007FFFFF), fraction, exponent, 0xCA);
}

struct Radius {
  __m512 inverse, itself;
};

// Estimates of 1 / sqrt(squared) and of that one's reciprocal, for positive normal operands.
BISEAM_AVX512 inline Radius estimate_radius(__m512 squared) noexcept {
  const __m512i bits = bits_of(squared), index = _mm512_srli_epi32(bits, 16);
  const __mmask16 upper_half = _mm512_test_epi32_mask(index, all(0x80));
  // No borrow from the fraction reaches the exponent.
  const __m512i root_exponent = _mm512_srli_epi32(_mm512_sub_epi32(all(380u << 23 | 0x007FFFFF), bits), 1);
  const __m512i root = join(root_exponent, look_up_fraction(kRootAndRadiusFractions.roots, index, upper_half));
  const __m512i radius_exponent = _mm512_sub_epi32(all(253u << 23 | 0x007FFFFF), root);
  return {floats(root), floats(join(radius_exponent, look_up_fraction(kRootAndRadiusFractions.radii, index, upper_half)))};
}

// For normal operands below 2^126: the reciprocal of the middle of a step, rounded to eight bits.  No such reciprocal is nearer
// than 1/2046 of a result's step to where rounding turns, and the division's own error is less than a sixteenth of that.
BISEAM_AVX512 inline __m512 estimate_reciprocal(__m512 operand) noexcept {
  const __m512i middle = _mm512_ternarylogic_epi32(bits_of(operand), all(0xFFFF8000), all(0x4000), 0xEA);
  const __m512i quotient = bits_of(_mm512_div_ps(_mm512_set1_ps(1.0f), floats(middle)));
  return floats(_mm512_and_si512(_mm512_add_epi32(quotient, all(0x4000)), all(0xFFFF8000)));
}

// A byte of the table's floats for each of 64 bytes of index.
BISEAM_AVX512 inline __m512i look_up_byte(const uint8_t (&values)[256], __m512i index, __mmask64 upper_half) noexcept {
  const __m512i* table = reinterpret_cast<const __m512i*>(values);
  const __m512i low = _mm512_permutex2var_epi8(table[0], index, table[1]);
  const __m512i high = _mm512_permutex2var_epi8(table[2], index, table[3]);
  return _mm512_mask_mov_epi8(low, upper_half, high);
}

// Four vectors of bytes become one of 32-bit lanes each, in the order that packing took them.
BISEAM_AVX512 inline void interleave(const __m512i (&bytes)[4], __m512 (&values)[4]) noexcept {
  const __m512i low_front = _mm512_unpacklo_epi8(bytes[0], bytes[1]), low_back = _mm512_unpackhi_epi8(bytes[0], bytes[1]);
  const __m512i high_front = _mm512_unpacklo_epi8(bytes[2], bytes[3]), high_back = _mm512_unpackhi_epi8(bytes[2], bytes[3]);
  values[0] = floats(_mm512_unpacklo_epi16(low_front, high_front));
  values[1] = floats(_mm512_unpackhi_epi16(low_front, high_front));
  values[2] = floats(_mm512_unpacklo_epi16(low_back, high_back));
  values[3] = floats(_mm512_unpackhi_epi16(low_back, high_back));
}

// Steps of the arctangent table for 64 indexes up to 255.
BISEAM_AVX512 inline void look_up_steps(const __m512i (&index)[4], __m512 (&left)[4], __m512 (&rise)[4]) noexcept {
  const __m512i packed = _mm512_packus_epi16(_mm512_packus_epi32(index[0], index[1]), _mm512_packus_epi32(index[2], index[3]));
  const __mmask64 upper_half = _mm512_movepi8_mask(packed);
  __m512i bytes[4];
  for (int i = 0; i < 4; ++i) bytes[i] = look_up_byte(kArctangentBytes.left[i], packed, upper_half);
  interleave(bytes, left);
  for (int i = 0; i < 3; ++i) bytes[i] = look_up_byte(kArctangentBytes.rise[i], packed, upper_half);
  bytes[3] = _mm512_maskz_mov_epi8(_mm512_cmpneq_epi8_mask(packed, _mm512_set1_epi8(-1)), _mm512_set1_epi8(kRiseTopByte));
  interleave(bytes, rise);
}

// Angles from the optical axis in [0, pi] by their tangents: fast_arctangent(tangent, 1), with pi added where it is negative.
BISEAM_AVX512 inline void find_angles_of_64(float* tangents) noexcept {
  const __m512 zero = _mm512_setzero_ps(), one = _mm512_set1_ps(1.0f);
  __m512 ratio[4], position[4];
  __m512i index[4];
  __mmask16 steep[4], behind[4];
  for (int i = 0; i < 4; ++i) {
    const __m512 tangent = _mm512_load_ps(tangents + kLanes * i);
    behind[i] = _mm512_cmp_ps_mask(tangent, zero, _CMP_LT_OQ);
    const __mmask16 not_above = _mm512_cmp_ps_mask(tangent, zero, _CMP_NGT_UQ);
    const __m512 height = floats(_mm512_mask_xor_epi32(bits_of(tangent), not_above, bits_of(tangent), all(kSignBit)));
    steep[i] = _mm512_cmp_ps_mask(height, one, _CMP_NLT_UQ);
    ratio[i] = _mm512_mask_div_ps(height, steep[i], one, height);
    position[i] = _mm512_sub_ps(_mm512_mul_ps(ratio[i], _mm512_set1_ps(256.0f)), _mm512_set1_ps(0.5f));
    index[i] = _mm512_cvttps_epi32(position[i]);
  }
  __m512 left[4], rise[4];
  look_up_steps(index, left, rise);
  for (int i = 0; i < 4; ++i) {
    const __mmask16 by_table = _mm512_cmp_ps_mask(ratio[i], _mm512_set1_ps(kLeastTableRatio), _CMP_NLT_UQ);
    const __m512 part = _mm512_sub_ps(position[i], _mm512_cvtepi32_ps(index[i]));
    const __m512 near = _mm512_mask_add_ps(ratio[i], by_table, left[i], _mm512_mul_ps(rise[i], part));
    const __m512 angle = _mm512_mask_sub_ps(near, steep[i], _mm512_set1_ps(kHalfPi), near);
    _mm512_store_ps(tangents + kLanes * i, _mm512_mask_sub_ps(angle, behind[i], _mm512_set1_ps(kPi), angle));
  }
}

BISEAM_AVX512 inline __m512 one_nan(__m512 value) noexcept {
  return _mm512_mask_mov_ps(floats(all(kDefaultNan)), _mm512_cmp_ps_mask(value, value, _CMP_ORD_Q), value);
}

// A run of pixels between the passes.  Passes of short dependency chains keep the processor busy where one long chain does not.
constexpr int kRun = 256;
struct Run {
  alignas(64) float x[kRun], y[kRun], z[kRun];  // x and y: per unit of radius
  alignas(64) float angle[kRun];                // first its tangent
};

// Bit i is set where an estimate's operand among lanes i * 16 .. is zero, denormal, too large or no number.
BISEAM_AVX512 inline uint32_t trace_rays(Latitude latitude, const double* sines, const double* cosines, int count,
                                         Run& run) noexcept {
  const __m512d latitude_cosine = _mm512_set1_pd(latitude.cosine);
  const __m512 y = _mm512_set1_ps(latitude.sine), y_squared = _mm512_mul_ps(y, y);
  const __m512i least_normal = all(0x00800000);
  uint32_t special_groups = 0;
  for (int i = 0; i < count; i += kLanes) {
    const uint32_t lanes = count - i < kLanes ? (1u << (count - i)) - 1 : 0xFFFF;
    const __mmask8 low = static_cast<__mmask8>(lanes), high = static_cast<__mmask8>(lanes >> 8);
    const __m512 x =
        rounded_products(_mm512_maskz_loadu_pd(low, sines + i), _mm512_maskz_loadu_pd(high, sines + i + 8), latitude_cosine);
    const __m512 z = rounded_products(_mm512_maskz_loadu_pd(low, cosines + i), _mm512_maskz_loadu_pd(high, cosines + i + 8),
                                      latitude_cosine);
    const __m512 squared = _mm512_add_ps(_mm512_mul_ps(x, x), y_squared);
    const __m512i z_above = _mm512_sub_epi32(_mm512_andnot_si512(all(kSignBit), bits_of(z)), least_normal);
    const __m512i squared_above = _mm512_sub_epi32(bits_of(squared), least_normal);
    const __mmask16 special = static_cast<__mmask16>(_mm512_cmpge_epu32_mask(z_above, all(252u << 23)) |
                                                     _mm512_cmpge_epu32_mask(squared_above, all(254u << 23)));
    special_groups |= static_cast<uint32_t>((special & lanes) != 0) << i / kLanes;
    const Radius radius = estimate_radius(squared);
    _mm512_store_ps(run.x + i, _mm512_mul_ps(x, radius.inverse));
    _mm512_store_ps(run.y + i, _mm512_mul_ps(y, radius.inverse));
    _mm512_store_ps(run.z + i, z);
    _mm512_store_ps(run.angle + i, _mm512_mul_ps(estimate_reciprocal(z), radius.itself));
  }
  return special_groups;
}

BISEAM_AVX512 inline void find_angles(int count, Run& run) noexcept {
  constexpr int block = 4 * kLanes;
  for (int i = (count + kLanes - 1) / kLanes * kLanes; i % block != 0; i += kLanes) {
    _mm512_store_ps(run.angle + i, _mm512_setzero_ps());
  }
  for (int i = 0; i < count; i += block) find_angles_of_64(run.angle + i);
}

BISEAM_AVX512 inline __m512 coordinate(const __m512* m, __m512 a, __m512 b, __m512 z, __m512 centre) noexcept {
  const __m512 in_plane = _mm512_add_ps(_mm512_mul_ps(m[0], a), _mm512_mul_ps(m[1], b));
  return one_nan(_mm512_add_ps(_mm512_add_ps(in_plane, _mm512_mul_ps(m[2], z)), centre));
}

BISEAM_AVX512 inline void place(const LensRecord& lens, float scale, int count, const Run& run, float* entries) noexcept {
  __m512 matrix[6];
  for (int i = 0; i < 6; ++i) matrix[i] = _mm512_set1_ps(lens.matrix[i]);
  const __m512 cx = _mm512_set1_ps(lens.cx), cy = _mm512_set1_ps(lens.cy);
  const __m512i first = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  const __m512i second = _mm512_add_epi32(first, all(8));
  for (int i = 0; i < count; i += kLanes) {
    const uint32_t lanes = count - i < kLanes ? (1u << (count - i)) - 1 : 0xFFFF;
    const __m512 distance = _mm512_mul_ps(_mm512_set1_ps(scale), _mm512_load_ps(run.angle + i));
    const __m512 a = _mm512_mul_ps(_mm512_load_ps(run.x + i), distance), b = _mm512_mul_ps(_mm512_load_ps(run.y + i), distance);
    const __m512 z = _mm512_load_ps(run.z + i);
    const __m512 u = coordinate(matrix, a, b, z, cx), v = coordinate(matrix + 3, a, b, z, cy);
    const __m512d low = _mm512_castps_pd(_mm512_permutex2var_ps(u, first, v));
    const __m512d high = _mm512_castps_pd(_mm512_permutex2var_ps(u, second, v));
    _mm512_mask_storeu_pd(entries + 2 * i, static_cast<__mmask8>(lanes), low);
    _mm512_mask_storeu_pd(entries + 2 * i + kLanes, static_cast<__mmask8>(lanes >> 8), high);
  }
}

}  // namespace

BISEAM_AVX512 void map_row_avx512(const LensRecord& lens, float scale, Latitude latitude, const double* sines,
                                  const double* cosines, int count, float* entries) noexcept {
  Run run;
  for (int done = 0; done < count; done += kRun) {
    const int part = count - done < kRun ? count - done : kRun;
    uint32_t special = trace_rays(latitude, sines + done, cosines + done, part, run);
    find_angles(part, run);
    place(lens, scale, part, run, entries + 2 * done);
    for (; special != 0; special &= special - 1) {
      const int first = done + kLanes * __builtin_ctz(special), lanes = count - first < kLanes ? count - first : kLanes;
      map_row_scalar(lens, scale, latitude, sines + first, cosines + first, lanes, entries + 2 * first);
    }
  }
}

}  // namespace biseam

#endif
