#include "media/libav_log.hpp"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "media/libav.hpp"

namespace biseam::tool {
namespace {

const std::string kInvalid = "Invalid argument";

TEST(LibavLog, WithoutAComplaintTheCodeSpeaks) {
  const LibavLog log;
  EXPECT_EQ(log.reason(AVERROR(EINVAL)), kInvalid);
  av_log(nullptr, AV_LOG_WARNING, "this is only a warning\n");
  av_log(nullptr, AV_LOG_INFO, "and this is news\n");
  EXPECT_EQ(log.reason(AVERROR(EINVAL)), kInvalid);
}

TEST(LibavLog, TheFirstComplaintIsTheReason) {
  const LibavLog log;
  av_log(nullptr, AV_LOG_ERROR, "preset %d is unknown.\n", 7);
  av_log(nullptr, AV_LOG_FATAL, "so nothing works\n");
  EXPECT_EQ(log.reason(AVERROR(EINVAL)), "preset 7 is unknown");
}

TEST(LibavLog, WhatAnnouncesFurtherLinesIsLeftOut) {
  const auto reason = [](const char* complaint) {
    const LibavLog log;
    av_log(nullptr, AV_LOG_ERROR, "%s\n", complaint);
    av_log(nullptr, AV_LOG_ERROR, "1920x1080\n");
    return log.reason(AVERROR(EINVAL));
  };
  EXPECT_EQ(reason("no size for it. Known sizes:"), "no size for it");
  EXPECT_EQ(reason("known sizes:"), "known sizes");
  EXPECT_EQ(reason("no such size.\nKnown are two"), "no such size. Known are two");
}

TEST(LibavLog, ANewOneForgets) {
  {
    const LibavLog log;
    av_log(nullptr, AV_LOG_ERROR, "old\n");
  }
  const LibavLog log;
  EXPECT_EQ(log.reason(AVERROR(EINVAL)), kInvalid);
}

TEST(LibavLog, AfterwardsNothingIsKept) {
  testing::internal::CaptureStderr();
  const LibavLog outer;
  { const LibavLog inner; }
  av_log(nullptr, AV_LOG_ERROR, "nobody listens\n");
  EXPECT_EQ(outer.reason(AVERROR(EINVAL)), kInvalid);
  EXPECT_NE(testing::internal::GetCapturedStderr().find("nobody listens"), std::string::npos);
}

// Longer than a line may be, and one of nothing but what is taken away at the end.
TEST(LibavLog, ComplaintsOfAnyLengthAreLines) {
  const LibavLog log;
  av_log(nullptr, AV_LOG_ERROR, " ...\n");
  const std::string much(5000, 'x');
  av_log(nullptr, AV_LOG_ERROR, "%s\n", much.c_str());
  const std::string reason = log.reason(AVERROR(EINVAL));
  EXPECT_GT(reason.size(), 100u);
  EXPECT_EQ(reason, much.substr(0, reason.size()));
}

TEST(LibavLog, AnyThreadMayComplain) {
  const LibavLog log;
  {
    std::vector<std::jthread> threads;
    for (int k = 0; k < 4; ++k) {
      threads.emplace_back([] {
        for (int n = 0; n < 200; ++n) av_log(nullptr, AV_LOG_ERROR, "a thread complains\n");
      });
    }
  }
  EXPECT_EQ(log.reason(AVERROR(EINVAL)), "a thread complains");
}

}  // namespace
}  // namespace biseam::tool
