#include "ring/strip/reduction.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "kernels/guarded_buffer.hpp"
#include "ring/strip/shape.hpp"
#include "support/random_source.hpp"

namespace biseam::test {

namespace {

using namespace biseam::ring;

struct Layout {
  int depth, shift, step, factor;
  bool upside_down;
};

// Samples of a plane whose last row ends at a page that can't be touched, or whose first begins at one.
struct Source {
  int width, height;
  Layout layout;
  std::vector<int> codes;
  GuardedBuffer bytes;
  PlaneSamples plane;

  int sample_bytes() const { return layout.depth == 8 ? 1 : 2; }

  Source(int w, int h, const Layout& l, Placement placement, std::vector<int> all)
      : width(w),
        height(h),
        layout(l),
        codes(std::move(all)),
        bytes(static_cast<size_t>(((w - 1) * l.step + 1 + (h - 1) * w * l.step) * (l.depth == 8 ? 1 : 2)), placement, 0) {
    const ptrdiff_t stride = ptrdiff_t{w} * l.step * sample_bytes();
    for (int y = 0; y < h; ++y) {
      uint8_t* row = bytes.data() + stride * (l.upside_down ? h - 1 - y : y);
      for (int x = 0; x < w; ++x) {
        const int code = codes[static_cast<size_t>(y * w + x)];
        if (l.depth == 8) {
          row[x * l.step] = static_cast<uint8_t>(code);
        } else {
          // What lies below the code doesn't count.
          const uint16_t word = static_cast<uint16_t>(code << l.shift | ((1 << l.shift) - 1));
          std::memcpy(row + 2 * x * l.step, &word, 2);
        }
      }
    }
    plane = {bytes.data() + (l.upside_down ? stride * (h - 1) : 0), l.upside_down ? -stride : stride, l.step};
  }

  double at(int x, int y) const {
    return codes[static_cast<size_t>(std::clamp(y, 0, height - 1) * width + std::clamp(x, 0, width - 1))] *
           std::ldexp(1.0, kFineBits - layout.depth);
  }
};

// The weights of repeated halving, by halving a pulse: what a sample adds to the middle of the reduced row.
std::vector<double> plain_weights(int factor) {
  std::vector<double> weights{1};
  for (int f = 1; f < factor; f *= 2) {
    std::vector<double> next(weights.size() + 3 * static_cast<size_t>(f));
    for (size_t k = 0; k < weights.size(); ++k) {
      const double tap[4] = {1 / 8.0, 3 / 8.0, 3 / 8.0, 1 / 8.0};
      for (size_t h = 0; h < 4; ++h) next[k + h * static_cast<size_t>(f)] += weights[k] * tap[h];
    }
    weights = next;
  }
  return weights;
}

std::vector<int16_t> reduce_all(const Reduction& reduction, const Source& source, const std::vector<uint8_t>& needed) {
  std::vector<int16_t> reduced(static_cast<size_t>(reduction.samples()), -1);
  for (int part = 0; part < reduction.parts(); ++part) {
    reduce_part(reduction, source.plane, {source.layout.depth, source.layout.shift}, needed.data(), part, reduced.data());
  }
  return reduced;
}

constexpr Layout kLayouts[] = {{8, 0, 1, 1, false},  {8, 0, 1, 2, false}, {8, 0, 1, 4, false},  {8, 0, 2, 2, true},
                               {8, 0, 2, 4, false},  {8, 0, 1, 8, false}, {8, 0, 1, 32, true},  {10, 0, 1, 4, false},
                               {10, 6, 2, 2, false}, {12, 4, 1, 4, true}, {12, 0, 1, 1, false}, {12, 0, 2, 16, false},
                               {10, 6, 1, 32, false}};

}  // namespace

// Two roundings to the nearest: 1/2 each, of which the first passes weights that add up to 1.
TEST(Reduction, IsTheMeanByRepeatedHalving) {
  RandomSource random;
  for (const Layout& layout : kLayouts) {
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 3}, {37, 21}, {64, 64}, {131, 70}}) {
      std::vector<int> codes(static_cast<size_t>(width * height));
      for (int& code : codes)
        code = random.between(0, 1) != 0 ? random.between(0, (1 << layout.depth) - 1)
                                         : random.between(0, 1) * ((1 << layout.depth) - 1);
      const Source source(width, height, layout, random.between(0, 1) != 0 ? Placement::at_start : Placement::at_end, codes);
      const Reduction reduction = plan_reduction({width, height, 1, 1, 0, 0}, layout.factor);
      std::vector<uint8_t> needed(static_cast<size_t>(reduction.tile_count()));
      for (uint8_t& n : needed) n = static_cast<uint8_t>(random.between(0, 3) != 0);
      const std::vector<int16_t> reduced = reduce_all(reduction, source, needed);
      const std::vector<double> weights = plain_weights(layout.factor);
      for (int row = 0; row < reduction.rows(); ++row) {
        for (int column = 0; column < reduction.stride(); ++column) {
          const int16_t got = reduced[static_cast<size_t>(row * reduction.stride() + column)];
          if (needed[static_cast<size_t>(row * reduction.tiles + column / Reduction::kTile)] == 0) {
            ASSERT_EQ(-1, got) << "wrote a tile that is not needed";
            continue;
          }
          double sum = 0;
          for (size_t j = 0; j < weights.size(); ++j) {
            for (size_t i = 0; i < weights.size(); ++i) {
              sum += weights[i] * weights[j] *
                     source.at(layout.factor * (column - 2) - (layout.factor - 1) + static_cast<int>(i),
                               layout.factor * (row - 2) - (layout.factor - 1) + static_cast<int>(j));
            }
          }
          ASSERT_LE(std::abs(sum - got), 1.0 + 1e-6)
              << width << "x" << height << " depth " << layout.depth << " factor " << layout.factor;
        }
      }
    }
  }
}

