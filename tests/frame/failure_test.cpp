// The engine when memory or threads can't be had.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "support/captured_output.hpp"
#include "support/engine_session.hpp"
#include "support/failing_heap.hpp"
#include "support/failing_threads.hpp"
#include "support/random_source.hpp"
#include "support/small_config.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kMallocFail = static_cast<int32_t>(0x80000004u);

// ---- Create and destroy ------------------------------------------------------------------------------------------------

TEST(EngineFailure, EveryFailedRequestOfCreateIsReportedAndLeavesNothing) {
  StitchConfig config = small_config();
  StitchEngine* const untouched = reinterpret_cast<StitchEngine*>(0x40);
  int failing = 0;
  for (;; ++failing) {
    StitchEngine* engine = untouched;
    int32_t result;
    std::ptrdiff_t held;
    bool reached;
    CapturedOutput output;
    {
      const FailingHeap heap(failing);
      result = QOR_Create_BI_Soft(&config, &engine);
      held = heap.held();
      reached = heap.requests() > failing;
    }
    const std::string text = output.text();
    if (!reached) {
      EXPECT_EQ(0, result);
      QOR_Destroy_BI_Soft(&engine);
      break;
    }
    EXPECT_EQ(kMallocFail, result) << failing;
    EXPECT_EQ("malloc fail!\n", text) << failing;
    EXPECT_EQ(untouched, engine) << failing;
    EXPECT_EQ(0, held) << failing;
  }
  EXPECT_GE(failing, 9);  // engine, five records, three blocks
}

TEST(EngineFailure, CarvingThatFailsLeavesNothing) {
  StitchConfig config = small_config();
  config.pyr_level = 40;
  StitchEngine* engine = nullptr;
  CapturedOutput output;
  std::ptrdiff_t held;
  int requests;
  {
    const FailingHeap heap;
    EXPECT_EQ(kMallocFail, QOR_Create_BI_Soft(&config, &engine));
    held = heap.held();
    requests = heap.requests();
  }
  EXPECT_EQ("malloc fail!\n", output.text());
  EXPECT_EQ(nullptr, engine);
  EXPECT_EQ(0, held);
  EXPECT_GE(requests, 9);
}

TEST(EngineFailure, DestroyFreesEverything) {
  StitchConfig config = small_config();
  for (const bool configured : {false, true}) {
    std::ptrdiff_t held;
    {
      const FailingHeap heap;
      StitchEngine* engine = nullptr;
      EXPECT_EQ(0, QOR_Create_BI_Soft(&config, &engine));
      if (configured) {
        EXPECT_EQ(0, QOR_SetConfig_BI_Soft(&engine));
      }
      EXPECT_GT(heap.held(), 0);
      EXPECT_EQ(0, QOR_Destroy_BI_Soft(&engine));
      held = heap.held();
    }
    EXPECT_EQ(0, held);
  }
}

// ---- Image records -----------------------------------------------------------------------------------------------------

TEST(RecordAllocation, PlaneSizes) {
  struct Case {
    int format, requests;
    size_t bytes[3];
  };
  const size_t luma = 481 * 700;
  const Case cases[] = {{0, 2, {luma, 153920, 0}},
                        {1, 2, {luma, 153920, 0}},
                        {4, 2, {luma, 307840, 0}},
                        {5, 2, {luma, 307840, 0}},
                        {2, 3, {luma, 76960, 76960}},
                        {6, 3, {luma, 153920, 153920}},
                        {7, 1, {luma, 0, 0}},
                        {3, 0, {0, 0, 0}},
                        {8, 0, {0, 0, 0}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.format);
    const FailingHeap heap;
    ImageHeader image{};
    EXPECT_EQ(1, malloc_image_data(&image, 700, 481, 700, 640, c.format));
    EXPECT_EQ(c.requests, heap.requests());
    for (int i = 0; i < c.requests; ++i) EXPECT_EQ(c.bytes[i], heap.bytes_of(i));
    free_image_data(&image);
    EXPECT_EQ(0, heap.held());
  }
}

TEST(RecordAllocation, OddProductsRoundTowardZero) {
  const FailingHeap heap;
  ImageHeader image{};
  malloc_image_data(&image, 5, 5, 5, 7, 2);
  EXPECT_EQ(8u, heap.bytes_of(1));  // 35 / 4
  free_image_data(&image);
}

TEST(RecordAllocation, FailuresGiveNullPlanesThatCanBeFreed) {
  for (const int format : {0, 2, 4, 6, 7}) {
    for (int failing = 0; failing < 3; ++failing) {
      const FailingHeap heap(failing);
      ImageHeader image{};
      EXPECT_EQ(1, malloc_image_data(&image, 8, 8, 8, 8, format));
      if (failing < heap.requests()) {
        EXPECT_EQ(nullptr, image.planes[failing]);
      }
      free_image_data(&image);
      EXPECT_EQ(0, heap.held());
    }
  }
}

