#include "ring/position_loops.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "ring/positions.hpp"
#include "support/isas.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

int last_node(const SampleRun& run, int bits) { return (run.start + (run.count - 1) * run.step) >> bits; }

constexpr int kSlopeBits = 2;

// Nodes for a block of any grid, node (0, 0) being the one where the runs start.
struct Nodes {
  NodeWindow window{};
  std::vector<std::int32_t> values;

  Nodes(RandomSource& random, int bits) {
    const auto run_of = [&](int most) {
      const int count = random.between(1, most), step = 2 << random.between(0, 1);
      return SampleRun{random.between(0, (1 << bits) - 1), step, step == 4 ? (count + 1) / 2 : count};
    };
    window.bits = bits;
    window.across = run_of(kBlockWidth);
    window.down = run_of(kBlockHeight);
    window.stride = last_node(window.across, bits) + kCubicNodes + random.between(0, 5);
    values.resize(std::size_t(window.stride * (last_node(window.down, bits) + kCubicNodes)));
  }

  template <class Value>
  void fill(Value value) {
    for (std::size_t k = 0; k < values.size(); ++k) {
      values[k] = value(int(k % std::size_t(window.stride)) - kNodesBefore, int(k / std::size_t(window.stride)) - kNodesBefore);
    }
    for (NodeValues& of : window.values) {
      of.first = values.data();
      of.slope_bits = kSlopeBits;
    }
  }

  // Both coordinates alike.
  void set(int offset, int halvings, int wrapped_bits) {
    for (NodeValues& of : window.values) of = {of.first, offset, halvings, wrapped_bits, kSlopeBits};
  }

  // Samples between the block's are none of the function's.
  std::vector<std::int32_t> interpolated(InterpolateNodes* run) const {
    constexpr std::int32_t kUntouched = 1234567;
    std::vector<std::int32_t> out(kBlockWidth * kBlockHeight, kUntouched), second = out, block;
    std::int32_t* const both[2] = {out.data(), second.data()};
    run(window, both);
    EXPECT_EQ(out, second);
    for (int y = 0; y < kBlockHeight; ++y) {
      for (int x = 0; x < kBlockWidth; ++x) {
        const std::int32_t value = out[std::size_t(y * kBlockWidth + x)];
        if (x < window.across.count && y < window.down.count) {
          block.push_back(value);
        } else {
          EXPECT_EQ(kUntouched, value);
        }
      }
    }
    return block;
  }

  // Of the block's samples: where they stand among the nodes.
  double across(std::size_t k) const { return place(window.across, int(k) % window.across.count); }
  double down(std::size_t k) const { return place(window.down, int(k) / window.across.count); }

 private:
  double place(const SampleRun& run, int i) const { return double(run.start + i * run.step) / (1 << window.bits); }
};

class PositionLoops : public testing::TestWithParam<Isa> {
 protected:
  void SetUp() override {
    run_ = kInterpolateNodes.of(GetParam());
    if (run_ == nullptr) GTEST_SKIP() << "no version of its own";
  }
  InterpolateNodes* run_ = nullptr;
  RandomSource random_;
};

// In units.  Nodes are half of one off, of which cubics make up to 1.375 times as much; slopes are .92 off at most, which is
// .23 half-way between nodes.  From a sample at s on, between nodes, the cubic down is off by .5 + .5 s + .5 s^2, its slope by
// 1 + 1.5 s and its bend by 1.5: 3 at most on the way to the next node.  Across makes that 1.375 times as much, has slopes of
// its own, and rounds three products by half of one.
constexpr double kAcross = .23 + 1.5, kRoundings = 1.375 * (1.375 / 2 + .23 + 3) + kAcross;

// The differences are rounded too: down, the first and the second by two halves of one; across like values.  The third is
// rounded so in 2^-kThirdBits of these, and then by half of one.  After k samples they count k, k (k - 1) / 2 and
// k (k - 1) (k - 2) / 6 times; no stretch is longer than a block.
double roundings(const NodeWindow& window) {
  const double k = std::max(1, (1 << window.bits) / window.down.step) - 1;
  const double first = 1.375 + kAcross, third = (1.375 / 2 + kAcross) / (1 << kThirdBits) + .5;
  return kRoundings + (first * (k + k * (k - 1) / 2) + third * k * (k - 1) * (k - 2) / 6) / ((k + 1) * (1 << kSlopeBits));
}

// A cubic in either direction is its own interpolation.
TEST_P(PositionLoops, GoThroughCubics) {
  for (int round = 0; round < 60; ++round) {
    Nodes nodes(random_, round % 7);
    const int nodes_across = last_node(nodes.window.across, nodes.window.bits) + 1;
    double c[4][2];
    for (auto& pair : c) {
      for (double& factor : pair) factor = double(random_.real_between(-1, 1));
    }
    const double size = nodes_across;
    const auto value = [&](double x, double y) {
      const double u = x / size, v = y / size;
      return 3e6 * (c[0][0] + c[1][0] * u + c[2][0] * u * u + c[3][0] * u * u * u) +
             2e6 * (c[0][1] + c[1][1] * v + c[2][1] * v * v + c[3][1] * v * v * v);
    };
    // What is steeper than coefficients may be is no position.
    bool is_flat = true;
    nodes.fill([&](int x, int y) {
      is_flat = is_flat && std::fabs(value(x + 1, y) - value(x, y)) < 3e6 && std::fabs(value(x, y + 1) - value(x, y)) < 3e6;
      return std::int32_t(std::lround(value(x, y)));
    });
    if (!is_flat) continue;
    const std::vector<std::int32_t> got = nodes.interpolated(run_);
    for (std::size_t k = 0; k < got.size(); ++k) {
      ASSERT_NEAR(value(nodes.across(k), nodes.down(k)), got[k], roundings(nodes.window)) << nodes.window.bits << ": " << k;
    }
  }
}

