// What whole frames don't show of the stage: which rows it samples and how often.
#include <gtest/gtest.h>

#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "frame/plain_frame.hpp"
#include "frame/stages.hpp"
#include "support/engine_session.hpp"
#include "support/random_source.hpp"
#include "support/small_config.hpp"

namespace biseam::test {
namespace {

// How often each row of each region is sampled in a frame of such a height.  A region is known by its table and column there.
using SampledRows = std::map<std::pair<const float*, int>, std::vector<int>>;

SampledRows rows_sampled(StitchConfig& config) {
  EngineSession engine(config);
  RandomSource random;
  FisheyePair fisheyes = random_fisheyes(random, config);
  FramePlanes panorama = blank_panorama(config);
  const FisheyePlanes inputs[2] = {{fisheyes[0].luma.data(), fisheyes[0].chroma.data()},
                                   {fisheyes[1].luma.data(), fisheyes[1].chroma.data()}};
  static SampledRows sampled;
  static std::mutex one_at_a_time;
  sampled.clear();
  const SampleRegion record = [](const RemapRegion& region) {
    const std::lock_guard lock(one_at_a_time);
    std::vector<int>& rows = sampled[{region.table, region.table_column}];
    rows.resize(static_cast<std::size_t>(region.destination->height));
    for (int row = region.first_row; row < region.end_row; ++row) ++rows.at(static_cast<std::size_t>(row));
  };
  attach_frame(*engine, inputs, {panorama.luma.data(), panorama.chroma.data()});
  remap_stage(*engine, plan_frame(*engine), record);
  return sampled;
}

// Threads share the rows of the strips among themselves.
TEST(RemapStage, EveryRowOfEveryRegionIsSampledOnce) {
  for (const int height : {16, 17, 18, 31, 32, 33, 34, 120}) {
    SCOPED_TRACE(height);
    StitchConfig config = small_config();
    config.in_h = config.out_h[0] = height;
    const SampledRows sampled = rows_sampled(config);
    EXPECT_EQ(7u, sampled.size());
    for (const auto& [region, rows] : sampled) {
      EXPECT_EQ(std::vector<int>(static_cast<std::size_t>(height), 1), rows) << "from column " << region.second;
    }
  }
}

// Rows go in pairs: the second row of the last pair must not be taken from behind the tables.
TEST(RemapStage, NoRegionIsTallerThanTheTables) {
  StitchConfig config = small_config();
  config.in_h = 17;
  config.out_h[0] = 32;
  for (const auto& [region, rows] : rows_sampled(config)) {
    EXPECT_EQ(std::vector<int>(17, 1), rows) << "from column " << region.second;
  }
}

}  // namespace
}  // namespace biseam::test
