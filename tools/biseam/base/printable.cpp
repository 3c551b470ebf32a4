#include "base/printable.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>

namespace biseam::tool {
namespace {

struct Letter {
  std::uint32_t code;
  std::size_t bytes;  // 0: text does not begin with UTF-8
};

// Overlong forms, halves of surrogate pairs and what is beyond Unicode are no UTF-8.
Letter first_letter(std::string_view text) {
  const auto byte = [&](std::size_t k) { return std::uint32_t(static_cast<unsigned char>(text[k])); };
  const std::uint32_t lead = byte(0);
  if (lead < 0x80) return {lead, 1};
  const std::size_t bytes = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc2 || lead > 0xf4 || text.size() < bytes) return {0, 0};
  std::uint32_t code = lead & (0x7fu >> bytes);
  for (std::size_t k = 1; k < bytes; ++k) {
    if ((byte(k) & 0xc0) != 0x80) return {0, 0};
    code = code << 6 | (byte(k) & 0x3f);
  }
  constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = code >= 0xd800 && code <= 0xdfff;
  return code < kLeast[bytes] || code > 0x10ffff || surrogate ? Letter{0, 0} : Letter{code, bytes};
}

bool is_harmful(std::uint32_t code) {
  struct Range {
    std::uint32_t first, last;
  };
  constexpr Range kHarmful[] = {
      {0x00, 0x1f},        // control characters
      {0x7f, 0x9f},        // the same, and those of 8 bits
      {0x61c, 0x61c},      // marks of direction ...
      {0x200b, 0x200b},    // a space without width
      {0x200e, 0x200f},    // ...
      {0x2028, 0x202e},    // line and paragraph breaks, embeddings and overrides of direction
      {0x2060, 0x206f},    // invisible operators, isolates of direction
      {0xfeff, 0xfeff},    // the byte order mark
      {0xfff9, 0xfffb},    // annotations
      {0xe0000, 0xe007f},  // tags
  };
  return std::any_of(std::begin(kHarmful), std::end(kHarmful), [=](Range r) { return code >= r.first && code <= r.last; });
}

std::string escaped(std::uint32_t code) {
  if (code == '\n') return "\\n";
  if (code == '\r') return "\\r";
  if (code == '\t') return "\\t";
  char text[16];
  std::snprintf(text, sizeof text, code < 0x80 ? "\\x%02x" : "\\u{%x}", unsigned(code));
  return text;
}

std::string escaped_byte(char byte) {
  char text[8];
  std::snprintf(text, sizeof text, "\\x%02x", unsigned(static_cast<unsigned char>(byte)));
  return text;
}

}  // namespace

std::string printable(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const Letter letter = first_letter(text);
    if (letter.bytes == 0) {
      out += escaped_byte(text[0]);
    } else if (is_harmful(letter.code)) {
      out += escaped(letter.code);
    } else {
      out += text.substr(0, letter.bytes);
    }
    text.remove_prefix(std::max<std::size_t>(letter.bytes, 1));
  }
  return out;
}

}  // namespace biseam::tool
