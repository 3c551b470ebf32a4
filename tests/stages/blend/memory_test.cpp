// What the blend takes from the heap and gives back, and what happens when it is short.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "biseam/biseam.h"
#include "stages/blend/blend_fixture.hpp"
#include "stages/blend/module.hpp"
#include "stages/blend/pyramid.hpp"
#include "support/failing_heap.hpp"

namespace biseam::test {
namespace {

const BlendConfig kConfigs[] = {blend_config(8, 8, 16, 4), blend_config(8, 16, 16, 4, 20, 1.5f, 1)};

// One source on both sides.
Status blend(TestInstance& instance, TestImage& source, TestImage& output) {
  const BlendImage* const sources[2] = {source.record(), source.record()};
  return blend_band(*instance, sources, *output);
}

TEST(BlendMemory, FrameGivesEveryBlockBack) {
  for (const BlendConfig& config : kConfigs) {
    TestInstance instance(config);
    TestImage source(config.band_width, config.in_h, 3, 100), output(instance->width, instance->height);
    const FailingHeap heap;
    EXPECT_EQ(Status::ok, blend(instance, source, output));
    EXPECT_GT(heap.requests(), 0);
    EXPECT_EQ(0, heap.held());
  }
}

TEST(BlendMemory, EveryRefusedRequestIsReportedAndLeavesNothingBehind) {
  for (const BlendConfig& config : kConfigs) {
    TestInstance instance(config);
    TestImage source(config.band_width, config.in_h, 3, 100), output(instance->width, instance->height);
    int requests = 0;
    {
      const FailingHeap heap;
      ASSERT_EQ(Status::ok, blend(instance, source, output));
      requests = heap.requests();
    }
    const TestImage expected = output;
    for (int failing = 0; failing < requests; ++failing) {
      {
        const FailingHeap heap(failing);
        EXPECT_EQ(Status::no_memory, blend(instance, source, output)) << "request " << failing;
        EXPECT_EQ(0, heap.held()) << "request " << failing;
      }
      {
        const FailingHeap heap(failing);
        EXPECT_EQ(0, Blend_Proc(&*instance, source.record(), source.record(), output.record()));
        EXPECT_EQ(0, heap.held());
      }
      // The instance stays usable.
      ASSERT_EQ(Status::ok, blend(instance, source, output));
      ASSERT_EQ(expected.samples(), output.samples());
    }
  }
}

TEST(BuildGuassPyramid, KeepsNoBlock) {
  for (int level_count : {0, 1, 3}) {
    TestInstance instance(blend_config(8, 8, 24, std::max(level_count, 1)));
    const FailingHeap heap;
    BuildGuassPyramid(&instance->mask, &instance->levels[2], &instance->top[2], level_count);
    EXPECT_EQ(0, heap.held());
  }
}

TEST(BlendMemory, PaddedImagesReportARefusedCopy) {
  TestInstance instance(blend_config(8, 8, 25, 1));
  TestImage padded(40, 25, 3, 50), output(32, 25, 3, -777);
  BlendImage image = *padded, top = *padded;
  image.width = 32;
  top.width = 16;
  top.height = 13;
  for (int stage : {0, 1}) {
    const FailingHeap heap(0);
    const Status status = stage == 0 ? build_laplacian(image, {instance->levels[0], &instance->top[0]}, 1)
                                     : collapse(top, instance->levels[0], *output, 1);
    EXPECT_EQ(Status::no_memory, status);
    EXPECT_EQ(0, heap.held());
  }
  EXPECT_EQ(TestImage(32, 25, 3, -777).samples(), output.samples());
}

TEST(BlendMemory, PyramidStagesReportEveryRefusedRequest) {
  TestInstance instance(blend_config(8, 8, 25, 3));
  TestImage band(32, 25, 3, 50), output(32, 25);
  const auto stages = [&](int stage) {
    switch (stage) {
      case 0:
        return build_laplacian(*band, {instance->levels[0], &instance->top[0]}, 3);
      case 1:
        return build_gaussian(*band, {instance->levels[2], &instance->top[2]}, 3);
      default:
        return collapse(instance->top[0], instance->levels[0], *output, 3);
    }
  };
  for (int stage = 0; stage < 3; ++stage) {
    int requests = 0;
    {
      const FailingHeap heap;
      ASSERT_EQ(Status::ok, stages(stage));
      EXPECT_EQ(0, heap.held());
      requests = heap.requests();
    }
    EXPECT_GT(requests, 0);
    for (int failing = 0; failing < requests; ++failing) {
      const FailingHeap heap(failing);
      EXPECT_EQ(Status::no_memory, stages(stage)) << "stage " << stage << ", request " << failing;
      EXPECT_EQ(0, heap.held());
    }
  }
}

}  // namespace
}  // namespace biseam::test