TEST(RecordAllocation, BlendImageSizesAndFailures) {
  for (const int failing : {-1, 0}) {
    const FailingHeap heap(failing);
    BlendImage image{};
    EXPECT_EQ(0, malloc_blendimage_header(&image, 7, 5, 7));
    EXPECT_EQ(7u * 5 * 12, heap.bytes_of(0));
    EXPECT_EQ(failing == 0, image.data[0] == nullptr);
    EXPECT_EQ(failing == 0, image.data[1] == nullptr);
    EXPECT_EQ(7, image.type);
    FreeImageHeader(&image, 7);
    EXPECT_EQ(0, heap.held());
  }
  const FailingHeap heap;
  BlendGray gray{};
  EXPECT_EQ(0, malloc_blendimage_header(&gray, 7, 5, 8));
  EXPECT_EQ(7u * 5 * 4, heap.bytes_of(0));
  FreeImageHeader(&gray, 8);
  EXPECT_EQ(0, heap.held());
}

TEST(RecordAllocation, PackedRgbFreesItsOneBuffer) {
  const FailingHeap heap;
  ImageHeader image{};
  malloc_image_data(&image, 4, 4, 12, 0, 7);
  EXPECT_EQ(1, heap.held());
  free_image_data(&image);
  EXPECT_EQ(0, heap.held());
  for (const uint8_t* plane : image.planes) EXPECT_EQ(nullptr, plane);
}

// ---- Frames ------------------------------------------------------------------------------------------------------------

using Bytes = std::vector<uint8_t>;

struct Pictures {
  explicit Pictures(RandomSource& random) {
    for (Bytes* plane : {&luma0, &chroma0, &luma1, &chroma1}) {
      plane->resize(240 * 240);
      for (uint8_t& b : *plane) b = random.byte();
    }
  }
  std::string process(EngineSession& engine) {
    luma.assign(480 * 240, 0xA5);
    chroma.assign(480 * 240, 0x5A);
    return engine.process(luma0.data(), chroma0.data(), luma1.data(), chroma1.data(), luma.data(), chroma.data());
  }
  Bytes luma0, chroma0, luma1, chroma1, luma, chroma;
};

TEST(EngineFailure, WithoutThreadsTablesAndFramesAreTheSame) {
  StitchConfig config = small_config();
  RandomSource random;
  Pictures threaded(random), single = threaded;
  EngineSession engine(config);
  threaded.process(engine);

  const FailingThreads none;
  EngineSession lonely(config);
  EXPECT_EQ(0, std::memcmp(engine->map_middle.entries, lonely->map_middle.entries, 8 * 272 * 240));
  single.process(lonely);
  EXPECT_GE(none.refused(), 4 + 4 + 4 + 2);
  EXPECT_EQ(threaded.luma, single.luma);
  EXPECT_EQ(threaded.chroma, single.chroma);
}

// Any one request of a frame may fail: it still returns 0, prints its line and leaves nothing behind.  Frames take the heap
// where they can't go by bytes, as with a search on enlarged strips, which says what is missing, and levels of a pixel or two.
TEST(EngineFailure, FramesSurviveEveryFailedRequest) {
  StitchConfig config = small_config();
  config.in_h = config.in_w = config.in_luma_stride = config.in_chroma_stride = config.out_h[0] = 96;
  config.out_w[0] = config.out_luma_stride[0] = config.out_chroma_stride[0] = 192;
  config.p0 = config.p1 = 24;
  config.cx0 = config.cy0 = config.cx1 = config.cy1 = 48;
  config.inv_scale = 0.5f;
  config.pyr_level = 8;
  config.findpath_width = 8;
  RandomSource random;
  Pictures pictures(random);
  EngineSession engine(config);
  int requests;
  {
    const FailingHeap heap;
    pictures.process(engine);
    requests = heap.requests();
  }
  ASSERT_GT(requests, 0);
  int told = 0;
  for (int failing = 0; failing < requests; ++failing) {
    for (const bool alone : {false, true}) {
      std::ptrdiff_t held;
      std::string text;
      {
        const FailingThreads threads(0, alone ? INT_MAX : 0);
        const FailingHeap heap(failing);
        text = pictures.process(engine);
        held = heap.held();
      }
      // Which of two threads' requests is the n-th differs from run to run.
      told += alone && text.find("melloc memory for pdTemp failed!!") != std::string::npos;
      EXPECT_NE(std::string::npos, text.find("------>QOR_Proc_BI_Soft Used Time:")) << failing;
      EXPECT_EQ(0, held) << failing;
    }
  }
  EXPECT_EQ(4, told);  // both details of either band
}

// Temporaries live in the blend blocks: a camera's frames never wait for the heap or for pages of it.
TEST(EngineFailure, AFrameAsksTheHeapForNothing) {
  for (const int search : {0, 1}) {
    for (const float inv_scale : {1.0f, 2.0f}) {
      StitchConfig config = small_config();
      config.findpath_enable = search;
      config.inv_scale = inv_scale;
      RandomSource random;
      Pictures pictures(random);
      EngineSession engine(config);
      const FailingHeap heap;
      pictures.process(engine);
      EXPECT_EQ(0, heap.requests()) << "search " << search << ", inv_scale " << inv_scale;
    }
  }
}

TEST(EngineFailure, AFrameAfterAFailedOneIsWhole) {
  StitchConfig config = small_config();
  config.findpath_enable = 0;
  RandomSource random;
  Pictures pictures(random);
  EngineSession engine(config);
  pictures.process(engine);
  const Bytes luma = pictures.luma, chroma = pictures.chroma;
  {
    const FailingHeap heap(0);
    pictures.process(engine);
  }
  pictures.process(engine);
  EXPECT_EQ(luma, pictures.luma);
  EXPECT_EQ(chroma, pictures.chroma);
}

}  // namespace
}  // namespace biseam::test
