#include "calibration/report/page.hpp"

#include <gtest/gtest.h>

#include <algorithm>

#include "tool/calibration/report/painted_finding.hpp"

namespace biseam::tool {
namespace {

std::string page_of(const std::vector<std::string>& files, const std::string& profile = "cx = 1\n") {
  return report_page(painted_finding(), {&photographed_pair(), 1}, files, profile);
}

// The beginnings of what lies between a piece of text and the next double quote.
std::vector<std::string> all(const std::string& text, const std::string& piece) {
  std::vector<std::string> found;
  for (std::size_t at = text.find(piece); at != text.npos; at = text.find(piece, at + 1)) {
    const std::size_t begin = at + piece.size();
    found.push_back(text.substr(begin, std::min<std::size_t>(text.find('"', begin) - begin, 60)));
  }
  return found;
}

TEST(ReportPage, NothingIsFetchedAndNothingRuns) {
  const std::string page = page_of({"a.png"});
  EXPECT_NE(page.find("content=\"default-src 'none'; style-src 'unsafe-inline'; img-src data:; "), page.npos);
  EXPECT_EQ(page.find("<script"), page.npos);
  EXPECT_EQ(page.find("http://"), page.npos);
  EXPECT_EQ(page.find("https://"), page.npos);
  for (const char* attribute : {" src=\"", " href=\""}) {
    for (const std::string& address : all(page, attribute)) EXPECT_EQ(address.rfind("data:", 0), 0u) << address;
  }
  const std::vector<std::string> shown = all(page, " alt=\"");
  EXPECT_EQ(shown.size(), 12u);  // two seams, eight strips, two circles
  EXPECT_EQ(all(page, "<img ").size(), shown.size());
  for (const std::string& text : shown) EXPECT_NE(text, "");
}

TEST(ReportPage, NamesAndTheProfileAreTextAndNothingElse) {
  const std::string page = page_of({"folder/<i>&\"\n.png", "\xe2\x80\xae.png"}, "# <b>\n");
  EXPECT_NE(page.find("<title>Calibration of &lt;i&gt;&amp;&quot;\\n.png</title>"), page.npos);
  EXPECT_EQ(page.find("folder"), page.npos);
  EXPECT_EQ(page.find("\xe2\x80\xae"), page.npos);
  EXPECT_NE(page.find("<pre># &lt;b&gt;\n</pre>"), page.npos);
}

TEST(ReportPage, TellsWhetherABaselineShows) {
  EXPECT_NE(page_of({"a.png"}).find("none shows"), std::string::npos);
  calibrate::Finding finding = painted_finding();
  finding.baseline = calibrate::Baseline{0.02, 0.001};
  const std::string page = report_page(finding, {&photographed_pair(), 1}, {"a.png"}, "");
  EXPECT_NE(page.find("<dd>2.00 %<small>&plusmn;&#8239;0.10 % of the distance"), page.npos);
  EXPECT_NE(page.find("30 mm if that is 1.5 m away"), page.npos);
}

}  // namespace
}  // namespace biseam::tool
