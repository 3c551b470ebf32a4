#include "stitch/progress.hpp"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace biseam::tool {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kTerminalPause = 200ms, kLogPause = 10s;

}  // namespace

Progress::Progress(std::optional<std::int64_t> frames, Now now)
    : frames_(frames), now_(std::move(now)), terminal_(::isatty(STDERR_FILENO) != 0), start_(now_()), last_(start_) {}

Progress::~Progress() {
  if (shown_ && terminal_) std::fputs("\r\x1b[K", stderr);
}

void Progress::count(std::int64_t done) {
  const auto now = now_();
  if (now - last_ < (terminal_ ? kTerminalPause : kLogPause)) return;
  last_ = now;
  shown_ = true;
  std::fprintf(stderr, terminal_ ? "\r%s\x1b[K" : "biseam: %s\n", line(done).c_str());
  std::fflush(stderr);
}

double Progress::seconds() const { return std::chrono::duration<double>(now_() - start_).count(); }

std::string Progress::line(std::int64_t done) const {
  const double rate = double(done) / std::max(seconds(), 1e-9);
  char text[128];
  if (!frames_ || *frames_ < done) {
    std::snprintf(text, sizeof text, "%lld frames, %.1f fps", static_cast<long long>(done), rate);
    return text;
  }
  const long left = rate > 0 ? long(double(*frames_ - done) / rate + 0.5) : 0;
  std::snprintf(text, sizeof text, "%lld of %lld frames, %.1f fps, %ld:%02ld:%02ld left", static_cast<long long>(done),
                static_cast<long long>(*frames_), rate, left / 3600, left / 60 % 60, left % 60);
  return text;
}

}  // namespace biseam::tool
