// The heap and the threads of panoramas: every request can be refused.
#include <gtest/gtest.h>

#include <climits>

#include "panorama/door_fixture.hpp"
#include "support/failing_heap.hpp"
#include "support/failing_threads.hpp"

namespace biseam::test {
namespace {

std::vector<uint8_t> stitched(const Door& door, BiseamPanorama* panorama) {
  OwnPicture lens0 = door.fisheye(0), lens1 = door.fisheye(1), to = door.panorama();
  const BiseamPicture fisheyes[] = {lens0.record(), lens1.record()}, picture = to.record();
  BiseamError error;
  EXPECT_EQ(biseam_panorama_stitch(panorama, fisheyes, &picture, &door.frame, &error), BISEAM_OK) << error.text;
  return to.bytes();
}

TEST(PanoramaHeap, EveryRefusedRequestOfOpenIsAnErrorWithoutALeak) {
  Door door;
  door.options.threads = 3;
  for (const bool all_later_fail : {false, true}) {
    int request = 0;
    for (;; ++request) {
      ASSERT_LT(request, 100);
      const FailingHeap heap(request, all_later_fail);
      BiseamError error = {-1, ""};
      BiseamPanorama* const opened = biseam_panorama_open(&door.camera, &door.options, &error);
      biseam_panorama_close(opened);
      ASSERT_EQ(heap.held(), 0) << "request " << request;
      if (heap.requests() <= request) {
        EXPECT_NE(opened, nullptr);
        break;
      }
      ASSERT_EQ(opened, nullptr) << "request " << request;
      EXPECT_EQ(error.code, BISEAM_NO_MEMORY);
      EXPECT_STREQ(error.text, "memory is short for a panorama of 192 x 96");
    }
    EXPECT_EQ(request, 4) << "handle, engine, its memory and the strips'";
  }
}

TEST(PanoramaHeap, HoldsWhatItSays) {
  Door door;
  for (const int width : {64, 192, 1024}) {
    door.options.width = width;
    door.options.height = width / 2;
    const FailingHeap heap;
    const Handle opened(biseam_panorama_open(&door.camera, &door.options, nullptr));
    std::size_t bytes = 0;
    for (int i = 0; i < heap.requests(); ++i) bytes += heap.bytes_of(i);
    EXPECT_NEAR(double(biseam_panorama_memory(opened.panorama)), double(bytes), 64);  // requests are whole cache lines
  }
}

TEST(PanoramaHeap, FramesAskNothingOfIt) {
  Door door;
  door.options.threads = 3;
  door.options.light = BISEAM_LIGHT_MATCH;
  door.options.seam = BISEAM_SEAM_STEADY;
  door.options.near = BISEAM_NEAR_MATCH;
  const Handle opened(biseam_panorama_open(&door.camera, &door.options, nullptr));
  OwnPicture lens0 = door.fisheye(0), lens1 = door.fisheye(1), to = door.panorama();
  BiseamPicture fisheyes[] = {lens0.record(), lens1.record()};
  const BiseamPicture picture = to.record();
  std::vector<char> guide(biseam_panorama_guide_size(opened.panorama)), smoothed = guide;
  const void* const guides[] = {guide.data()};
  const FailingHeap heap(0, true);
  ASSERT_EQ(biseam_panorama_measure(opened.panorama, fisheyes, guide.data(), nullptr), BISEAM_OK);
  ASSERT_EQ(biseam_panorama_smooth(opened.panorama, guides, 1, 0, smoothed.data(), nullptr), BISEAM_OK);
  for (int i = 0; i < 5; ++i) {  // a first frame, the same again, another view, another siting, a guide
    BiseamFrame frame = biseam_frame_defaults();
    if (i >= 2) frame.turn.pitch = 40;
    if (i >= 4) frame.guide = smoothed.data(), frame.guide_size = smoothed.size();
    if (i >= 3) fisheyes[0].siting = fisheyes[1].siting = BISEAM_SITING_MIDDLE;
    ASSERT_EQ(biseam_panorama_stitch(opened.panorama, fisheyes, &picture, &frame, nullptr), BISEAM_OK);
  }
  EXPECT_EQ(heap.requests(), 0);
}

TEST(PanoramaThreads, RefusedOnesChangeNothing) {
  Door door;
  const Handle alone(biseam_panorama_open(&door.camera, &door.options, nullptr));
  const std::vector<uint8_t> expected = stitched(door, alone.panorama);
  door.options.threads = 4;
  for (int thread = 0; thread <= 3; ++thread) {
    const FailingThreads threads(thread);
    const Handle opened(biseam_panorama_open(&door.camera, &door.options, nullptr));
    ASSERT_NE(opened.panorama, nullptr);
    EXPECT_EQ(stitched(door, opened.panorama), expected) << thread;
    EXPECT_EQ(threads.refused(), thread < 3 ? 1 : 0);  // the first refusal ends the asking
  }
}

}  // namespace
}  // namespace biseam::test
