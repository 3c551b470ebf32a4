#include "profile/shape.hpp"

#include <algorithm>

namespace biseam::profile {
namespace {

std::size_t count_quotes(std::string_view text, std::size_t at, char quote) {
  const std::size_t end = text.find_first_not_of(quote, at);
  return (end == text.npos ? text.size() : end) - at;
}

// Behind the string that begins at the quote text[at].  Three quotes begin one that goes over lines; up to two quotes stand
// inside it before the three that end it.  A string of one line that isn't closed ends at the line's end, where the parser
// stops.
std::size_t skip_string(std::string_view text, std::size_t at) {
  const char quote = text[at];
  const bool escapes = quote == '"', lines = count_quotes(text, at, quote) >= 3;
  for (at += lines ? 3 : 1; at < text.size(); ++at) {
    if (escapes && text[at] == '\\') {
      ++at;
    } else if (text[at] == quote) {
      const std::size_t quotes = count_quotes(text, at, quote);
      if (!lines) return at + 1;
      if (quotes >= 3) return at + std::min<std::size_t>(quotes, 5);
      at += quotes - 1;
    } else if (text[at] == '\n' && !lines) {
      return at;
    }
  }
  return text.size();
}

}  // namespace

std::optional<ShapeFault> find_deep_nesting(std::string_view text) {
  int brackets = 0, dots = 0;
  const auto fault = [&](std::size_t at, const char* what, int most) {
    const auto line = unsigned(std::count(text.begin(), text.begin() + std::ptrdiff_t(at), '\n') + 1);
    return ShapeFault{line, what + std::to_string(most)};
  };
  for (std::size_t at = 0; at < text.size();) {
    const char c = text[at];
    if (c == '"' || c == '\'') {
      at = skip_string(text, at);
      continue;
    }
    if (c == '#') {
      at = std::min(text.find('\n', at), text.size());
      continue;
    }
    if (c == '[' || c == '{') ++brackets;
    if (c == ']' || c == '}') brackets = std::max(brackets - 1, 0);
    if (c == '.') ++dots;
    if (c == '[' || c == '{' || c == ',' || c == '=' || c == '\n') dots = 0;
    if (brackets > kMostBrackets) return fault(at, "values are nested too deeply, the most is ", kMostBrackets);
    if (dots > kMostDots) return fault(at, "a key has too many dots, the most is ", kMostDots);
    ++at;
  }
  return std::nullopt;
}

}  // namespace biseam::profile
