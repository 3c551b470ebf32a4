#include "view/visitors.hpp"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <list>

namespace biseam::tool {
namespace {

using namespace std::chrono_literals;

// One end is the server's.
class Line {
 public:
  Line() { EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends_), 0); }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;
  ~Line() {
    ::close(ends_[0]);
    ::close(ends_[1]);
  }
  int socket() const { return ends_[0]; }
  bool is_ended() const {
    char byte;
    return ::read(ends_[1], &byte, 1) == 0;
  }

 private:
  int ends_[2] = {-1, -1};
};

struct VisitorsTest : testing::Test {
  Visitors visitors;
  Visitors::Clock::time_point start = Visitors::Clock::now();

  void arrive(const Line& line, Visitors::Clock::duration after = 0s) { visitors.arrive(&line, line.socket(), start + after); }
};

TEST_F(VisitorsTest, RequestsHaveATimeLimit) {
  const Line early, late;
  arrive(early);
  arrive(late, 4s);
  visitors.end_overdue(start + Visitors::kRequestTime - 1ms);
  EXPECT_FALSE(early.is_ended());
  visitors.end_overdue(start + Visitors::kRequestTime);
  EXPECT_TRUE(early.is_ended());
  EXPECT_FALSE(late.is_ended());
}

TEST_F(VisitorsTest, AnswersHaveTimeAndTheNextRequestHasItsOwn) {
  const Line line;
  arrive(line);
  visitors.ask(&line, start + 1s);
  visitors.end_overdue(start + 1h);
  EXPECT_FALSE(line.is_ended());
  visitors.finish(&line, start + 1h);
  visitors.end_overdue(start + 1h + Visitors::kRequestTime - 1ms);
  EXPECT_FALSE(line.is_ended());
  visitors.end_overdue(start + 1h + Visitors::kRequestTime);
  EXPECT_TRUE(line.is_ended());
}

TEST_F(VisitorsTest, TheOneThatHasWaitedLongestGoesWhenThereAreTooMany) {
  std::list<Line> lines(Visitors::kMost);
  for (const Line& line : lines) arrive(line, 1s);
  const Line &first = lines.front(), &last = lines.back(), more, still_more;
  visitors.ask(&first, start + 1s);
  visitors.ask(&last, start + 1s);
  visitors.finish(&last, start);
  arrive(more, 2s);
  EXPECT_TRUE(last.is_ended());
  arrive(still_more, 2s);
  EXPECT_FALSE(first.is_ended() || more.is_ended() || still_more.is_ended());
  int ended = 0;
  for (const Line& line : lines) ended += line.is_ended();
  EXPECT_EQ(ended, 2);
}

TEST_F(VisitorsTest, AnswersGoWhenNobodyElseCan) {
  std::list<Line> lines(Visitors::kMost);
  for (const Line& line : lines) {
    arrive(line);
    visitors.ask(&line, start + (&line == &lines.back() ? 0s : 1s));
  }
  const Line more;
  arrive(more, 2s);
  EXPECT_TRUE(lines.back().is_ended());
  EXPECT_FALSE(more.is_ended() || lines.front().is_ended());
}

TEST_F(VisitorsTest, WhoLeftIsNotTouchedAnyMore) {
  const Line line;
  arrive(line);
  visitors.leave(&line);
  visitors.end_overdue(start + 1h);
  EXPECT_FALSE(line.is_ended());
}

}  // namespace
}  // namespace biseam::tool
