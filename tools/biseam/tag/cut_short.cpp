#include "tag/cut_short.hpp"

#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <optional>

#include "base/byte_source.hpp"
#include "base/failure.hpp"

namespace biseam::tool {
namespace {

class Walk {
 public:
  explicit Walk(const std::string& path) : source_(path) {
    if (fseeko(source_.stream(), 0, SEEK_END) != 0) throw system_failure(ExitCode::input, path, "can't be read");
    size_ = std::uint64_t(ftello(source_.stream()));
    std::rewind(source_.stream());
  }

  std::uint64_t at() const { return at_; }
  std::uint64_t left() const { return size_ - at_; }

  // A number of so many bytes, the highest first; none past the end.
  std::optional<std::uint64_t> number(int bytes) {
    std::uint64_t value = 0;
    for (int k = 0; k < bytes; ++k) {
      const int byte = std::fgetc(source_.stream());
      if (byte == EOF) return std::nullopt;
      value = value << 8 | std::uint64_t(byte);
      ++at_;
    }
    return value;
  }

  // False when that is past the end.
  bool skip(std::uint64_t bytes) {
    if (bytes > left()) return false;
    at_ += bytes;
    return fseeko(source_.stream(), off_t(at_), SEEK_SET) == 0;
  }

 private:
  ByteSource source_;
  std::uint64_t size_ = 0, at_ = 0;
};

// Boxes: size, name, content; size 1: a longer one follows the name; 0: up to the end.
bool is_mov_cut(Walk& file) {
  while (file.left() > 0) {
    const std::uint64_t start = file.at();
    std::optional<std::uint64_t> size = file.number(4);
    if (size == std::uint64_t(0)) return false;
    if (!size || !file.number(4)) return true;
    if (size == std::uint64_t(1)) size = file.number(8);
    const std::uint64_t head = file.at() - start;
    if (!size || *size < head || !file.skip(*size - head)) return true;
  }
  return false;
}

// An identifier or a size: as many bytes more as its first has leading zeros.  The marker of the length is part of identifiers.
std::optional<std::uint64_t> ebml_number(Walk& file, bool keeps_marker, bool& is_unknown) {
  const std::optional<std::uint64_t> first = file.number(1);
  if (!first || *first == 0) return std::nullopt;
  const int more = std::countl_zero(std::uint8_t(*first));
  const std::optional<std::uint64_t> rest = file.number(more);
  if (!rest) return std::nullopt;
  const std::uint64_t value = *first << (8 * more) | *rest;
  const std::uint64_t ones = (std::uint64_t(1) << (7 * (more + 1))) - 1;
  is_unknown = (value & ones) == ones;
  return keeps_marker ? value : value & ones;
}

bool is_matroska_cut(Walk& file) {
  while (file.left() > 0) {
    bool is_unknown = false;
    const std::optional<std::uint64_t> name = ebml_number(file, true, is_unknown);
    const std::optional<std::uint64_t> size = name ? ebml_number(file, false, is_unknown) : std::nullopt;
    if (!size) return true;
    if (is_unknown) return false;  // a recording of unknown length lasts to the end
    if (!file.skip(*size)) return true;
  }
  return false;
}

}  // namespace

bool is_cut_short(const std::string& path) {
  constexpr std::uint64_t kMatroska = 0x1a45dfa3;
  const bool is_matroska = Walk(path).number(4) == kMatroska;
  Walk file(path);
  return is_matroska ? is_matroska_cut(file) : is_mov_cut(file);
}

}  // namespace biseam::tool
