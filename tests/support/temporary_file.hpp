#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace biseam::test {

// A file name of its own, removed at the end.
class TemporaryFile {
 public:
  TemporaryFile() : path_((std::filesystem::temp_directory_path() / "biseam-test-XXXXXX").string()) {
    const int descriptor = mkstemp(path_.data());
    if (descriptor >= 0) close(descriptor);
  }
  explicit TemporaryFile(const std::vector<uint8_t>& bytes) : TemporaryFile() {
    std::ofstream(path_, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() { std::filesystem::remove(path_); }

  const char* path() const { return path_.c_str(); }
  std::vector<uint8_t> bytes() const {
    std::ifstream in(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }

 private:
  std::string path_;
};

inline long open_descriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}

}  // namespace biseam::test
