#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace biseam::test {

// A buffer between two guards, filled with poison.  Writes past either end are reported when it ends.
template <class T>
class GuardedBlock {
 public:
  explicit GuardedBlock(std::size_t count, uint8_t poison = 0xA5) : count_(count), all_(count + 2 * kGuard) {
    std::memset(all_.data(), poison, all_.size() * sizeof(T));
    guard_.assign(all_.begin(), all_.begin() + kGuard);
  }
  GuardedBlock(const GuardedBlock&) = delete;
  GuardedBlock& operator=(const GuardedBlock&) = delete;
  ~GuardedBlock() {
    EXPECT_EQ(0, std::memcmp(all_.data(), guard_.data(), kGuard * sizeof(T))) << "written before the block";
    EXPECT_EQ(0, std::memcmp(data() + count_, guard_.data(), kGuard * sizeof(T))) << "written past the block";
  }

  T* data() { return all_.data() + kGuard; }
  T& operator[](std::size_t i) { return data()[i]; }
  std::size_t size() const { return count_; }
  std::vector<T> values() { return std::vector<T>(data(), data() + count_); }

 private:
  static constexpr std::size_t kGuard = 256;
  std::size_t count_;
  std::vector<T> all_, guard_;
};

}  // namespace biseam::test
