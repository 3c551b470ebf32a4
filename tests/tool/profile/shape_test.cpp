#include "profile/shape.hpp"

#include <gtest/gtest.h>

#include <string>

namespace biseam::profile {
namespace {

std::string repeated(const std::string& piece, int times) {
  std::string text;
  for (int k = 0; k < times; ++k) text += piece;
  return text;
}

constexpr const char* kNested = "values are nested too deeply, the most is 16";
constexpr const char* kDotted = "a key has too many dots, the most is 16";

void expect_fault(const std::string& text, unsigned line, const std::string& what) {
  const auto fault = find_deep_nesting(text);
  ASSERT_TRUE(fault) << text;
  EXPECT_EQ(fault->line, line) << text;
  EXPECT_EQ(fault->what, what) << text;
}

void expect_flat(const std::string& text) { EXPECT_FALSE(find_deep_nesting(text)) << text; }

TEST(DeepNesting, SixteenBracketsAreTheMost) {
  for (const char* bracket : {"[", "{", "[{"}) {
    const int each = int(std::string(bracket).size());
    expect_flat("a = " + repeated(bracket, kMostBrackets / each));
    expect_fault("a = " + repeated(bracket, kMostBrackets / each) + "[", 1, kNested);
  }
}

TEST(DeepNesting, BracketsOneAfterTheOtherAreNotDeep) {
  expect_flat("a = [" + repeated("[{}],", 1000) + "]");
  expect_flat(repeated("[table]\n", 1000));
  expect_fault("a = [" + repeated("[{}],", 1000) + repeated("[", kMostBrackets) + "]", 1, kNested);
}

// Ends without beginnings, which the parser refuses, don't make room for more.
TEST(DeepNesting, SurplusEndsCountForNothing) {
  expect_flat(repeated("]", 100) + repeated("[", kMostBrackets));
  expect_fault(repeated("]}", 100) + repeated("[", kMostBrackets + 1), 1, kNested);
}

TEST(DeepNesting, SixteenDotsInAKeyAreTheMost) {
  expect_flat(repeated("a.", kMostDots) + "a = 1");
  expect_fault(repeated("a.", kMostDots + 1) + "a = 1", 1, kDotted);
  expect_flat("a = [" + repeated("1.5, ", 1000) + "]");
  expect_flat(repeated("a.b.c = 1.25\n", 1000));
}

TEST(DeepNesting, TheLineIsThatOfTheFirstTooMany) {
  expect_fault("\n\n\na = " + repeated("[\n", kMostBrackets) + "[", 4 + unsigned(kMostBrackets), kNested);
  expect_fault("# one\r\n'''\n\n''' = 1\n" + repeated("a.", 99), 5, kDotted);
}

TEST(DeepNesting, StringsAndCommentsHoldWhatTheyLike) {
  const std::string much = repeated("[.", 100);
  for (const auto& [open, close] :
       {std::pair{"\"", "\""}, {"'", "'"}, {"\"\"\"", "\"\"\""}, {"'''", "'''"}, {"\"\\\"", "\""}, {"\"\"\"\\\"", "\"\"\""}}) {
    expect_flat("a = " + (open + much + close) + "\nb = [[1]]");
    expect_fault("a = " + (open + much + close) + "\nb = " + much, 2, kNested);
  }
  expect_flat("# " + much);
  expect_fault("# " + much + "\n" + much, 2, kNested);
}

TEST(DeepNesting, AStringThatIsNotClosedEndsWithItsLineOrTheText) {
  const std::string much = repeated("[", 100);
  for (const char* quote : {"\"", "'"}) {
    expect_flat("a = " + (quote + much));
    expect_fault("a = " + (quote + much) + "\n" + much, 2, kNested);
  }
  for (const char* quotes : {"\"\"\"", "'''"}) expect_flat("a = " + (quotes + much) + "\n" + much);
}

TEST(DeepNesting, TextsOfNothingAreFlat) {
  for (const char* text : {"", "\n", "#", "\"", "'", "\"\"\"", "\"\\", "'''''", "]", "."}) expect_flat(text);
}

}  // namespace
}  // namespace biseam::profile
