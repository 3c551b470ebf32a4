#include "frame/remap/sample_row.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "support/guarded_block.hpp"
#include "support/isas.hpp"
#include "support/plain_sample.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

constexpr int kWidth = 120, kHeight = 90;

// Rows of any picture through any positions, against the formulas.
class SampleRow : public testing::TestWithParam<Isa> {
 protected:
  SampleRow() : luma_(size_t{kWidth} * kHeight), chroma_(size_t{kWidth} * kHeight) {
    for (uint8_t& sample : luma_) sample = random_.byte();
    for (uint8_t& sample : chroma_) sample = random_.byte();
    source_.planes[0] = luma_.data();
    source_.planes[1] = chroma_.data();
    source_.strides[0] = source_.strides[1] = kWidth;
  }

  // Neighbouring positions in every other round.
  std::vector<float> draw(int count, int round) {
    std::vector<float> entries;
    for (int k = 0; k < count; ++k) {
      entries.push_back(round % 2 == 0 ? 3.0f + 0.7f * static_cast<float>(k % 128) : random_.real_between(-1.5f, kWidth - 4));
      entries.push_back(round % 2 == 0 ? 5.0f + 0.1f * static_cast<float>(k % 128) : random_.real_between(-1.5f, kHeight - 4));
    }
    return entries;
  }

  void expect_luma(const std::vector<float>& entries, std::vector<uint8_t> row) {
    for (size_t k = 0; k < row.size(); ++k) ASSERT_EQ(plain_luma(source_, entries[2 * k], entries[2 * k + 1]), row[k]) << k;
  }

  void expect_chroma(const std::vector<float>& entries, float y_factor, std::vector<uint8_t> row) {
    for (size_t k = 0; k < row.size(); ++k) {
      const float* entry = &entries[k / 2 * 4];
      const int component = static_cast<int>(k % 2);
      ASSERT_EQ(plain_chroma(source_, entry[0] / 2, entry[1] / y_factor, component), row[k]) << k;
    }
  }

  RandomSource random_;
  std::vector<uint8_t> luma_, chroma_;
  ImageHeader source_{};
};

TEST_P(SampleRow, LumaOfEveryCount) {
  SampleLumaRow* const sample = kSampleLumaRow.of(GetParam());
  for (int count = 0; count < 140; ++count) {
    const std::vector<float> entries = draw(count, count);
    GuardedBlock<uint8_t> row(static_cast<size_t>(count));
    sample(entries.data(), luma_.data(), kWidth, row.data(), count);
    ASSERT_NO_FATAL_FAILURE(expect_luma(entries, row.values())) << count;
  }
}

TEST_P(SampleRow, ChromaOfEveryCount) {
  SampleChromaRow* const sample = kSampleChromaRow.of(GetParam());
  for (int count = 0; count < 70; ++count) {
    for (const float y_factor : {1.0f, 2.0f}) {
      const std::vector<float> entries = draw(2 * count, count);
      GuardedBlock<uint8_t> row(static_cast<size_t>(2 * count));
      sample(entries.data(), chroma_.data(), kWidth, y_factor, row.data(), count);
      ASSERT_NO_FATAL_FAILURE(expect_chroma(entries, y_factor, row.values())) << count;
    }
  }
}

TEST_P(SampleRow, PairsOfEveryCount) {
  SampleRowPair* const sample = kSampleRowPair.of(GetParam());
  for (int count = 0; count < 140; ++count) {
    const float y_factor = static_cast<float>(1 + count / 2 % 2);
    const std::vector<float> upper = draw(count, count), lower = draw(count, count + count / 4 % 2);
    GuardedBlock<uint8_t> rows[] = {GuardedBlock<uint8_t>(static_cast<size_t>(count)),
                                    GuardedBlock<uint8_t>(static_cast<size_t>(count)),
                                    GuardedBlock<uint8_t>(static_cast<size_t>(count / 2 * 2))};
    sample(upper.data(), lower.data(), {luma_.data(), chroma_.data(), kWidth, kWidth}, y_factor,
           {rows[0].data(), rows[1].data(), rows[2].data()}, count);
    ASSERT_NO_FATAL_FAILURE(expect_luma(upper, rows[0].values())) << count;
    ASSERT_NO_FATAL_FAILURE(expect_luma(lower, rows[1].values())) << count;
    ASSERT_NO_FATAL_FAILURE(expect_chroma(upper, y_factor, rows[2].values())) << count;
  }
}

INSTANTIATE_TEST_SUITE_P(Versions, SampleRow, testing::ValuesIn(isas_here()), isa_name);

}  // namespace
}  // namespace biseam::test
