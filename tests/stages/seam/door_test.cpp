#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "biseam/biseam.h"
#include "stages/seam/images.hpp"
#include "support/failing_heap.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kUntouched = 7777;

TEST(SeamDoor, CvtColorToGray) {
  int32_t rgb[] = {255, 255, 255, 10, 20, 30};
  int32_t out[2] = {};
  BlendImage src = color_record(rgb, 2, 1);
  BlendGray dst = gray_record(out, 2, 1);
  CvtColorToGray(&src, &dst);
  EXPECT_EQ(out[0], 255);
  EXPECT_EQ(out[1], (76 * 10 + 150 * 20 + 30 * 30) >> 8);
}

TEST(SeamDoor, CreatGaussKernalFillsTheCallersArray) {
  float values[4] = {9.0f, 9.0f, 9.0f, 9.0f};
  float* kernel = values;
  int32_t taps = 2;
  CreatGaussKernal(1.5f, &kernel, &taps);
  EXPECT_EQ(kernel, values);
  EXPECT_EQ(values[0], 0.5f);
  EXPECT_EQ(values[1], 0.5f);
  EXPECT_EQ(values[2], 9.0f);
  taps = 0;
  CreatGaussKernal(1.5f, &kernel, &taps);
  EXPECT_EQ(values[0], 0.5f);
}

TEST(SeamDoor, GaussianSmoothSaysWhatItLacksAndLeavesTheResultAlone) {
  int32_t values[] = {3, 0};
  int32_t out[] = {kUntouched, kUntouched};
  BlendGray src = gray_record(values, 2, 1);
  BlendGray dst = gray_record(out, 2, 1);
  testing::internal::CaptureStdout();
  {
    const FailingHeap heap(0);
    GaussianSmooth(&src, &dst, 1.5f, 3);
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "melloc memory for pdTemp failed!!");
  EXPECT_EQ(out[0], kUntouched);
  GaussianSmooth(&src, &dst, 1.5f, 3);
  EXPECT_EQ(out[0], 1);
}

TEST(SeamDoor, GaussFilterSaysWhatItsSmoothingLacks) {
  const char* const said[] = {"", "melloc memory for pdTemp failed!!", "malloc memory for pdKernel,failed!!"};
  for (int request = 0; request < 3; ++request) {
    int32_t values[] = {3, 0};
    int32_t out[] = {kUntouched, kUntouched};
    BlendGray src = gray_record(values, 2, 1);
    BlendGray dst = gray_record(out, 2, 1);
    testing::internal::CaptureStdout();
    {
      const FailingHeap heap(request);
      GaussFilter(&src, &dst);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), said[request]);
    EXPECT_EQ(out[0], kUntouched);
  }
}

TEST(SeamDoor, SubGrayImageReturnsMinusOneOnMismatch) {
  int32_t a[] = {3, 9};
  int32_t b[] = {5, 5};
  int32_t out[] = {kUntouched, kUntouched};
  BlendGray first = gray_record(a, 2, 1);
  BlendGray second = gray_record(b, 1, 2);
  BlendGray result = gray_record(out, 2, 1);
  EXPECT_EQ(SubGrayImage(&first, &second, &result), -1);
  EXPECT_EQ(out[0], kUntouched);
  second = gray_record(b, 2, 1);
  EXPECT_EQ(SubGrayImage(&first, &second, &result), 0);
  EXPECT_EQ(out[0], 2);
  EXPECT_EQ(out[1], 4);
}

TEST(SeamDoor, GaussFilter) {
  std::vector<int32_t> values(30, 0), out(30, kUntouched);
  values[15] = 110;
  BlendGray src = gray_record(values.data(), 30, 1);
  BlendGray dst = gray_record(out.data(), 30, 1);
  GaussFilter(&src, &dst);
  EXPECT_EQ(out[15], 100);
  EXPECT_EQ(out[10], 10);
  EXPECT_EQ(out[9], 0);
}

TEST(SeamDoor, CalcMemGivesBytesAndMinusOneForWhatNoAllocatorGrants) {
  int32_t node_bytes = 0, arc_bytes = 0, orphan_bytes = 0;
  CalcMem(12, 34, &node_bytes, &arc_bytes, &orphan_bytes);
  EXPECT_EQ(node_bytes, 28 * 12);
  EXPECT_EQ(arc_bytes, 12 * 34 + 24);
  EXPECT_EQ(orphan_bytes, 4 * 34);
  CalcMem(76695845, 178956969, &node_bytes, &arc_bytes, &orphan_bytes);
  EXPECT_EQ(node_bytes, -1);
  EXPECT_EQ(arc_bytes, -1);
  EXPECT_EQ(orphan_bytes, 4 * 178956969);
  CalcMem(76695844, 178956968, &node_bytes, &arc_bytes, &orphan_bytes);
  EXPECT_EQ(node_bytes, 28 * 76695844);
  EXPECT_EQ(arc_bytes, 12 * 178956968 + 24);
}

