#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace biseam::test {

// Heap elements between two runs of guard bytes, filled with the same bytes to begin with.
template <class T>
class Guarded {
 public:
  static constexpr unsigned char kGuard = 0xA5;
  static constexpr std::size_t kGuardBytes = 256;

  explicit Guarded(std::size_t count) : bytes_(count * sizeof(T)), block_(bytes_ + 2 * kGuardBytes, kGuard) {}

  T* data() { return reinterpret_cast<T*>(block_.data() + kGuardBytes); }
  std::size_t bytes() const { return bytes_; }

  bool guards_intact() const {
    for (std::size_t i = 0; i < kGuardBytes; ++i) {
      if (block_[i] != kGuard || block_[kGuardBytes + bytes_ + i] != kGuard) return false;
    }
    return true;
  }

  // No byte of [first, end) was written, or only with the guard's own value.
  bool untouched(std::size_t first_byte, std::size_t end_byte) const {
    for (std::size_t i = first_byte; i < end_byte; ++i) {
      if (block_[kGuardBytes + i] != kGuard) return false;
    }
    return true;
  }

 private:
  std::size_t bytes_;
  std::vector<unsigned char> block_;
};

// A copy on a heap block of exactly its size, so that the address sanitizer sees a read past its end.
template <class T>
std::unique_ptr<T[]> exact_copy(const std::vector<T>& values) {
  std::unique_ptr<T[]> copy(new T[values.size()]);
  if (!values.empty()) std::memcpy(copy.get(), values.data(), values.size() * sizeof(T));
  return copy;
}

using Random = std::mt19937;

inline int pick(Random& random, int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }
inline float pick(Random& random, float low, float high) { return std::uniform_real_distribution<float>(low, high)(random); }

}  // namespace biseam::test
