#include "view/byte_range.hpp"

#include <algorithm>
#include <charconv>
#include <optional>

namespace biseam::tool {
namespace {

constexpr std::uint64_t kHuge = ~std::uint64_t(0);

// Digits only; what 64 bits can't hold counts as the largest number.
std::optional<std::uint64_t> parse_number(std::string_view text) {
  if (text.empty() || text.find_first_not_of("0123456789") != text.npos) return std::nullopt;
  std::uint64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc::result_out_of_range ? kHuge : value;
}

ByteRange part(std::uint64_t first, std::uint64_t count) {
  if (count == 0) return {RangeKind::outside};
  return {RangeKind::part, first, count};
}

}  // namespace

ByteRange parse_range(std::string_view header, std::uint64_t file_bytes) {
  constexpr std::string_view kUnit = "bytes=";
  if (!header.starts_with(kUnit)) return {};
  header.remove_prefix(kUnit.size());
  const std::size_t dash = header.find('-');
  if (dash == header.npos) return {};
  const std::string_view from = header.substr(0, dash), to = header.substr(dash + 1);
  const std::optional<std::uint64_t> first = parse_number(from), last = parse_number(to);
  if (from.empty() && last) {
    const std::uint64_t count = std::min(*last, file_bytes);
    return part(file_bytes - count, count);
  }
  if (!first || (!last && !to.empty()) || (last && *last < *first)) return {};
  if (*first >= file_bytes) return {RangeKind::outside};
  return part(*first, std::min(last.value_or(kHuge), file_bytes - 1) - *first + 1);
}

}  // namespace biseam::tool
