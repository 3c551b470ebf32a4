// Times and rates as people read and write them.
#pragma once

#include <cstdint>
#include <string>

extern "C" {
#include <libavutil/rational.h>
}

namespace biseam::tool {

// "1:02:03.456"
std::string time_text(std::int64_t time, AVRational base);

// Microseconds from seconds or [HH:]MM:SS[.frac], a minus before it allowed; throws Failure (usage) naming the option.
std::int64_t parse_time(const std::string& option, const std::string& text);

// Frames per second, "25", "29.97" or "30000/1001"; throws Failure (usage) naming the option.
AVRational parse_rate(const std::string& option, const std::string& text);

}  // namespace biseam::tool
