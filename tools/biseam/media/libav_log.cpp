#include "media/libav_log.hpp"

#include <cstdarg>
#include <mutex>

#include "media/libav.hpp"

namespace biseam::tool {
namespace {

std::mutex mutex;
std::string first;  // complaint

void keep(void* source, int level, const char* format, va_list values) {
  if (level > AV_LOG_ERROR) return;
  char line[512] = "";
  int with_prefix = 0;
  av_log_format_line2(source, level, format, values, line, sizeof line, &with_prefix);
  std::string text = line;
  while (!text.empty() && (text.back() == '\n' || text.back() == '.' || text.back() == ' ')) text.pop_back();
  const std::lock_guard lock(mutex);
  if (first.empty()) first = text;
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