// The calls of a host that cuts a grid of its own, in blocks of the size that CalcMem gives.
TEST(SeamDoor, GraphIsBuiltCutAndAsked) {
  constexpr int32_t w = 7;
  constexpr int32_t h = 6;
  constexpr int32_t arcs = 2 * (2 * w * h - w - h);
  const std::vector<int32_t> detail(w * h, 5);
  int32_t node_bytes = 0, arc_bytes = 0, orphan_bytes = 0;
  CalcMem(w * h, arcs, &node_bytes, &arc_bytes, &orphan_bytes);
  void* const nodes = std::calloc(1, static_cast<size_t>(node_bytes));
  void* const arc_block = std::calloc(1, static_cast<size_t>(arc_bytes));
  void* const orphans = std::calloc(1, static_cast<size_t>(orphan_bytes));
  SeamGraph graph{nullptr, 5, nullptr, 5, 5.0f};
  Config(nodes, arc_block, &graph);
  EXPECT_EQ(graph.nodes, nodes);
  EXPECT_EQ(graph.arcs, arc_block);
  EXPECT_EQ(graph.node_count, 0);
  GCSetGraphWeightsColor2(detail.data(), detail.data(), h, w, 2, &graph);
  EXPECT_EQ(graph.node_count, w * h);
  EXPECT_EQ(graph.arc_count, arcs + 2);
  // Two rows with ties: 3 columns each tied both ways; each row is cut at cost 1, the rows outside at 1001 each.
  const float straight_through = 2 * 3 * 100000.0f;
  EXPECT_EQ(MaxFlow(arcs, orphans, &graph), straight_through + 2 * 1.0f + 4 * 1001.0f);
  EXPECT_NE(InSourceSegment(2 * w + 0, &graph), 0);
  EXPECT_EQ(InSourceSegment(2 * w + w - 1, &graph), 0);
  std::free(nodes);
  std::free(arc_block);
  std::free(orphans);
}

TEST(SeamDoor, AddEdgeAndAddTermWeights) {
  GraphNode nodes[2] = {};
  GraphArc arcs[4];
  int32_t orphans[2];
  SeamGraph graph;
  Config(nodes, arcs, &graph);
  graph.node_count = 2;
  AddTermWeights(0, 6.0f, 1.0f, &graph);
  AddTermWeights(1, 0.0f, 9.0f, &graph);
  AddEdge(0, 1, 4.0f, 2.0f, &graph);
  EXPECT_EQ(MaxFlow(2, orphans, &graph), 5.0f);
  EXPECT_NE(InSourceSegment(0, &graph), 0);
  EXPECT_EQ(InSourceSegment(1, &graph), 0);
}

TEST(SeamDoor, GraphCutReturnsZeroOrMinusOne) {
  std::vector<int32_t> detail(9 * 8, 4), samples(3 * 12 * 8, kUntouched);
  BlendImage mask = color_record(samples.data(), 12, 8);
  BlendGray first = gray_record(detail.data(), 9, 8);
  BlendGray second = gray_record(detail.data(), 8, 9);
  EXPECT_EQ(GraphCut(1, &mask, &first, &second), -1);
  {
    const FailingHeap heap(0);
    EXPECT_EQ(GraphCut(1, &mask, &first, &first), -1);
  }
  EXPECT_EQ(samples, std::vector<int32_t>(3 * 12 * 8, kUntouched));
  EXPECT_EQ(GraphCut(1, &mask, &first, &first), 0);
  EXPECT_EQ(samples[3 * 12 * 3], 64);
}

TEST(SeamDoor, CreatFindPathAndCreatMask) {
  std::vector<int32_t> samples(3 * 20), out(3 * 8, kUntouched);
  for (size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<int32_t>(i);
  BlendImage source = color_record(samples.data(), 20, 1);
  BlendImage strip = color_record(out.data(), 8, 1);
  CreatFindPath(&source, &strip, 8, 4, 1);
  EXPECT_EQ(out.front(), 3 * 8);
  CreatFindPath(&source, &strip, 8, 4, 0);
  EXPECT_EQ(out.front(), 3 * 4);
  EXPECT_EQ(out.back(), 3 * 11 + 2);
  CreatMask(&strip);
  EXPECT_EQ(out[11], 64);
  EXPECT_EQ(out[12], 3 * 8);
}

}  // namespace
}  // namespace biseam::test
