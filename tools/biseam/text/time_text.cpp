#include "text/time_text.hpp"

extern "C" {
#include <libavutil/mathematics.h>
#include <libavutil/parseutils.h>
}

#include <cstdio>
#include <cstdlib>

#include "base/failure.hpp"

namespace biseam::tool {

std::string time_text(std::int64_t time, AVRational base) {
  const std::int64_t total = av_rescale_q(time, base, {1, 1000}), size = std::abs(total);
  char text[64];
  std::snprintf(text, sizeof text, "%s%lld:%02d:%02d.%03d", total < 0 ? "-" : "", static_cast<long long>(size / 3600000),
                int(size / 60000 % 60), int(size / 1000 % 60), int(size % 1000));
  return text;
}

std::int64_t parse_time(const std::string& option, const std::string& text) {
  std::int64_t time = 0;
  if (av_parse_time(&time, text.c_str(), 1) >= 0) return time;
  throw Failure(ExitCode::usage, option + ": '" + text + "': seconds or [HH:]MM:SS[.frac] are wanted");
}

AVRational parse_rate(const std::string& option, const std::string& text) {
  AVRational rate;
  if (av_parse_video_rate(&rate, text.c_str()) >= 0) return rate;
  throw Failure(ExitCode::usage, option + ": '" + text + "': frames per second are wanted, 25 or 30000/1001");
}

}  // namespace biseam::tool
