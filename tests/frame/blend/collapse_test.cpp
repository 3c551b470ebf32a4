#include "frame/blend/collapse.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "support/pyramid_formulas.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kOld = -777;

// Samples of bytes, in both forms.
struct Bytes {
  Bytes(int width, int height, RandomSource& random, int most) : image(width, height) {
    image.randomize(random, 0, most);
    bytes.assign(image.samples().begin(), image.samples().end());
  }
  ByteImage view() { return {bytes.data(), image.width(), image.height()}; }

  TestImage image;
  std::vector<uint8_t> bytes;
};

struct Level {
  Level(int width, int height, RandomSource& random)
      : source1(width, height, random, 255),
        source2(width, height, random, 255),
        mask(width, height, random, BISEAM_WEIGHT_ONE),
        below1((width + 1) / 2, (height + 1) / 2, random, 255),
        below2((width + 1) / 2, (height + 1) / 2, random, 255),
        blended_below((width + 1) / 2, (height + 1) / 2) {
    blended_below.randomize(random, -(1 << 20), 1 << 20);
  }
  MixedLevel views() {
    return {source1.view(), source2.view(), mask.view(), below1.view(), below2.view(), blended_below.record()};
  }
  TestImage collapsed() const {
    const int width = mask.image.width(), height = mask.image.height();
    TestImage out = expanded(blended_below, width, height);
    const TestImage up1 = expanded(below1.image, width, height), up2 = expanded(below2.image, width, height);
    for (std::size_t i = 0; i < out.samples().size(); ++i) {
      const int32_t weight = mask.image.samples()[i];
      out.samples()[i] += (source1.image.samples()[i] - up1.samples()[i]) * weight +
                          (source2.image.samples()[i] - up2.samples()[i]) * (BISEAM_WEIGHT_ONE - weight);
    }
    return out;
  }

  Bytes source1, source2, mask, below1, below2;
  TestImage blended_below;
};

// Exactly what is asked for, so that the address sanitizer sees more.
struct Free {
  void operator()(void* block) const { std::free(block); }
};
std::unique_ptr<int32_t, Free> scratch_for(int width) {
  void* block = nullptr;
  EXPECT_EQ(0, posix_memalign(&block, 128, static_cast<std::size_t>(collapse_scratch(width)) * sizeof(int32_t)));
  return std::unique_ptr<int32_t, Free>(static_cast<int32_t*>(block));
}

TEST(CollapseLevel, IsTheFormulaAtEverySize) {
  RandomSource random;
  for (int width = 3; width < 40; ++width) {
    for (int height = 3; height < 14; ++height) {
      Level level(width, height, random);
      TestImage out(width, height, 3, kOld);
      collapse_level(level.views(), *out, scratch_for(width).get());
      ASSERT_EQ(level.collapsed().samples(), out.samples()) << width << " x " << height;
    }
  }
}

struct Taken {
  static void take(void* context, int32_t* rows, int y) {
    Taken& self = *static_cast<Taken*>(context);
    EXPECT_EQ(static_cast<std::size_t>(y) * self.row, self.samples.size());
    self.samples.insert(self.samples.end(), rows, rows + 2 * self.row);
    std::fill_n(rows, 2 * self.row, kOld);  // nobody needs them any more
  }

  std::size_t row;  // samples
  std::vector<int32_t> samples;
};

TEST(CollapseLevel, SinksGetTheSameRowsInPairs) {
  RandomSource random;
  for (int width = 3; width < 40; ++width) {
    for (int height = 4; height < 14; height += 2) {
      Level level(width, height, random);
      Taken taken{3 * static_cast<std::size_t>(width), {}};
      collapse_level(level.views(), RowSink{Taken::take, &taken}, scratch_for(width).get());
      ASSERT_EQ(level.collapsed().samples(), taken.samples) << width << " x " << height;
    }
  }
}

}  // namespace
}  // namespace biseam::test
