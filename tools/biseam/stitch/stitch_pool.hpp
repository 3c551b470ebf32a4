// Reading, and stitching by several engines at once, in threads of their own.
#pragma once

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "clip/write/panorama_pool.hpp"
#include "stitch/engine_input.hpp"
#include "stitch/seam_path.hpp"

namespace biseam::tool {

struct StitchedFrame {
  FramePair pair;           // without its pictures, once they are stitched
  Libav<AVFrame> panorama;  // none: the last one again, or only packets
  SeamPath seams;           // of the panorama
  bool is_picture = false;
};

// Hands out panoramas in the order of their pairs.  At most 2 x jobs + 1 frames are held between reader and taker.
class StitchPool {
 public:
  using Read = std::function<std::optional<FramePair>()>;

  // group: so many pictures share the seams found in the first of them.  read is called by one thread, none means the end.
  // Throws Failure: settings when the engine refuses the setup, system when memory or a thread is missing.
  StitchPool(const Setup& setup, const PairLayout& layout, int jobs, int group, Read read);
  StitchPool(const StitchPool&) = delete;
  StitchPool& operator=(const StitchPool&) = delete;
  ~StitchPool() = default;  // drops what is in flight

  // The next frame; none at the end.  Rethrows what went wrong in any thread, after the frames before it.
  std::optional<StitchedFrame> next();

 private:
  enum class Stage { waiting, running, done };
  struct Group {
    std::int64_t number = 0;
    bool found = false;  // guarded by the mutex; the rest is only read afterwards
    std::vector<std::uint8_t> seams;
    SeamPath path;
  };
  struct Slot {
    Stage stage = Stage::waiting;
    StitchedFrame frame;
    std::shared_ptr<Group> group;
    bool searches = true;
    std::exception_ptr trouble;
  };
  struct Engine {
    Stitcher stitcher;
    EngineInput input;
    std::shared_ptr<const Group> group;  // whose seams it has
  };

  // Its end is the end of all of them, also where only some could be started.
  class Threads {
   public:
    explicit Threads(StitchPool& pool) : pool_(pool) {}
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;
    ~Threads() { pool_.stop(); }

    template <class Work>
    void start(const char* purpose, Work work);

   private:
    StitchPool& pool_;
    std::vector<std::jthread> all_;
  };

  void stop();
  void make_engines(const Setup& setup, const PairLayout& layout, int jobs);
  void judge(Slot& slot);
  void read_all(const Read& read);
  bool hand_over(Slot slot);
  void stitch_all(Engine& engine);
  void stitch(Engine& engine, Slot& slot);
  void take_seams(Engine& engine, const Slot& slot);
  void give_seams(Engine& engine, Slot& slot);
  bool can_start(const Slot& slot) const;
  Slot* take_waiting(std::unique_lock<std::mutex>& lock);

  const StitchConfig config_;
  const std::size_t most_;
  const int group_size_;
  PanoramaPool panoramas_;
  std::vector<std::unique_ptr<Engine>> engines_;
  std::mutex mutex_;
  std::condition_variable room_, work_, done_;  // for the reader, the engines, the taker
  std::deque<Slot> slots_;                      // in order
  std::shared_ptr<const AVFrame> last_[2];      // the reader's
  std::shared_ptr<Group> group_;                // likewise
  bool read_ended_ = false, stopped_ = false;
  std::exception_ptr read_trouble_;  // after the frames before it
  Threads threads_{*this};           // last: they end first
};

}  // namespace biseam::tool
