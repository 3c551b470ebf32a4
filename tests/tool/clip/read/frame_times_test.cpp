#include "clip/read/frame_times.hpp"

#include <gtest/gtest.h>

namespace biseam::tool {
namespace {

using Times = std::vector<std::int64_t>;

FrameTimes with_hidden_pictures() { return FrameTimes(false); }

TEST(FrameTimes, pictures_in_order_leave_nothing_missing) {
  FrameTimes times;
  for (const int time : {0, 30, 10, 20}) times.expect(time);
  times.complain();
  for (const int time : {0, 10, 20, 30}) EXPECT_EQ(times.arrived(time).missing, Times());
  EXPECT_EQ(times.ended(), Times());
}

TEST(FrameTimes, where_pictures_may_be_hidden_one_without_is_nothing_special) {
  FrameTimes times = with_hidden_pictures();
  for (const int time : {0, 10, 20}) times.expect(time);
  EXPECT_EQ(times.arrived(0).missing, Times());
  EXPECT_EQ(times.arrived(20).missing, Times());
}

TEST(FrameTimes, after_a_complaint_it_is_missing) {
  FrameTimes times = with_hidden_pictures();
  for (const int time : {0, 10, 20, 30}) times.expect(time);
  EXPECT_EQ(times.arrived(0).missing, Times());
  times.complain();
  EXPECT_EQ(times.arrived(30).missing, (Times{10, 20}));
}

TEST(FrameTimes, one_complaint_may_come_before_pictures_of_earlier_times) {
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

TEST(FrameTimes, elsewhere_every_packet_has_a_picture) {
  FrameTimes times;
  for (const int time : {0, 10, 20}) times.expect(time);
  EXPECT_EQ(times.arrived(20).missing, (Times{0, 10}));
}

TEST(FrameTimes, a_picture_that_was_missed_is_not_expected_any_more) {
  FrameTimes times;
  for (const int time : {0, 10, 20}) times.expect(time);
  EXPECT_TRUE(times.arrived(0).expected);
  EXPECT_TRUE(times.arrived(20).expected);
  EXPECT_FALSE(times.arrived(10).expected);
}

TEST(FrameTimes, what_is_missing_at_the_end) {
  FrameTimes times;
  for (const int time : {0, 10, 20}) times.expect(time);
  EXPECT_EQ(times.arrived(0).missing, Times());
  times.complain();
  EXPECT_EQ(times.ended(), (Times{10, 20}));
}

TEST(FrameTimes, two_packets_of_one_time_are_one_picture) {
  FrameTimes times;
  for (const int time : {0, 10, 10, 20}) times.expect(time);
  times.complain();
  EXPECT_EQ(times.arrived(0).missing, Times());
  EXPECT_EQ(times.arrived(20).missing, Times{10});
}

}  // namespace
}  // namespace biseam::tool
