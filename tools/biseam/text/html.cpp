#include "text/html.hpp"

namespace biseam::tool {

std::string escape_html(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == '&')
      out += "&amp;";
    else if (c == '<')
      out += "&lt;";
    else if (c == '>')
      out += "&gt;";
    else if (c == '"')
      out += "&quot;";
    else
      out += c;
  }
  return out;
}

}  // namespace biseam::tool
