// What of a profile's shape has to be known before it is parsed.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace biseam::profile {

struct ShapeFault {
  unsigned line;  // from 1
  std::string what;
};

// The parser, and whoever frees what it made, call themselves once for each level of nesting, so that text from anywhere could
// use up the stack.  Finds brackets within brackets and dotted keys that are deeper than any profile's: at most kMostBrackets
// and kMostDots.  What is no TOML at all may pass; the parser stops there before it goes deeper.
std::optional<ShapeFault> find_deep_nesting(std::string_view text);

inline constexpr int kMostBrackets = 16, kMostDots = 16;

}  // namespace biseam::profile
