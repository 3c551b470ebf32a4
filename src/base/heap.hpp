#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <type_traits>

namespace biseam {

// A block of plain values from the C heap.  Null when memory is short: test it before use.
template <class T>
class HeapArray {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  static HeapArray none() { return HeapArray(nullptr); }
  static HeapArray plain(std::size_t count) {
    return HeapArray(count > SIZE_MAX / sizeof(T) ? nullptr : std::malloc(count * sizeof(T)));
  }
  static HeapArray zeroed(std::size_t count) { return HeapArray(std::calloc(count, sizeof(T))); }

  HeapArray(HeapArray&& other) noexcept : data_(other.release()) {}
  HeapArray& operator=(HeapArray&& other) noexcept {
    if (this != &other) {
      std::free(data_);
      data_ = other.release();
    }
    return *this;
  }
  ~HeapArray() { std::free(data_); }

  explicit operator bool() const { return data_ != nullptr; }
  T* data() { return data_; }
  const T* data() const { return data_; }
  T& operator[](std::size_t i) { return data_[i]; }
  const T& operator[](std::size_t i) const { return data_[i]; }

  // Hands the block to the caller, who frees it.
  T* release() {
    T* data = data_;
    data_ = nullptr;
    return data;
  }

 private:
  explicit HeapArray(void* data) : data_(static_cast<T*>(data)) {}
  T* data_;
};

}  // namespace biseam
