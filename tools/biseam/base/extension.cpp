#include "base/extension.hpp"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace biseam::tool {

std::string extension_of(const std::string& path) {
  std::string text = std::filesystem::path(path).extension().string();
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return char(std::tolower(c)); });
  return text;
}

}  // namespace biseam::tool
