// Choices of a target, made from the bytes of a fuzzer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace biseam::fuzz {

// Hands out the bytes from the first to the last; zeros after them, so that an empty input is the plainest choice.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

  std::size_t left() const { return left_; }

  std::uint8_t byte() {
    if (left_ == 0) return 0;
    --left_;
    return *data_++;
  }

  std::uint32_t word() {
    std::uint32_t value = 0;
    for (int k = 0; k < 4; ++k) value |= std::uint32_t{byte()} << (8 * k);
    return value;
  }

  // low for a zero byte; high - low is below 256.
  int between(int low, int high) { return low + byte() % (high - low + 1); }

  bool flag() { return (byte() & 1) != 0; }

  // What is left, as text.
  std::string rest() {
    std::string text(reinterpret_cast<const char*>(data_), left_);
    left_ = 0;
    return text;
  }

 private:
  const std::uint8_t* data_;
  std::size_t left_;
};

// One line that can be shown: not empty, no line break.
inline bool is_one_line(std::string_view text) { return !text.empty() && text.find('\n') == text.npos; }

}  // namespace biseam::fuzz
