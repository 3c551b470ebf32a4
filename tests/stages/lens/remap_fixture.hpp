// Pictures of two planes and random tables, and the plain formula of what is remapped.
#pragma once

#include <cstring>
#include <limits>
#include <vector>

#include "biseam/biseam.h"
#include "support/guarded.hpp"
#include "support/plain_sample.hpp"

namespace biseam::test {

// A picture of two planes: chroma pairs of full or half height, a guarded block each.
struct Picture {
  Picture(int width, int height, int chroma_rows, int padding)
      : luma_stride(width + padding),
        chroma_stride((width + 1) / 2 * 2 + padding),
        luma(luma_stride * height),
        chroma(chroma_stride * chroma_rows) {
    header.width = width;
    header.height = height;
    header.planes[0] = luma.data();
    header.planes[1] = chroma.data();
    header.strides[0] = luma_stride;
    header.strides[1] = chroma_stride;
  }

  void fill(Random& random) {
    for (std::size_t i = 0; i < luma.bytes(); ++i) luma.data()[i] = static_cast<uint8_t>(random());
    for (std::size_t i = 0; i < chroma.bytes(); ++i) chroma.data()[i] = static_cast<uint8_t>(random());
  }
  bool guards_intact() const { return luma.guards_intact() && chroma.guards_intact(); }
  uint8_t& luma_at(int x, int y) { return luma.data()[y * luma_stride + x]; }
  uint8_t& chroma_at(int pair, int component, int y) { return chroma.data()[y * chroma_stride + 2 * pair + component]; }

  int luma_stride, chroma_stride;
  Guarded<uint8_t> luma, chroma;
  ImageHeader header{};
};

inline bool same_bytes(Picture& a, Picture& b) {
  return std::memcmp(a.luma.data(), b.luma.data(), a.luma.bytes()) == 0 &&
         std::memcmp(a.chroma.data(), b.chroma.data(), a.chroma.bytes()) == 0;
}

// One region, pixel by pixel, into planes that lie inside destination.
inline void plain_region(const float* table, int table_width, int table_column, const ImageHeader& source,
                         const ImageHeader& destination, int destination_column, int count, int first_row, int end_row,
                         int y_factor) {
  for (int y = first_row; y < end_row; y += 2) {
    for (int row = y; row <= y + 1 && row < destination.height; ++row) {
      for (int k = 0; k < count; ++k) {
        const float* entry = table + 2 * (row * table_width + table_column + k);
        destination.planes[0][row * destination.strides[0] + destination_column + k] = plain_luma(source, entry[0], entry[1]);
      }
    }
    if (y / y_factor >= destination.height / y_factor) continue;
    for (int j = 0; j < count / 2; ++j) {
      const float* entry = table + 2 * (y * table_width + table_column / 2 * 2 + 2 * j);
      uint8_t* pair = destination.planes[1] + y / y_factor * destination.strides[1] + destination_column / 2 * 2 + 2 * j;
      for (int c = 0; c < 2; ++c) pair[c] = plain_chroma(source, entry[0] / 2.0f, entry[1] / static_cast<float>(y_factor), c);
    }
  }
}

// Entries inside a picture of width x height with room for the neighbours; now and then a negative one or none at all.
inline std::vector<float> random_table(Random& random, int entries, int width, int height) {
  std::vector<float> table(2 * entries);
  for (int i = 0; i < 2 * entries; ++i) {
    const float most = static_cast<float>((i % 2 == 0 ? width : height) - 4);
    const int kind = pick(random, 0, 19);
    table[i] = kind == 0                 ? pick(random, -4.0f, 0.0f)
               : kind == 1               ? static_cast<float>(pick(random, 0, static_cast<int>(most)))
               : kind == 2 && i % 7 == 0 ? std::numeric_limits<float>::quiet_NaN()
                                         : pick(random, 0.0f, most);
  }
  return table;
}

}  // namespace biseam::test
