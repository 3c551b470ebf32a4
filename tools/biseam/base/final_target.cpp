#include "base/final_target.hpp"

#include <filesystem>

namespace biseam::tool {

std::string final_target(const std::string& path) {
  namespace fs = std::filesystem;
  constexpr int kMostLinks = 40;  // as the kernel follows
  std::error_code trouble;
  const fs::path whole = fs::canonical(path, trouble);
  if (!trouble) return whole.string();
  fs::path at = path;
  for (int links = 0; links < kMostLinks && fs::is_symlink(fs::symlink_status(at, trouble)); ++links) {
    const fs::path next = fs::read_symlink(at, trouble);
    if (trouble) break;
    at = at.parent_path() / next;  // next alone when it is absolute
  }
  const fs::path folder = fs::canonical(at.has_parent_path() ? at.parent_path() : ".", trouble);
  return (trouble ? at : folder / at.filename()).string();
}

}  // namespace biseam::tool
