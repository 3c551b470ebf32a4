#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "base/failure.hpp"

namespace biseam::test {

// The exit code and the text of the failure that work ends in.
template <class Work>
std::pair<tool::ExitCode, std::string> failure_of(Work work) {
  try {
    work();
  } catch (const tool::Failure& failure) {
    return {failure.code(), failure.what()};
  }
  ADD_FAILURE() << "no failure";
  return {tool::ExitCode::done, ""};
}

inline void expect_one_line_naming(const std::string& text, const std::string& name) {
  EXPECT_NE(text.find(name), std::string::npos) << text;
  EXPECT_EQ(text.find('\n'), std::string::npos) << text;
}

}  // namespace biseam::test
