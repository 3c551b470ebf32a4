// Text on web pages.
#pragma once

#include <string>
#include <string_view>

namespace biseam::tool {

// As text, or as an attribute's value between double quotes.
std::string escape_html(std::string_view text);

}  // namespace biseam::tool
