// File functions when memory is short: no crash, nothing left behind.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "biseam/biseam.h"
#include "support/failing_heap.hpp"
#include "support/temporary_file.hpp"

namespace biseam::test {
namespace {

std::vector<uint8_t> small_bitmap() {
  std::vector<uint8_t> samples(12, 9);
  const TemporaryFile file;
  const ClImage image{2, 2, 3, samples.data()};
  clSaveImage(file.path(), &image);
  return file.bytes();
}

TEST(FormatMemory, LoadWithoutMemoryForTheRecordGivesNullAndOpensNothing) {
  const TemporaryFile file(small_bitmap());
  const long before = open_descriptors();
  ClImage* image;
  {
    const FailingHeap heap(0);
    image = clLoadImage(file.path());
  }
  EXPECT_EQ(nullptr, image);
  EXPECT_EQ(before, open_descriptors());
}

TEST(FormatMemory, LoadWithoutMemoryForTheSamplesGivesARecordWithoutThem) {
  const TemporaryFile file(small_bitmap());
  ClImage* image;
  {
    const FailingHeap heap(1);
    image = clLoadImage(file.path());
    EXPECT_EQ(1, heap.held());
  }
  ASSERT_NE(nullptr, image);
  EXPECT_EQ(2, image->width);
  EXPECT_EQ(2, image->height);
  EXPECT_EQ(3, image->channels);
  EXPECT_EQ(nullptr, image->data);
  std::free(image);
}

TEST(FormatMemory, MissingFileFreesTheRecord) {
  const FailingHeap heap;
  EXPECT_EQ(nullptr, clLoadImage("/nonexistent/folder/image.bmp"));
  EXPECT_EQ(1, heap.requests());
  EXPECT_EQ(0, heap.held());
}

TEST(FormatMemory, ReadFrameWithoutMemoryGives0AndNoPlanes) {
  const TemporaryFile file(std::vector<uint8_t>(64, 7));
  for (const int format : {0, 4}) {
    for (int failing = 0; failing < 2; ++failing) {
      std::FILE* stream = std::fopen(file.path(), "rb");
      ImageHeader image{};
      {
        const FailingHeap heap(failing);
        EXPECT_EQ(0, read_yuv_image(stream, &image, 4, 4, 4, 4, format));
        EXPECT_EQ(0, heap.held());
      }
      for (const uint8_t* plane : image.planes) EXPECT_EQ(nullptr, plane);
      std::fclose(stream);
    }
  }
}

TEST(FormatMemory, ReadFrameOfAnotherFormatLeavesNothing) {
  const TemporaryFile file(std::vector<uint8_t>(64, 7));
  std::FILE* stream = std::fopen(file.path(), "rb");
  for (const int format : {1, 2, 3, 5, 6, 7}) {
    const FailingHeap heap;
    ImageHeader image{};
    EXPECT_EQ(0, read_yuv_image(stream, &image, 4, 4, 4, 4, format));
    EXPECT_EQ(0, heap.held());
  }
  std::fclose(stream);
}

}  // namespace
}  // namespace biseam::test
