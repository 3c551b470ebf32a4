#pragma once

#include <cstddef>
#include <cstdint>

namespace biseam::test {

// Where a buffer lies in its pages: amid poison, or against a page at one end that can't be touched.
enum class Placement { amid_poison, at_start, at_end };

// Bytes between pages without access.  What the pages hold around the bytes is poison.
class GuardedBuffer {
 public:
  // shift: bytes off a 128-byte boundary, when placed amid poison.
  GuardedBuffer(std::size_t bytes, Placement placement, std::size_t shift);
  GuardedBuffer(GuardedBuffer&& other) noexcept;
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;
  ~GuardedBuffer();

  uint8_t* data() { return data_; }
  const uint8_t* data() const { return data_; }
  std::size_t size() const { return bytes_; }
  bool poison_is_whole() const;

 private:
  uint8_t* mapping_;
  std::size_t mapped_, bytes_;
  uint8_t* data_;
};

}  // namespace biseam::test