TEST(Reduction, KeepsFlatFieldsExactly) {
  for (const Layout& layout : kLayouts) {
    for (const int code : {0, 1, 77, (1 << layout.depth) - 1}) {
      const Source source(50, 40, layout, Placement::at_end, std::vector<int>(2000, code));
      const Reduction reduction = plan_reduction({50, 40, 1, 1, 0, 0}, layout.factor);
      const std::vector<uint8_t> needed(static_cast<size_t>(reduction.tile_count()), 1);
      for (const int16_t value : reduce_all(reduction, source, needed)) ASSERT_EQ(code << (kFineBits - layout.depth), value);
    }
  }
}

TEST(Reduction, HoldsWordsAboveTheDepthAtItsGreatestCode) {
  const Layout layout{10, 0, 1, 4, false};
  const Source source(50, 40, layout, Placement::at_end, std::vector<int>(2000, 65535));
  const Reduction reduction = plan_reduction({50, 40, 1, 1, 0, 0}, 4);
  const std::vector<uint8_t> needed(static_cast<size_t>(reduction.tile_count()), 1);
  for (const int16_t value : reduce_all(reduction, source, needed)) ASSERT_EQ(1023 << 4, value);
}

TEST(Reduction, IndexOfAPlaceIsWhereTheReducedSampleLies) {
  for (const int factor : {1, 2, 4, 32}) {
    for (const int spacing : {1, 2}) {
      for (const int32_t origin : {0, 32768}) {
        const Reduction reduction = plan_reduction({100, 100, spacing, spacing, origin, 0}, factor);
        const int own = std::max(1, factor / spacing);
        for (int index = 0; index < (100 + own - 1) / own; ++index) {
          // The middle of the plane's samples own * index to own * index + own - 1.
          const double place = origin / 65536.0 + spacing * (own * index + (own - 1) / 2.0);
          EXPECT_EQ(256 * index, reduction.x.index_of(static_cast<int32_t>(place * 65536)));
        }
        EXPECT_EQ(-256, reduction.x.index_of(-(16384 << 16)));
        EXPECT_EQ(256 * reduction.x.count - 1, reduction.x.index_of(16384 << 16));
      }
    }
  }
}

}  // namespace biseam::test
