#include "calibration/report/numbers.hpp"

#include <gtest/gtest.h>

#include "tool/calibration/report/painted_finding.hpp"

namespace biseam::tool {
namespace {

int count(const std::string& text, const std::string& piece) {
  int found = 0;
  for (std::size_t at = text.find(piece); at != text.npos; at = text.find(piece, at + 1)) ++found;
  return found;
}

TEST(ReportNumbers, ValuesAreTheProfiles) {
  calibrate::Finding finding = painted_finding();
  finding.settings.lens[0].cx = 474.812;
  finding.settings.lens[1].roll = -0.4221;
  finding.deviations[calibrate::kCx0] = 0.234;
  finding.settings.lens[1].k = {-0.01, 0.002, -0.0031};
  finding.deviations[calibrate::kK3] = 0.0007;
  const std::string table = parameter_table(finding);
  EXPECT_NE(table.find("<td><b>474.812</b> <i>&plusmn;&#8239;0.23</i></td>"), table.npos) << table;
  EXPECT_NE(table.find("<td><b>-0.4221</b>"), table.npos) << table;
  EXPECT_NE(table.find("<td><b>-0.0031</b> <i>&plusmn;&#8239;0.0007</i></td>"), table.npos) << table;
  EXPECT_EQ(count(table, "<tr><th"), 11);
}

TEST(ReportNumbers, EighthWithoutMatchesHasNoNumber) {
  const calibrate::Octants octants = {0.1, 0.3, 0.6, 1.5, 2.5, -1, 0.2, 0.2};
  const std::string ring = octant_ring(octants), table = octant_table(octants);
  EXPECT_EQ(count(ring, "<path"), 8);
  EXPECT_EQ(count(ring, "class=\"none\""), 1);
  EXPECT_EQ(count(ring, "class=\"c0\""), 3);
  for (const std::string& text : {ring, table}) {
    EXPECT_EQ(count(text, "&ndash;"), 1);
    EXPECT_EQ(count(text, ">2.50<"), 1);
  }
  EXPECT_NE(table.find("below, right</th><td>&ndash;"), table.npos) << table;
}

}  // namespace
}  // namespace biseam::tool
