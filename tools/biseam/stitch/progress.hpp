// What a person sees while a clip is made.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace biseam::tool {

// On a terminal one line that changes, elsewhere a line now and then; on standard error.
class Progress {
 public:
  using Clock = std::chrono::steady_clock;
  using Now = std::function<Clock::time_point()>;

  // frames: how many there will be, as far as that is known.
  explicit Progress(std::optional<std::int64_t> frames, Now now = Clock::now);
  ~Progress();

  void count(std::int64_t done);

  double seconds() const;

 private:
  std::string line(std::int64_t done) const;

  std::optional<std::int64_t> frames_;
  Now now_;
  bool terminal_;
  bool shown_ = false;
  Clock::time_point start_, last_;
};

}  // namespace biseam::tool
