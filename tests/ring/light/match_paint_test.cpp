#include "ring/light/match_paint.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "ring/light/match_chroma_rows.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

constexpr int kLens = 1;
constexpr Tone kTone{16 << 6, 235 << 6, -5 << 6, false, false}, kRgbTone{0, 255 << 6, -9 << 6, true, true};

// Nodes of a panorama of 256 x 128 with gains and shares of all kinds.
struct OwnNodes {
  std::vector<MatchPlace> block;
  MatchNodes nodes;
  Mesh mesh{};

  OwnNodes(int spacing_bits, RandomSource& random) {
    mesh.shape = {256, 128, spacing_bits, (512 >> spacing_bits) + 1 + kNodesAround, (256 >> spacing_bits) + 1 + kNodesAround};
    block.resize(2 * node_count(mesh.shape));
    nodes = carve_match_nodes(mesh.shape, block.data());
    for (MatchPlace& node : block) {
      for (int v = 0; v < kMatchValues; ++v) {
        node.values[v] = static_cast<int16_t>(v < first_tint ? random.between(kLeastGain, kMostGain)
                                                             : random.between(-kMatchOne / 12, kMatchOne / 12));
      }
    }
  }

  int16_t& at(int v, int column, int row) { return nodes.places[kLens][node_index(mesh.shape, column, row)].values[v]; }

  // Linear between the nodes, along rows of them first; the place is in half pixels.
  int16_t between(int v, int x, int y) {
    const double apart = 1 << mesh.shape.spacing_bits;
    const int column = int(x / apart), row = int(y / apart);
    const double across = x / apart - column, down = y / apart - row;
    const auto along = [&](int r) { return std::floor(at(v, column, r) * (1 - across) + at(v, column + 1, r) * across + 0.5); };
    return int16_t(along(row) + std::floor((along(row + 1) - along(row)) * down + 0.5));
  }
};

// A plane as its picture stores it: its first channel, whether another one takes turns with it, and where its samples stand.
struct Plane {
  Tone tone;
  int channels[2];
  bool pairs;
  PlaneGrid grid;
};

constexpr Plane kPlanes[] = {{kTone, {0, 0}, false, {}},           {kTone, {1, 2}, true, {1, 1, 0, 1}},
                             {kTone, {1, 0}, false, {1, 1, 1, 0}}, {kTone, {2, 0}, false, {1, 0, 1, 0}},
                             {kTone, {2, 1}, true, {1, 1, 1, 1}},  // Cr first
                             {kRgbTone, {0, 0}, false, {}},        {kRgbTone, {2, 0}, false, {}}};

// One sample in the light of its place alone.
int16_t matched(const Plane& plane, OwnNodes& own, int channel, int x, int y, int16_t sample, int16_t luma) {
  const int16_t gain = own.between(first_gain + channel, x, y);
  const MatchGains gains{{&gain, &gain, 0, 0}, true, true};
  if (plane.tone.rgb || channel == 0) {
    kMatchRows.scalar(&sample, {1, 1}, gains, plane.tone, 1);
  } else {
    const int16_t share = own.between(first_tint + channel - 1, x, y);
    kMatchChromaRows.scalar(&sample, {1, 1}, {gains, {&share, &share, 0, 0}, &luma, 1, {channel, channel}}, plane.tone, 1);
  }
  return sample;
}

// Rows of a plane in a block, as match_block_rows() makes them: each sample is that of its place, in the light of the row in
// the middle of those that share theirs.
void expect_matched(const Plane& plane, OwnNodes& own, const Block& block, RandomSource& random, bool flat) {
  const MatchedLight light{&own.nodes, plane.tone};
  auto made = std::make_unique<MatchBlock>();
  prepare_match(light, own.mesh, block, {}, kLens, {0, 0}, false, *made);
  prepare_match(light, own.mesh, block, plane.grid, kLens, plane.channels, plane.pairs, *made);
  EXPECT_EQ(made->flat, flat);
  const int count = block.width >> plane.grid.bits_x, each = plane.pairs ? 2 : 1, stride = count * each + 3;
  const int all = block.height >> plane.grid.bits_y;
  for (int first = 0; first < all; first += kSharedRows) {
    const int rows = random.between(1, all - first);
    std::vector<int16_t> samples, luma;
    for (int i = 0; i < rows * stride; ++i) samples.push_back(static_cast<int16_t>(random.between(0, kMaxFine)));
    for (int i = 0; i < rows * 2 * kBlockWidth; ++i) luma.push_back(static_cast<int16_t>(random.between(0, kMaxFine)));
    std::vector<int16_t> wanted = samples;
    for (int row = 0; row < rows; ++row) {
      const int middle = first + row / kSharedRows * kSharedRows + kSharedRows / 2;
      for (int i = 0; i < count * each; ++i) {
        int16_t& sample = wanted[std::size_t(row * stride + i)];
        const int x = 2 * (block.x + ((i / each) << plane.grid.bits_x)) + plane.grid.half_x,
                  y = 2 * (block.y + (middle << plane.grid.bits_y)) + plane.grid.half_y;
        sample = matched(plane, own, plane.channels[i % each], x, y, sample, luma[std::size_t(row * 2 * kBlockWidth + i)]);
      }
    }
    match_block_rows(light, own.mesh, block, plane.grid, kLens, first, luma.data(), samples.data(), {rows, stride}, count,
                     *made);
    ASSERT_EQ(samples, wanted) << "from row " << first;
  }
}

TEST(MatchPaint, EverySampleGetsTheLightOfItsPlace) {
  RandomSource random;
  for (const Plane& plane : kPlanes) {
    for (int spacing_bits = 1; spacing_bits <= kLargestSpacingBits; ++spacing_bits) {
      OwnNodes own(spacing_bits, random);
      for (const Block& block : {Block{0, 0, 64, 32}, Block{64, 96, 64, 32}, Block{192, 32, 64, 16}, Block{250, 120, 6, 8}}) {
        expect_matched(plane, own, block, random, false);
      }
    }
  }
}

// Where all nodes that a block's samples lie between say the same, whatever others say.
TEST(MatchPaint, FlatBlocksAreToldByTheirNodes) {
  RandomSource random;
  constexpr Block kBlock{64, 32, 64, 32};
  for (const Plane& plane : kPlanes) {
    OwnNodes own(4, random);
    for (int v = 0; v < kMatchValues; ++v) {
      const int16_t value = own.at(v, 8, 4);
      for (int row = 4; row <= 9; ++row) {
        for (int column = 8; column <= 17; ++column) own.at(v, column, row) = value;
      }
    }
    expect_matched(plane, own, kBlock, random, true);
    // The first of them, or the last one, of one of the plane's values.
    const int gain = first_gain + plane.channels[plane.pairs ? 1 : 0];
    for (const int v : {gain, plane.tone.rgb || gain == first_gain ? gain : gain - second_gain + first_tint}) {
      for (const auto& [column, row] : {std::pair{8, 4}, std::pair{16, 8}}) {
        int16_t& node = own.at(v, column, row);
        ++node;
        expect_matched(plane, own, kBlock, random, false);
        --node;
      }
    }
  }
}

}  // namespace
}  // namespace biseam::test
