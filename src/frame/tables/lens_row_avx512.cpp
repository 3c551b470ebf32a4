#include "frame/tables/lens_row.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>
#include <cstdint>

#include "base/intrinsics.hpp"
#include "frame/tables/lens_row_tables.hpp"

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

// For normal operands below 2^126: the reciprocal of the middle of a step, rounded to eight bits.  No such reciprocal is nearer
// than 1/2046 of a result's step to where rounding turns, and the division's own error is less than a sixteenth of that.
BISEAM_AVX512 inline __m512 estimate_reciprocal(__m512 operand) noexcept {
  const __m512i middle = _mm512_ternarylogic_epi32(bits_of(operand), all(0xFFFF8000), all(0x4000), 0xEA);
  const __m512i quotient = bits_of(_mm512_div_ps(_mm512_set1_ps(1.0f), floats(middle)));
  return floats(_mm512_and_si512(_mm512_add_epi32(quotient, all(0x4000)), all(0xFFFF8000)));
}

// For positive normal operands: 1 / sqrt(operand).
BISEAM_AVX512 inline __m512 estimate_root(__m512 operand) noexcept {
  const __m512i bits = bits_of(operand), index = _mm512_srli_epi32(bits, 16);
  const __m512i* table = reinterpret_cast<const __m512i*>(kRootFractions.values);
  const __m512i low = _mm512_permutex2var_epi8(table[0], index, table[1]);
  const __m512i high = _mm512_permutex2var_epi8(table[2], index, table[3]);
  // Bits of no meaning surround the fraction.
  const __m512i fraction = _mm512_slli_epi32(_mm512_mask_mov_epi32(low, _mm512_test_epi32_mask(index, all(0x80)), high), 15);
  // No borrow from the fraction reaches the exponent.
  const __m512i exponent = _mm512_srli_epi32(_mm512_sub_epi32(all(380u << 23 | 0x007FFFFF), bits), 1);
  return floats(_mm512_ternarylogic_epi32(all(0x007FFFFF), fraction, exponent, 0xCA));
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

// Angles from the optical axis in [0, pi] by their tangents, none of which is zero: fast_arctangent(tangent, 1), with pi added
// where it is negative.
BISEAM_AVX512 inline void find_angles_of_64(float* tangents) noexcept {
  const __m512 one = _mm512_set1_ps(1.0f);
  __m512 ratio[4], position[4];
  __m512i index[4];
  __mmask16 steep[4], behind[4];
  for (int i = 0; i < 4; ++i) {
    const __m512 tangent = _mm512_load_ps(tangents + kLanes * i);
    behind[i] = _mm512_movepi32_mask(bits_of(tangent));
    const __m512 height = floats(_mm512_andnot_si512(all(kSignBit), bits_of(tangent)));
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

// A run of pixels between the passes.  Passes of short dependency chains keep the processor busy where one long chain does not.
// Long, as a run ends within a cache line.
constexpr int kRun = 1024;
struct Run {
  // A vector that begins anywhere in the run can be read whole.
  alignas(64) float x[kRun + kLanes], y[kRun + kLanes], z[kRun + kLanes];  // x and y: per unit of radius
  alignas(64) float angle[kRun + kLanes];                                  // first its tangent
};

// How far an operand's magnitude is above the least one that needs no special case, in bits; unsigned, so that lesser ones and
// no numbers are far above.
BISEAM_AVX512 inline __m512i place_in_range(__m512 magnitude, uint32_t least) noexcept {
  return _mm512_sub_epi32(bits_of(magnitude), all(least));
}

// False where an operand of an estimate is out of the range in which no estimate, and no tangent, is zero, infinite or
// denormal.
BISEAM_AVX512 inline bool trace_rays(Latitude latitude, const double* sines, const double* cosines, int count,
                                     Run& run) noexcept {
  const __m512d latitude_cosine = _mm512_set1_pd(static_cast<double>(latitude.cosine)), one = _mm512_set1_pd(1.0);
  const __m512 y = _mm512_set1_ps(latitude.sine), y_squared = _mm512_mul_ps(y, y);
  __m512i furthest_z = _mm512_setzero_si512(), furthest_squared = _mm512_setzero_si512();
  const auto trace = [&](__m512 x, __m512 z, int i) BISEAM_AVX512 {
    const __m512 squared = _mm512_add_ps(_mm512_mul_ps(x, x), y_squared);
    const __m512 z_magnitude = floats(_mm512_andnot_si512(all(kSignBit), bits_of(z)));
    furthest_z = _mm512_max_epu32(furthest_z, place_in_range(z_magnitude, kOrdinaryZ.least));
    furthest_squared = _mm512_max_epu32(furthest_squared, place_in_range(squared, kOrdinarySquare.least));
    const __m512 inverse_radius = estimate_root(squared);
    const __m512 radius = estimate_reciprocal(inverse_radius);
    _mm512_store_ps(run.x + i, _mm512_mul_ps(x, inverse_radius));
    _mm512_store_ps(run.y + i, _mm512_mul_ps(y, inverse_radius));
    _mm512_store_ps(run.z + i, z);
    _mm512_store_ps(run.angle + i, _mm512_mul_ps(estimate_reciprocal(z), radius));
  };
  int i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    const __m512 x = rounded_products(_mm512_loadu_pd(sines + i), _mm512_loadu_pd(sines + i + 8), latitude_cosine);
    trace(x, rounded_products(_mm512_loadu_pd(cosines + i), _mm512_loadu_pd(cosines + i + 8), latitude_cosine), i);
  }
  if (i < count) {
    const uint32_t lanes = (1u << (count - i)) - 1;
    const __mmask8 low = static_cast<__mmask8>(lanes), high = static_cast<__mmask8>(lanes >> 8);
    const __m512 x = rounded_products(_mm512_mask_loadu_pd(one, low, sines + i), _mm512_mask_loadu_pd(one, high, sines + i + 8),
                                      latitude_cosine);
    trace(x,
          rounded_products(_mm512_mask_loadu_pd(one, low, cosines + i), _mm512_mask_loadu_pd(one, high, cosines + i + 8),
                           latitude_cosine),
          i);
  }
  return (_mm512_cmpge_epu32_mask(furthest_z, all(kOrdinaryZ.range)) |
          _mm512_cmpge_epu32_mask(furthest_squared, all(kOrdinarySquare.range))) == 0;
}

BISEAM_AVX512 inline void find_angles(int count, Run& run) noexcept {
  constexpr int block = 4 * kLanes;
  for (int i = (count + kLanes - 1) / kLanes * kLanes; i % block != 0; i += kLanes) {
    _mm512_store_ps(run.angle + i, _mm512_set1_ps(1.0f));
  }
  for (int i = 0; i < count; i += block) find_angles_of_64(run.angle + i);
}

BISEAM_AVX512 inline __m512 coordinate(const __m512* m, __m512 a, __m512 b, __m512 z, __m512 centre) noexcept {
  const __m512 in_plane = _mm512_add_ps(_mm512_mul_ps(m[0], a), _mm512_mul_ps(m[1], b));
  return _mm512_add_ps(_mm512_add_ps(in_plane, _mm512_mul_ps(m[2], z)), centre);
}

// 16 entries, u and v in turns.
struct Entries {
  __m512 low, high;
  __mmask16 no_numbers;
};

// What turns rays into positions.
struct Projection {
  __m512 matrix[6], cx, cy, scale;
};

BISEAM_AVX512 inline Projection make_projection(const LensRecord& lens, float scale) noexcept {
  Projection p;
  for (int i = 0; i < 6; ++i) p.matrix[i] = _mm512_set1_ps(lens.matrix[i]);
  p.cx = _mm512_set1_ps(lens.cx), p.cy = _mm512_set1_ps(lens.cy), p.scale = _mm512_set1_ps(scale);
  return p;
}

BISEAM_INLINED BISEAM_AVX512 Entries project(const Projection& p, const Run& run, int i) noexcept {
  const __m512i first = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  const __m512i second = _mm512_add_epi32(first, all(8));
  const __m512 distance = _mm512_mul_ps(p.scale, _mm512_loadu_ps(run.angle + i));
  const __m512 a = _mm512_mul_ps(_mm512_loadu_ps(run.x + i), distance), b = _mm512_mul_ps(_mm512_loadu_ps(run.y + i), distance);
  const __m512 z = _mm512_loadu_ps(run.z + i);
  const __m512 u = coordinate(p.matrix, a, b, z, p.cx), v = coordinate(p.matrix + 3, a, b, z, p.cy);
  return {_mm512_permutex2var_ps(u, first, v), _mm512_permutex2var_ps(u, second, v), _mm512_cmp_ps_mask(u, v, _CMP_UNORD_Q)};
}

// The first entries, up to 15.  Returns which of them are no numbers.
BISEAM_AVX512 inline uint32_t store_some(const Entries& e, int count, float* entries) noexcept {
  const uint32_t lanes = (1u << count) - 1;
  _mm512_mask_storeu_pd(entries, static_cast<__mmask8>(lanes), _mm512_castps_pd(e.low));
  _mm512_mask_storeu_pd(entries + kLanes, static_cast<__mmask8>(lanes >> 8), _mm512_castps_pd(e.high));
  return e.no_numbers & lanes;
}

// How many entries come before the first that begins a cache line, if any does.
inline int entries_before_line(const float* entries) noexcept {
  const uintptr_t offset = reinterpret_cast<uintptr_t>(entries) % 64;
  return offset % 8 == 0 ? static_cast<int>((64 - offset) % 64 / 8) : 0;
}

// False where an entry is no number.  A table is larger than the caches and not read soon: whole lines are written without
// being fetched first.
BISEAM_AVX512 inline bool place(const Projection& projection, int count, const Run& run, float* entries) noexcept {
  int i = std::min(count, entries_before_line(entries));
  uint32_t no_numbers = store_some(project(projection, run, 0), i, entries);
  const bool whole_lines = reinterpret_cast<uintptr_t>(entries + 2 * i) % 64 == 0;
  for (; i + kLanes <= count; i += kLanes) {
    const Entries e = project(projection, run, i);
    no_numbers |= e.no_numbers;
    if (whole_lines) {
      _mm512_stream_ps(entries + 2 * i, e.low);
      _mm512_stream_ps(entries + 2 * i + kLanes, e.high);
    } else {
      _mm512_storeu_ps(entries + 2 * i, e.low);
      _mm512_storeu_ps(entries + 2 * i + kLanes, e.high);
    }
  }
  no_numbers |= store_some(project(projection, run, i), count - i, entries + 2 * i);
  return no_numbers == 0;
}

// The lines that runs write parts of have to be fetched, and what is written later would wait for them.
[[gnu::always_inline]] inline void ask_for_ends_of_runs(int count, const float* entries) noexcept {
  for (int done = 0; done < count; done += kRun) __builtin_prefetch(entries + 2 * done, 1);
  __builtin_prefetch(entries + 2 * count - 1, 1);
}

}  // namespace

BISEAM_AVX512 void map_row_avx512(const LensRecord& lens, float scale, Latitude latitude, const double* sines,
                                  const double* cosines, int count, float* entries) noexcept {
  const Projection projection = make_projection(lens, scale);
  Run run;
  ask_for_ends_of_runs(count, entries);
  for (int done = 0; done < count; done += kRun) {
    const int part = count - done < kRun ? count - done : kRun;
    bool ordinary = trace_rays(latitude, sines + done, cosines + done, part, run);
    if (ordinary) {
      find_angles(part, run);
      ordinary = place(projection, part, run, entries + 2 * done);
    }
    if (!ordinary) map_row_scalar(lens, scale, latitude, sines + done, cosines + done, part, entries + 2 * done);
  }
  _mm_sfence();  // what this thread does next comes after the lines
}

}  // namespace biseam

#endif