// Between the nodes of x^4 a cubic with the same ends and slopes is less by u^2 (1 - u)^2, u being the way from one to the
// next.
TEST_P(PositionLoops, HaveTheSlopesOfQuartics) {
  for (int round = 0; round < 60; ++round) {
    Nodes nodes(random_, round % 7);
    const double middle_x = last_node(nodes.window.across, nodes.window.bits) / 2.0;
    const double middle_y = last_node(nodes.window.down, nodes.window.bits) / 2.0, reach = std::max(middle_x, middle_y) + 3;
    // No steeper than coefficients may be.
    const double most = 3e6 / (4 * reach * reach * reach), across = random_.real_between(-1, 1) * most;
    const double down = random_.real_between(-1, 1) * most;
    const auto quartic = [](double factor, double at) { return factor * at * at * at * at; };
    nodes.fill(
        [&](int x, int y) { return std::int32_t(std::lround(quartic(across, x - middle_x) + quartic(down, y - middle_y))); });
    const std::vector<std::int32_t> got = nodes.interpolated(run_);
    for (std::size_t k = 0; k < got.size(); ++k) {
      const double x = nodes.across(k), y = nodes.down(k), u = x - std::floor(x), v = y - std::floor(y);
      const double less = across * u * u * (1 - u) * (1 - u) + down * v * v * (1 - v) * (1 - v);
      ASSERT_NEAR(quartic(across, x - middle_x) + quartic(down, y - middle_y) - less, got[k], roundings(nodes.window))
          << nodes.window.bits << ": " << k;
    }
  }
}

// Samples that stand on a node are that node, whatever it is.
TEST_P(PositionLoops, NodesAreKept) {
  for (int round = 0; round < 28; ++round) {
    Nodes nodes(random_, round % 7);
    const int limit = round % 2 == 0 ? 24576 << 16 : 90 << 16;
    nodes.fill([&](int, int) { return random_.between(-limit, limit); });
    const std::vector<std::int32_t> got = nodes.interpolated(run_);
    for (std::size_t k = 0; k < got.size(); ++k) {
      const double x = nodes.across(k), y = nodes.down(k);
      if (x != std::floor(x) || y != std::floor(y)) continue;
      ASSERT_EQ(nodes.values[std::size_t(y + kNodesBefore) * std::size_t(nodes.window.stride) + std::size_t(x + kNodesBefore)],
                got[k]);
    }
  }
}

// A plane of half the samples, of which the first stands half a sample further on.
TEST_P(PositionLoops, NodesAreMovedAndHalved) {
  for (int round = 0; round < 14; ++round) {
    Nodes nodes(random_, round % 7);
    nodes.set(1 << 15, 1, 0);
    const int slope = random_.between(-100000, 100000);
    nodes.fill([&](int x, int y) { return slope * (2 * x + y); });
    const std::vector<std::int32_t> got = nodes.interpolated(run_);
    for (std::size_t k = 0; k < got.size(); ++k) {
      ASSERT_NEAR((slope * (2 * nodes.across(k) + nodes.down(k)) - (1 << 15)) / 2, got[k], roundings(nodes.window)) << k;
    }
  }
}

// A line that leaves 24 bits on one side goes on at the other, and is a line all the same.
TEST_P(PositionLoops, AnglesWrapAround) {
  for (int round = 0; round < 28; ++round) {
    Nodes nodes(random_, round % 7);
    nodes.set(0, 0, 8);
    const int start = random_.between(-(1 << 23), (1 << 23) - 1), slope = random_.between(-400000, 400000);
    const auto wrapped = [](std::int64_t value) { return std::int32_t(((value + (1 << 23)) & ((1 << 24) - 1)) - (1 << 23)); };
    nodes.fill([&](int x, int y) { return wrapped(start + std::int64_t{slope} * (x - y)); });
    const std::vector<std::int32_t> got = nodes.interpolated(run_);
    for (std::size_t k = 0; k < got.size(); ++k) {
      const double exact = start + slope * (nodes.across(k) - nodes.down(k));
      ASSERT_NEAR(0, std::remainder(exact - got[k], 1 << 24), roundings(nodes.window)) << k;
    }
  }
}

// Whole blocks' vectors lie in one stretch between nodes or in two, by where the block begins.
TEST_P(PositionLoops, BlocksBeginAnywhere) {
  for (const int bits : {5, 6}) {
    for (const int step : {2, 4}) {
      for (int start = 0; start < 1 << bits; ++start) {
        Nodes nodes(random_, bits);
        nodes.window.across = {start, step, 2 * kBlockWidth / step};
        nodes.window.stride = last_node(nodes.window.across, bits) + kCubicNodes;
        nodes.values.resize(std::size_t(nodes.window.stride * (last_node(nodes.window.down, bits) + kCubicNodes)));
        nodes.fill([&](int, int) { return random_.between(-90 << 16, 90 << 16); });
        ASSERT_EQ(nodes.interpolated(kInterpolateNodes.scalar), nodes.interpolated(run_))
            << bits << " " << step << " " << start;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Isas, PositionLoops, testing::ValuesIn(isas_here()), isa_name);

}  // namespace
}  // namespace biseam::test
