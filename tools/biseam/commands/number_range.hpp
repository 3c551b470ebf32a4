#pragma once

#include <CLI/CLI.hpp>
#include <concepts>
#include <limits>
#include <sstream>
#include <string>

namespace biseam::tool {

// A check for an option that takes numbers from low to high, whole ones where T is whole.
template <class T>
CLI::Validator in_range(T low, T high) {
  const auto check = [low, high](const std::string& text) -> std::string {
    T value{};
    if (CLI::detail::lexical_cast(text, value) && value >= low && value <= high) return "";
    std::ostringstream rule;
    rule.precision(std::numeric_limits<double>::digits10);
    rule << "must be a " << (std::integral<T> ? "whole number" : "number") << ", " << low << " to " << high;
    return rule.str();
  };
  return CLI::Validator(check, "");
}

inline constexpr int kMostFrames = 1000000000;  // a year at 30 a second

}  // namespace biseam::tool
