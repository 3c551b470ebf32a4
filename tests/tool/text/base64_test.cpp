#include "text/base64.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace biseam::tool {
namespace {

std::string encode(const std::string& text) {
  return base64({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

// Bit by bit, from the digits' definition.
std::vector<std::uint8_t> decode(const std::string& text) {
  const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::vector<bool> bits;
  for (const char c : text.substr(0, text.find('='))) {
    for (int k = 5; k >= 0; --k) bits.push_back((digits.find(c) >> k & 1) != 0);
  }
  std::vector<std::uint8_t> bytes(bits.size() / 8);
  for (std::size_t k = 0; k < bytes.size() * 8; ++k) bytes[k / 8] = std::uint8_t(bytes[k / 8] << 1 | int(bits[k]));
  return bytes;
}

TEST(Base64, TextsThatEverybodyKnows) {
  EXPECT_EQ(encode(""), "");
  EXPECT_EQ(encode("f"), "Zg==");
  EXPECT_EQ(encode("fo"), "Zm8=");
  EXPECT_EQ(encode("foo"), "Zm9v");
  EXPECT_EQ(encode("foob"), "Zm9vYg==");
  EXPECT_EQ(encode("fooba"), "Zm9vYmE=");
  EXPECT_EQ(encode("foobar"), "Zm9vYmFy");
}

TEST(Base64, BytesOfAnyNumberAndValueComeBack) {
  for (std::size_t count = 0; count < 260; ++count) {
    std::vector<std::uint8_t> bytes(count);
    for (std::size_t k = 0; k < count; ++k) bytes[k] = std::uint8_t(k * 167 + count);
    const std::string text = base64(bytes);
    EXPECT_EQ(text.size(), (count + 2) / 3 * 4);
    EXPECT_EQ(decode(text), bytes) << count;
  }
}

}  // namespace
}  // namespace biseam::tool
