#include "clip/read/frame_times.hpp"

#include <gtest/gtest.h>

namespace biseam::tool {
namespace {

using Times = std::vector<std::int64_t>;

FrameTimes with_hidden_pictures() { return FrameTimes(false); }

TEST(FrameTimes, PicturesInOrderLeaveNothingMissing) {
  FrameTimes times;
  for (const int time : {0, 30, 10, 20}) times.expect(time);
  times.complain();
  for (const int time : {0, 10, 20, 30}) EXPECT_EQ(times.arrived(time).missing, Times());
  EXPECT_EQ(times.ended(), Times());
}

TEST(FrameTimes, WherePicturesMayBeHiddenOneWithoutIsNothingSpecial) {
  FrameTimes times = with_hidden_pictures();
  for (const int time : {0, 10, 20}) times.expect(time);
  EXPECT_EQ(times.arrived(0).missing, Times());
  EXPECT_EQ(times.arrived(20).missing, Times());
}

TEST(FrameTimes, AfterAComplaintItIsMissing) {
  FrameTimes times = with_hidden_pictures();
  for (const int time : {0, 10, 20, 30}) times.expect(time);
  EXPECT_EQ(times.arrived(0).missing, Times());
  times.complain();
  EXPECT_EQ(times.arrived(30).missing, (Times{10, 20}));
}

TEST(FrameTimes, OneComplaintMayComeBeforePicturesOfEarlierTimes) {
  FrameTimes times = with_hidden_pictures();
  for (const int time : {0, 40, 20, 10, 30, 50}) times.expect(time);
  EXPECT_EQ(times.arrived(0).missing, Times());
  times.complain();  // about 40
  for (const int time : {10, 20, 30}) EXPECT_EQ(times.arrived(time).missing, Times());
  EXPECT_EQ(times.arrived(50).missing, Times{40});
  times.expect(60);
  times.expect(70);
  EXPECT_EQ(times.arrived(70).missing, Times());
}

TEST(FrameTimes, ElsewhereEveryPacketHasAPicture) {
  FrameTimes times;
  for (const int time : {0, 10, 20}) times.expect(time);
  EXPECT_EQ(times.arrived(20).missing, (Times{0, 10}));
}

TEST(FrameTimes, APictureThatWasMissedIsNotExpectedAnyMore) {
  FrameTimes times;
  for (const int time : {0, 10, 20}) times.expect(time);
  EXPECT_TRUE(times.arrived(0).expected);
  EXPECT_TRUE(times.arrived(20).expected);
  EXPECT_FALSE(times.arrived(10).expected);
}

TEST(FrameTimes, WhatIsMissingAtTheEnd) {
  FrameTimes times;
  for (const int time : {0, 10, 20}) times.expect(time);
  EXPECT_EQ(times.arrived(0).missing, Times());
  times.complain();
  EXPECT_EQ(times.ended(), (Times{10, 20}));
}

TEST(FrameTimes, TwoPacketsOfOneTimeAreOnePicture) {
  FrameTimes times;
  for (const int time : {0, 10, 10, 20}) times.expect(time);
  times.complain();
  EXPECT_EQ(times.arrived(0).missing, Times());
  EXPECT_EQ(times.arrived(20).missing, Times{10});
}

}  // namespace
}  // namespace biseam::tool
