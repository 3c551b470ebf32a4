#include "base/intrinsics.hpp"
#include "ring/sample/sample_row_kernels.hpp"

#if defined(BISEAM_ARM)

#include <cstring>

// Sample by sample: four taps of a row make a vector.
namespace biseam::ring {

namespace {

// Four taps' values, of each component.
template <SampleType type>
struct Taps {
  int16x4_t component[is_pairs(type) ? 2 : 1];
};

struct Depth {
  int16x4_t down;  // shift to the right, negative
  uint16x4_t most;
};

BISEAM_NEON inline uint8x8_t load_4(const uint8_t* bytes) {
  uint32_t four;
  std::memcpy(&four, bytes, sizeof four);
  return vreinterpret_u8_u32(vdup_n_u32(four));
}

BISEAM_NEON inline int16x4_t value_of(uint16x4_t word, const Depth& depth) {
  return vreinterpret_s16_u16(vmin_u16(vshl_u16(word, depth.down), depth.most));
}

BISEAM_NEON inline uint16x4_t words_of(uint8x8_t bytes) { return vreinterpret_u16_u8(bytes); }

template <SampleType type>
BISEAM_NEON inline Taps<type> load_taps(const uint8_t* at, const Depth& depth) {
  if constexpr (type == SampleType::bytes) {
    return {{vreinterpret_s16_u16(vget_low_u16(vmovl_u8(load_4(at))))}};
  } else if constexpr (type == SampleType::byte_pairs) {
    const uint16x4_t pairs = words_of(vld1_u8(at));
    return {{vreinterpret_s16_u16(vand_u16(pairs, vdup_n_u16(255))), vreinterpret_s16_u16(vshr_n_u16(pairs, 8))}};
  } else if constexpr (type == SampleType::words) {
    return {{value_of(words_of(vld1_u8(at)), depth)}};
  } else {
    const uint16x4x2_t apart = vuzp_u16(words_of(vld1_u8(at)), words_of(vld1_u8(at + 8)));
    return {{value_of(apart.val[0], depth), value_of(apart.val[1], depth)}};
  }
}

BISEAM_NEON inline int32_t add_up(int32x4_t sums) {
  const int32x2_t two = vadd_s32(vget_low_s32(sums), vget_high_s32(sums));
  return vget_lane_s32(vpadd_s32(two, two), 0);
}

// One sample, whose taps all lie in the picture, up to a multiple of four in each row.
template <SampleType type>
BISEAM_NEON inline void sample_inside(const SampleJob& job, const Finish& finish, const AxisPlace& column, const AxisPlace& row,
                                      int32_t* results) {
  constexpr int components = is_pairs(type) ? 2 : 1;
  const SampleSource& source = job.source;
  const Depth depth{vdup_n_s16(static_cast<int16_t>(-source.shift)), vdup_n_u16(static_cast<uint16_t>((1 << source.bits) - 1))};
  const int16_t* across = job.across->words + column.phase * job.across->padded_taps;
  const int16_t* down = job.down->words + row.phase * job.down->padded_taps;
  const uint8_t* at = source.first + row.first * source.stride + std::ptrdiff_t{column.first} * bytes_of(type);
  const int shift = across_shift(source), half = 1 << (shift - 1);
  int32_t sums[components] = {};
  for (int k = 0; k < job.down->taps; ++k, at += source.stride) {
    int32x4_t parts[components];
    for (int32x4_t& part : parts) part = vdupq_n_s32(0);
    for (int l = 0; l < job.across->taps; l += 4) {
      const Taps<type> taps = load_taps<type>(at + l * bytes_of(type), depth);
      const int16x4_t weights = vld1_s16(across + l);
      for (int c = 0; c < components; ++c) parts[c] = vmlal_s16(parts[c], taps.component[c], weights);
    }
    for (int c = 0; c < components; ++c) sums[c] += down[k] * ((add_up(parts[c]) + half) >> shift);
  }
  for (int c = 0; c < components; ++c) results[c] = finish(sums[c]);
}

template <SampleType type>
BISEAM_NEON void sample_type(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination, int count) {
  constexpr int components = is_pairs(type) ? 2 : 1;
  const int bytes = output_bytes_of(type, job.output);
  const int last_column = job.source.width - job.across->padded_taps, last_row = job.source.height - job.down->taps;
  const Finish finish(job);
  for (int i = 0; i < count; ++i, destination += bytes) {
    const AxisPlace column = place_on(*job.across, x[i]), row = place_on(*job.down, y[i]);
    if (column.first < 0 || column.first > last_column || row.first < 0 || row.first > last_row) {
      sample_row_scalar(job, x + i, y + i, destination, 1);
      continue;
    }
    int32_t results[components];
    sample_inside<type>(job, finish, column, row, results);
    for (int c = 0; c < components; ++c) {
      const auto word = static_cast<uint16_t>(results[c]);
      if (bytes == components) {
        destination[c] = static_cast<uint8_t>(word);
      } else {
        std::memcpy(destination + 2 * c, &word, sizeof word);
      }
    }
  }
}

}  // namespace

BISEAM_NEON void sample_row_neon(const SampleJob& job, const int32_t* x, const int32_t* y, void* destination,
                                 int count) noexcept {
  uint8_t* bytes = static_cast<uint8_t*>(destination);
  switch (job.source.type) {
    case SampleType::bytes:
      return sample_type<SampleType::bytes>(job, x, y, bytes, count);
    case SampleType::byte_pairs:
      return sample_type<SampleType::byte_pairs>(job, x, y, bytes, count);
    case SampleType::words:
      return sample_type<SampleType::words>(job, x, y, bytes, count);
    case SampleType::word_pairs:
      return sample_type<SampleType::word_pairs>(job, x, y, bytes, count);
  }
}

}  // namespace biseam::ring

#endif
