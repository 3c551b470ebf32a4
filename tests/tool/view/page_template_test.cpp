#include <gtest/gtest.h>

#include "view/page.hpp"

namespace biseam::tool {
namespace {

TEST(PageTemplate, HasEveryPlace) {
  const std::string_view page = page_template();
  EXPECT_TRUE(page.starts_with("<!doctype html>"));
  for (const char* place : {"@@TITLE@@", "@@SOURCE@@", "@@CONTENT@@"}) EXPECT_NE(page.find(place), page.npos) << place;
  std::size_t marks = 0;
  for (std::size_t at = page.find("@@"); at != page.npos; at = page.find("@@", at + 2)) ++marks;
  EXPECT_EQ(marks, 2u * 5);  // the source stands in the policy three times
}

}  // namespace
}  // namespace biseam::tool
