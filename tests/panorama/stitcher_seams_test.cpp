// Seams that stay for several frames.
#include <gtest/gtest.h>

#include <random>
#include <utility>
#include <vector>

#include "biseam/stitcher.hpp"
#include "panorama/fixture.hpp"

namespace biseam {
namespace {

using namespace test;

Planes stitch(Stitcher& stitcher, Frame& frame, Seams seams) {
  blank(frame);
  const Error error =
      stitcher.process({frame.luma0, frame.chroma0}, {frame.luma1, frame.chroma1}, {frame.luma, frame.chroma}, seams);
  EXPECT_FALSE(error) << error.text();
  return panorama_of(frame);
}

std::vector<int32_t> weights_of(const Stitcher& stitcher, int index) {
  const BandView band = stitcher.band(index);
  std::vector<int32_t> weights;
  for (int y = 0; y < band.height; ++y) {
    for (int x = 0; x < band.width; ++x) weights.push_back(band.weights[y * band.stride + x * band.step]);
  }
  return weights;
}

std::vector<uint8_t> saved(const Stitcher& stitcher) {
  std::vector<uint8_t> bytes(stitcher.seams_size());
  const Error error = stitcher.save_seams({bytes});
  EXPECT_FALSE(error) << error.text();
  return bytes;
}

class Kept : public testing::TestWithParam<bool> {
 protected:
  Kept() : config_(valid_config()), random_(31) { config_.findpath_enable = GetParam() ? 1 : 0; }
  StitchConfig config_;
  std::mt19937 random_;
};
INSTANTIATE_TEST_SUITE_P(Seams, Kept, testing::Bool(),
                         [](const auto& parameter) { return parameter.param ? "searched" : "straight"; });

TEST_P(Kept, SeamsAreThoseOfTheFrameBefore) {
  Stitcher stitcher = make(config_);
  Frame first(stitcher.sizes(), random_), second(stitcher.sizes(), random_);
  stitch(stitcher, first, Seams::fresh);
  const std::vector<int32_t> weights[2] = {weights_of(stitcher, 0), weights_of(stitcher, 1)};
  const Planes kept = stitch(stitcher, second, Seams::kept);
  for (int k = 0; k < 2; ++k) EXPECT_EQ(weights_of(stitcher, k), weights[k]);
  const Planes fresh = stitch(stitcher, second, Seams::fresh);
  if (GetParam()) {
    EXPECT_NE(weights_of(stitcher, 0), weights[0]);
    EXPECT_NE(kept, fresh);
  } else {
    EXPECT_EQ(kept, fresh);
  }
}

TEST_P(Kept, TheSameFrameAgainGivesTheSameBytes) {
  Stitcher stitcher = make(config_);
  Frame frame(stitcher.sizes(), random_);
  const Planes fresh = stitch(stitcher, frame, Seams::fresh);
  EXPECT_EQ(stitch(stitcher, frame, Seams::kept), fresh);
  EXPECT_EQ(stitch(stitcher, frame, Seams::kept), fresh);
}

TEST_P(Kept, TheFirstFrameHasFreshSeams) {
  Stitcher kept = make(config_), fresh = make(config_);
  Frame frame(kept.sizes(), random_);
  EXPECT_EQ(stitch(kept, frame, Seams::kept), stitch(fresh, frame, Seams::fresh));
}

TEST_P(Kept, AFreshFrameAfterKeptOnesIsAsEver) {
  Stitcher stitcher = make(config_), other = make(config_);
  Frame first(stitcher.sizes(), random_), second(stitcher.sizes(), random_), third(stitcher.sizes(), random_);
  stitch(stitcher, first, Seams::fresh);
  stitch(stitcher, second, Seams::kept);
  EXPECT_EQ(stitch(stitcher, third, Seams::fresh), stitch(other, third, Seams::fresh));
}

TEST_P(Kept, MasksOfEarlierFramesAreLeftAlone) {
  Stitcher with = make(config_, {.fresh_seam = false}), without = make(config_, {.fresh_seam = false});
  Frame first(with.sizes(), random_), second(with.sizes(), random_), third(with.sizes(), random_);
  stitch(with, first, Seams::fresh);
  stitch(with, second, Seams::kept);
  stitch(without, first, Seams::fresh);
  EXPECT_EQ(stitch(with, third, Seams::fresh), stitch(without, third, Seams::fresh));
}

TEST_P(Kept, AnotherStitcherTakesSeamsOver) {
  Stitcher searching = make(config_), following = make(config_);
  Frame first(searching.sizes(), random_), second(searching.sizes(), random_), third(searching.sizes(), random_);
  stitch(following, third, Seams::fresh);  // has other seams already
  stitch(searching, first, Seams::fresh);
  const Error error = following.load_seams({saved(searching)});
  EXPECT_FALSE(error) << error.text();
  EXPECT_EQ(stitch(following, second, Seams::kept), stitch(searching, second, Seams::kept));
  for (int k = 0; k < 2; ++k) EXPECT_EQ(weights_of(following, k), weights_of(searching, k));
}

TEST_P(Kept, LoadedSeamsAreEnoughToBeginWith) {
  Stitcher searching = make(config_), following = make(config_);
  Frame first(searching.sizes(), random_), second(searching.sizes(), random_);
  stitch(searching, first, Seams::fresh);
  EXPECT_FALSE(following.load_seams({saved(searching)}));
  EXPECT_EQ(stitch(following, second, Seams::kept), stitch(searching, second, Seams::kept));
}

TEST(Seams, WhatIsLoadedIsWhatWasSaved) {
  Stitcher stitcher = make(valid_config());
  EXPECT_EQ(stitcher.seams_size(), 2u * 32 * 128 * 3);
  std::vector<uint8_t> bytes(stitcher.seams_size());
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i % 65);
  EXPECT_FALSE(stitcher.load_seams({bytes}));
  EXPECT_EQ(saved(stitcher), bytes);
}

TEST(Seams, WrongBytesAreRefusedAndNothingChanges) {
  std::mt19937 random(34);
  Stitcher stitcher = make(valid_config());
  Frame frame(stitcher.sizes(), random);
  stitch(stitcher, frame, Seams::fresh);
  const std::vector<uint8_t> before = saved(stitcher);
  std::vector<uint8_t> bytes(before.size(), 1);
  bytes.back() = 65;
  EXPECT_EQ(stitcher.load_seams({bytes}).code(), ErrorCode::invalid_seams);
  EXPECT_STREQ(stitcher.load_seams({bytes}).text(), "seams with a weight of 65: must be 64 or less");
  bytes.pop_back();
  EXPECT_STREQ(stitcher.load_seams({bytes}).text(), "seams of 24575 bytes: must be of 24576, as this stitcher's are");
  EXPECT_STREQ(stitcher.load_seams({}).text(), "seams of 0 bytes: must be of 24576, as this stitcher's are");
  EXPECT_EQ(stitcher.save_seams({bytes}).code(), ErrorCode::buffer_too_small);
  EXPECT_STREQ(stitcher.save_seams({bytes}).text(), "to.bytes has 24575 bytes: must be 24576 or more");
  EXPECT_EQ(saved(stitcher), before);
}

TEST(Seams, ThereAreNoneBeforeTheFirstFrame) {
  const Stitcher stitcher = make(valid_config());
  std::vector<uint8_t> bytes(stitcher.seams_size(), 7);
  EXPECT_EQ(stitcher.save_seams({bytes}).code(), ErrorCode::invalid_seams);
  EXPECT_STREQ(stitcher.save_seams({bytes}).text(), "no seams to save: no frame was stitched yet");
  EXPECT_EQ(bytes, std::vector<uint8_t>(bytes.size(), 7));
}

TEST(Seams, ShortBuffersAreRefusedWithKeptSeamsToo) {
  std::mt19937 random(35);
  Stitcher stitcher = make(valid_config());
  Frame frame(stitcher.sizes(), random);
  stitch(stitcher, frame, Seams::fresh);
  EXPECT_EQ(stitcher.process({}, {}, {}, Seams::kept).code(), ErrorCode::buffer_too_small);
}

}  // namespace
}  // namespace biseam
