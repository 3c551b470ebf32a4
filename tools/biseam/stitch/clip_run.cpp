#include "stitch/clip_run.hpp"

#include <exception>
#include <string>
#include <system_error>
#include <thread>

#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "stitch/queue.hpp"

namespace biseam::tool {
namespace {

template <class Work>
std::jthread started(const char* purpose, Work work) try {
  return std::jthread(std::move(work));
} catch (const std::system_error& error) {
  throw Failure(ExitCode::system, std::string("no thread for ") + purpose + " can be started: " + error.code().message());
}

class Threads {
 public:
  explicit Threads(const ClipRun& run) : run_(run), read_(run.most_waiting), stitched_(run.most_waiting) {}
  Threads(const Threads&) = delete;
  Threads& operator=(const Threads&) = delete;

  // Also where only one could be started: both see that they are to end.
  ~Threads() {
    read_.close();
    stitched_.end();
    if (!reader_.joinable()) return;
    stop_reading();
    reader_.join();
    resume_reading();
  }

  void run() {
    reader_ = started("reading", [this] { read_all(); });
    writer_ = started("writing", [this] { write_all(); });
    const std::exception_ptr trouble = stitch_all();
    stitched_.end();
    writer_.join();
    if (write_trouble_) std::rethrow_exception(write_trouble_);  // of a frame before
    if (trouble) std::rethrow_exception(trouble);
  }

 private:
  void read_all() {
    try {
      while (std::optional<FramePair> pair = run_.read()) {
        if (!read_.put(std::move(*pair))) return;
      }
      read_.end();
    } catch (...) {
      read_.end(std::current_exception());
    }
  }

  std::exception_ptr stitch_all() {
    try {
      while (std::optional<FramePair> pair = read_.take()) {
        if (!stitched_.put(run_.stitch(std::move(*pair)))) break;
      }
      return nullptr;
    } catch (...) {
      return std::current_exception();
    }
  }

  void write_all() {
    try {
      while (std::optional<StitchedFrame> frame = stitched_.take()) run_.write(std::move(*frame));
    } catch (...) {
      write_trouble_ = std::current_exception();
      stitched_.close();
    }
  }

  const ClipRun& run_;
  Queue<FramePair> read_;
  Queue<StitchedFrame> stitched_;
  std::exception_ptr write_trouble_;
  std::jthread reader_, writer_;  // last: they end first
};

}  // namespace

void run_clip(const ClipRun& run) { Threads(run).run(); }

}  // namespace biseam::tool
