#include "text/base64.hpp"

namespace biseam::tool {
namespace {

constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// 1 to 3 bytes as 4 digits.
void append_group(std::string& text, std::span<const std::uint8_t> bytes) {
  std::uint32_t bits = 0;
  for (std::size_t k = 0; k < 3; ++k) bits = bits << 8 | (k < bytes.size() ? bytes[k] : 0u);
  for (std::size_t k = 0; k < 4; ++k) text += k <= bytes.size() ? kDigits[bits >> (18 - 6 * k) & 63] : '=';
}

}  // namespace

std::string base64(std::span<const std::uint8_t> bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (; bytes.size() > 3; bytes = bytes.subspan(3)) append_group(text, bytes.first(3));
  if (!bytes.empty()) append_group(text, bytes);
  return text;
}

}  // namespace biseam::tool
