#include "calibration/report/matches.hpp"

#include <gtest/gtest.h>

#include <cstdio>

#include "tool/calibration/report/painted_finding.hpp"

namespace biseam::tool {
namespace {

using calibrate::kPixelsPerRadian;

TEST(MatchDrawing, ClassesBeginAtTheirLeast) {
  EXPECT_EQ(class_of(0), 0u);
  EXPECT_EQ(class_of(0.25), 1u);
  EXPECT_EQ(class_of(1.99), 3u);
  EXPECT_EQ(class_of(2), kClasses - 1);
  EXPECT_EQ(class_of(1e9), kClasses - 1);
}

TEST(MatchDrawing, CountsWhatIsKept) {
  calibrate::Finding finding = painted_finding();
  finding.matches.clear();
  for (const double pixels : {0.1, 0.3, 0.3, 5.0}) {
    finding.matches.push_back(match_at(finding.camera, 1, 0, pixels / kPixelsPerRadian, 0));
  }
  finding.matches.push_back(finding.matches.back());
  finding.matches.back().kept = false;
  EXPECT_EQ(count_classes(finding), (std::array<std::size_t, kClasses>{1, 2, 0, 0, 1}));
}

// The line in a drawing that has one path of a class.
struct Line {
  double x = 0, y = 0, dx = 0, dy = 0;
};
Line line_in(const std::string& drawing, const std::string& name) {
  Line line;
  const std::size_t at = drawing.find("<path class=\"" + name + "\" d=\"");
  EXPECT_NE(at, drawing.npos) << drawing;
  if (at == drawing.npos) return line;
  EXPECT_EQ(
      std::sscanf(drawing.c_str() + drawing.find("d=", at), "d=\"M%lf %lfl%lf %lf\"", &line.x, &line.y, &line.dx, &line.dy), 4);
  return line;
}

TEST(MatchDrawing, LinesLeadToWhereTheOtherLensSeesIt) {
  calibrate::Finding finding = painted_finding();
  const double around = 1.2 / kPixelsPerRadian, across = -0.9 / kPixelsPerRadian;  // 1.5 pixels
  for (const double t : {-3.0, -1.0, 0.5, 2.0}) {
    finding.matches = {match_at(finding.camera, t, 0.03, around, across)};
    for (int k = 0; k < 2; ++k) {
      const Line line = line_in(draw_matches(finding, k), "c3");
      const cv::Point2d& own = finding.matches[0].match.at[k];
      EXPECT_NEAR(line.x, own.x, 0.051);
      EXPECT_NEAR(line.y, own.y, 0.051);
      const Projector projector(finding.camera, k);
      const ImagePoint other =
          projector.project(Projector(finding.camera, 1 - k)
                                .unproject(finding.matches[0].match.at[1 - k].x, finding.matches[0].match.at[1 - k].y));
      EXPECT_NEAR(line.dx, kStretch * (other.x - own.x), 0.2) << t;
      EXPECT_NEAR(line.dy, kStretch * (other.y - own.y), 0.2) << t;
    }
  }
}

TEST(MatchDrawing, WhatIsWrongIsNotDrawnLong) {
  calibrate::Finding finding = painted_finding();
  finding.matches = {match_at(finding.camera, 1, 0, 50 / kPixelsPerRadian, 0)};
  finding.matches[0].kept = false;
  const Line line = line_in(draw_matches(finding, 0), "wrong");
  const double pixels = std::hypot(line.dx, line.dy) / kStretch / finding.camera.lens[0].p * kPixelsPerRadian;
  EXPECT_LT(pixels, 2 * kLongest);
  EXPECT_GT(pixels, 0.5 * kLongest);
}

}  // namespace
}  // namespace biseam::tool
