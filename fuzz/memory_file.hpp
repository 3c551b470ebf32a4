#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/expect.hpp"

namespace biseam::fuzz {

// A file in memory that has a name as long as this lives.
class MemoryFile {
 public:
  MemoryFile(const std::uint8_t* data, std::size_t size) : descriptor_(memfd_create("fuzz", MFD_CLOEXEC)) {
    expect(descriptor_ >= 0, "a file can be made");
    expect(size == 0 || ::write(descriptor_, data, size) == ssize_t(size), "a file can be written");
    ::lseek(descriptor_, 0, SEEK_SET);
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { ::close(descriptor_); }

  int descriptor() const { return descriptor_; }
  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

}  // namespace biseam::fuzz
