#include "calibrate/doubt.hpp"

#include <gtest/gtest.h>

#include "tool/calibrate/matches.hpp"

namespace biseam::calibrate {
namespace {

TEST(Doubt, UsualMatchIsInDoubtByOne) {
  std::vector<Match> matches(101);
  for (std::size_t i = 0; i < matches.size(); ++i) {
    matches[i].t_doubt = matches[i].b_doubt = 0.02 * std::exp2((double(i) - 50) / 10);
  }
  compare_doubts(matches);
  EXPECT_DOUBLE_EQ(matches[50].t_doubt, 1);
  EXPECT_DOUBLE_EQ(matches[60].b_doubt, 2);
  EXPECT_GE(matches.front().t_doubt, 0.5);  // none counts as much as hundreds of others
  EXPECT_LE(matches.back().t_doubt, 10);
  std::vector<Match> none;
  compare_doubts(none);
}

TEST(Doubt, PlacesThatAreOffAlongTheRing) {
  const Values truth = some_values();
  std::vector<Match> matches = see(truth, 0);
  Solution solution;
  solution.remainders = remainders_of(truth, kFrame, matches);
  const auto is_bad = [](double t) { return t > 1 && t < 2; };
  for (Remainder& remainder : solution.remainders) {
    solution.along.push_back((is_bad(remainder.at.t) ? 20 : 1) * remainder.off.t);
    remainder.off.t += 2;  // both may be parallax
    remainder.off.b += 5;
  }
  doubt_places(matches, solution);
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const double t = solution.remainders[i].at.t;
    if (t > 1.2 && t < 1.8) {
      EXPECT_GT(matches[i].b_doubt, 6);
    }
    if (t < 0.8 || t > 2.2) {
      EXPECT_LT(matches[i].b_doubt, 3);
    }
  }
}

TEST(Doubt, FewMatchesStayAsTheyAre) {
  std::vector<Match> matches(5);
  Solution solution;
  solution.remainders.resize(5);
  solution.along.resize(5);
  doubt_places(matches, solution);
  for (const Match& match : matches) EXPECT_EQ(match.t_doubt, 1);
}

}  // namespace
}  // namespace biseam::calibrate
