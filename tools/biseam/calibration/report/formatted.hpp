// Numbers in text.
#pragma once

#include <cstdio>
#include <string>

namespace biseam::tool {

// As printf() does it; up to 599 characters.
template <class... Numbers>
std::string formatted(const char* format, Numbers... numbers) {
  char line[600];
  std::snprintf(line, sizeof line, format, numbers...);
  return line;
}

}  // namespace biseam::tool
