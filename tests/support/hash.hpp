#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace biseam::test {

// FNV-1a over the bytes of plain values, least significant byte first on every host the tests run on.
class Hash {
 public:
  template <class T>
  void add(const T& value) {
    static_assert(std::is_arithmetic_v<T>);
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(&value);
    for (std::size_t i = 0; i < sizeof value; ++i) hash_ = (hash_ ^ bytes[i]) * 0x100000001b3u;
  }
  std::uint64_t value() const { return hash_; }

 private:
  std::uint64_t hash_ = 0xcbf29ce484222325u;
};

}  // namespace biseam::test
