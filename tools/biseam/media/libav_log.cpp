#include "media/libav_log.hpp"

#include <algorithm>
#include <cstdarg>
#include <mutex>

#include "media/libav.hpp"

namespace biseam::tool {
namespace {

std::mutex mutex;
std::string first;  // complaint

// One line of whole sentences: what ends with a colon announces further lines.
std::string tidied(std::string text) {
  const auto drop_end = [&text](const char* letters) { text.resize(text.find_last_not_of(letters) + 1); };
  drop_end("\n. ");
  std::replace(text.begin(), text.end(), '\n', ' ');
  const std::size_t sentence = text.rfind(". ");
  if (text.ends_with(':') && sentence != std::string::npos) text.resize(sentence);
  drop_end(":. ");
  return text;
}

void keep(void* source, int level, const char* format, va_list values) {
  if (level > AV_LOG_ERROR) return;
  char line[512] = "";
  int with_prefix = 0;
  av_log_format_line2(source, level, format, values, line, sizeof line, &with_prefix);
  const std::lock_guard lock(mutex);
  if (first.empty()) first = tidied(line);
}

}  // namespace

LibavLog::LibavLog() {
  {
    const std::lock_guard lock(mutex);
    first.clear();
  }
  av_log_set_callback(keep);
}

LibavLog::~LibavLog() { av_log_set_callback(av_log_default_callback); }

std::string LibavLog::reason(int code) const {
  const std::lock_guard lock(mutex);
  return first.empty() ? libav_reason(code) : first;
}

}  // namespace biseam::tool
