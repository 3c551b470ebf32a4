// Text from files, fit for a terminal.
#pragma once

#include <string>
#include <string_view>

namespace biseam::tool {

// The text on one line: control characters, line breaks, what turns the direction of writing or is invisible on purpose, and
// bytes that are no UTF-8 become \n, \t, \x1b, \u{202e} and the like.  Everything else stays.
std::string printable(std::string_view text);

}  // namespace biseam::tool
