#include "base/memory.hpp"

#include <algorithm>
#include <fstream>
#include <limits>

namespace biseam::tool {
namespace {

constexpr std::uint64_t kAny = std::numeric_limits<std::uint64_t>::max();

// "max" and a missing file are no number.
std::uint64_t number_in(const std::string& path) {
  std::uint64_t number = 0;
  return std::ifstream(path) >> number ? number : kAny;
}

std::uint64_t available_in_system(const std::string& path) {
  std::ifstream file(path);
  std::uint64_t kibibytes = 0;
  for (std::string word; file >> word;) {
    if (word == "MemAvailable:" && file >> kibibytes) return kibibytes * 1024;
  }
  return kAny;
}

// Of the group and of those around it, the tightest.
std::uint64_t left_in_groups(const std::string& mount, std::string group, const char* limit_name, const char* used_name) {
  std::uint64_t least = kAny;
  for (;;) {
    const std::uint64_t limit = number_in(mount + group + limit_name), used = number_in(mount + group + used_name);
    if (limit != kAny && used != kAny) least = std::min(least, limit - std::min(limit, used));
    if (group.empty()) return least;
    group.resize(group.find_last_of('/'));
  }
}

}  // namespace

std::uint64_t available_memory(const std::string& root) {
  std::uint64_t bytes = available_in_system(root + "/proc/meminfo");
  std::ifstream groups(root + "/proc/self/cgroup");
  for (std::string line; std::getline(groups, line);) {
    const std::size_t name = line.find(':'), path = line.find(":/");
    if (name == line.npos || path == line.npos) continue;
    std::string group = line.substr(path + 1);
    if (group == "/") group.clear();
    if (line.starts_with("0::")) {
      bytes = std::min(bytes, left_in_groups(root + "/sys/fs/cgroup", group, "/memory.max", "/memory.current"));
    } else if (line.find("memory", name) < path) {
      bytes = std::min(
          bytes, left_in_groups(root + "/sys/fs/cgroup/memory", group, "/memory.limit_in_bytes", "/memory.usage_in_bytes"));
    }
  }
  return bytes;
}

}  // namespace biseam::tool
