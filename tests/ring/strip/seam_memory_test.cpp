#include "ring/strip/seam_memory.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <vector>

#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

constexpr StripShape kShape{48, 9};
constexpr std::size_t kSamples = 48 * 9;
constexpr int kFrames = SeamMemory::kFrames, kMargin = 2;

struct Own {
  std::vector<char> bytes;
  SeamMemory memory;

  Own()
      : bytes(seam_memory_bytes(kShape) + 64, 'x'),
        memory(lay_out_seam_memory(kShape, bytes.data() + (64 - reinterpret_cast<std::uintptr_t>(bytes.data()) % 64) % 64)) {}
  std::vector<char> kept() const {
    const char* const from = reinterpret_cast<const char*>(memory.count);
    return {from, from + memory.kept_bytes()};
  }
  std::vector<uint16_t> lasting_cost() const {
    std::vector<uint16_t> cost(kSamples);
    fill_lasting_cost(memory, cost.data());
    return cost;
  }
  std::vector<int32_t> mean() const {
    std::vector<int32_t> path(48);
    mean_path(memory, path.data());
    return path;
  }
};

// What a frame says.
struct Said {
  std::vector<uint16_t> costs;
  std::vector<int16_t> path;
};

Said random_frame(RandomSource& random) {
  Said said;
  const int most = random.between(0, 3) == 0 ? 65535 : 600;
  for (std::size_t i = 0; i < kSamples; ++i) said.costs.push_back(static_cast<uint16_t>(random.between(0, most)));
  int row = random.between(kMargin, 9 - 1 - kMargin);
  const int first = row;
  for (int t = 0; t < 48; ++t) {
    said.path.push_back(static_cast<int16_t>(row));
    row = std::clamp(row + random.between(-1, 1), kMargin, 9 - 1 - kMargin);
    row = std::clamp(row, first - (47 - t), first + 47 - t);  // back in time to close
  }
  return said;
}

void remember(SeamMemory& memory, const Said& said) {
  remember_costs(memory, said.costs.data());
  remember_path(memory, said.path.data());
}

TEST(SeamMemory, SearchesWhereTheLastFramesCostLeastBeyondNoise) {
  RandomSource random;
  Own own;
  std::deque<Said> last;
  for (int frame = 0; frame < 3 * kFrames; ++frame) {
    if (frame == 2 * kFrames - 3) {
      forget(own.memory);
      last.clear();
    }
    const Said said = random_frame(random);
    last.push_back(said);
    if (last.size() > static_cast<std::size_t>(kFrames)) last.pop_front();
    remember_costs(own.memory, said.costs.data());
    const std::vector<uint16_t> got = own.lasting_cost();
    for (std::size_t i = 0; i < kSamples; ++i) {
      double sum = 0;
      for (const Said& of : last) sum += std::min(65535 / kFrames, int{of.costs[i]});
      const double frames = double(last.size()), away = std::abs(double(i % 9) - 4);
      ASSERT_EQ(got[i], std::min(65535.0, std::max(0.0, sum - 160 * frames) + 16 * frames * away)) << frame << " at " << i;
    }
    remember_path(own.memory, said.path.data());
    const std::vector<int32_t> mean = own.mean();
    for (std::size_t t = 0; t < mean.size(); ++t) {
      double sum = 0;
      for (const Said& of : last) sum += of.path[t];
      ASSERT_EQ(mean[t], std::floor(65536 * sum / double(last.size()))) << frame << " at " << t;
    }
  }
}

TEST(SeamMemory, HasItsMostCostsWithoutOverflow) {
  Own own;
  const std::vector<uint16_t> most(kSamples, 65535);
  const std::vector<int16_t> path(48, 4);
  for (int frame = 0; frame < 2 * kFrames; ++frame) {
    remember_costs(own.memory, most.data());
    const int frames = std::min(frame + 1, kFrames);
    EXPECT_EQ(own.lasting_cost()[4], frames * (kMostSeamCost - 160));
    remember_path(own.memory, path.data());
  }
}

TEST(SeamMemory, GoesOnFromWhatWasKept) {
  RandomSource random;
  for (const int frames : {0, 1, kFrames - 1, kFrames, kFrames + 3}) {
    Own own, other;
    for (int i = 0; i < frames; ++i) remember(own.memory, random_frame(random));
    for (int i = 0; i < 5; ++i) remember(other.memory, random_frame(random));
    ASSERT_TRUE(are_valid_seams(other.memory, kMargin, own.kept().data()));
    go_on(other.memory, own.kept().data());
    EXPECT_EQ(own.kept(), other.kept());
    for (int i = 0; i < kFrames + 2; ++i) {
      const Said said = random_frame(random);
      remember(own.memory, said);
      remember(other.memory, said);
      ASSERT_EQ(own.lasting_cost(), other.lasting_cost()) << frames << " and " << i;
      ASSERT_EQ(own.mean(), other.mean());
    }
  }
}

TEST(SeamMemory, RefusesWhatCannotHaveBeenKept) {
  RandomSource random;
  Own own;
  for (int i = 0; i < 3; ++i) remember(own.memory, random_frame(random));
  const std::vector<char> good = own.kept();
  ASSERT_TRUE(are_valid_seams(own.memory, kMargin, good.data()));
  const auto refuses = [&](const char* what, const void* at, auto value) {
    std::vector<char> bad = good;
    const std::ptrdiff_t offset = static_cast<const char*>(at) - reinterpret_cast<const char*>(own.memory.count);
    std::memcpy(bad.data() + offset, &value, sizeof value);
    EXPECT_FALSE(are_valid_seams(own.memory, kMargin, bad.data())) << what;
  };
  refuses("fewer frames than none", &own.memory.count->filled, int32_t{-1});
  refuses("more than can count", &own.memory.count->filled, int32_t{kFrames + 1});
  refuses("a gap", &own.memory.count->filled, int32_t{2});
  refuses("a place before the first", &own.memory.count->next, int32_t{-1});
  refuses("a place behind the last", &own.memory.count->next, int32_t{kFrames});
  refuses("a row near the edge", &own.memory.paths[2][47], int16_t{kMargin - 1});
  refuses("a row near the other edge", &own.memory.paths[0][20], int16_t{9 - kMargin});
  const int16_t far = static_cast<int16_t>(own.memory.paths[1][47] <= 4 ? 6 : 2);  // from the row before it
  refuses("a jump where the path closes", &own.memory.paths[1][0], far);
  refuses("a cost that none is", &own.memory.costs[2][kSamples - 1], static_cast<uint16_t>(kMostSeamCost + 1));
  // What doesn't count may be anything.
  std::vector<char> odd = good;
  std::memset(
      odd.data() + (reinterpret_cast<const char*>(own.memory.paths[3]) - reinterpret_cast<const char*>(own.memory.count)), 0x7f,
      48 * sizeof(int16_t));
  EXPECT_TRUE(are_valid_seams(own.memory, kMargin, odd.data()));
}

}  // namespace
}  // namespace biseam::test
