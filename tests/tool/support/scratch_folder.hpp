// A folder of its own for each test, removed afterwards.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace biseam::test {

class ScratchFolder {
 public:
  ScratchFolder() {
    std::string name = testing::TempDir() + "biseam-XXXXXX";
    if (!mkdtemp(name.data())) ADD_FAILURE() << "no scratch folder at " << name;
    path_ = name;
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(path_, ignored);
  }

  std::string operator/(const std::string& name) const { return (path_ / name).string(); }

  const std::filesystem::path& path() const { return path_; }

  std::vector<std::string> names() const {
    std::vector<std::string> all;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) all.push_back(entry.path().filename().string());
    std::sort(all.begin(), all.end());
    return all;
  }

 private:
  std::filesystem::path path_;
};

inline std::string read_bytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return std::move(bytes).str();
}

inline void write_bytes(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
}

}  // namespace biseam::test
