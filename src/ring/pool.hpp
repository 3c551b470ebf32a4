// Threads that live as long as their owner.
#pragma once

#include <pthread.h>

#include <atomic>

namespace biseam::ring {

inline constexpr int kMostThreads = 64;

// thread: which one works, from 0 to size() - 1; memory of its own can be found by it.
using PoolJob = void (*)(void* context, int part, int thread) noexcept;

class Pool {
 public:
  Pool() noexcept;
  ~Pool();
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;

  // count: how many threads are to work, the caller's own included.  Those that can't be started are done without.
  void start(int count) noexcept;
  int size() const noexcept { return started_ + 1; }

  // Has every part from 0 to parts - 1 done once, and returns when all are.  Threads take the next one, or the next few of
  // many, in order.
  void run(PoolJob job, void* context, int parts) noexcept;

 private:
  struct Worker {
    Pool* pool;
    pthread_t thread;
    int index;
  };

  static void* work(void* worker);
  void take_parts(int thread) noexcept;

  Worker workers_[kMostThreads - 1];
  int started_ = 0;
  pthread_mutex_t mutex_;
  pthread_cond_t begun_, ended_;
  // Changed under the mutex alone.
  std::atomic<unsigned> round_{0};  // counts jobs
  std::atomic<int> busy_{0};        // workers that have joined the present one and not left yet
  bool open_ = false;               // whether workers may join it
  bool closing_ = false;
  // Of the present job; written while no worker is busy.
  PoolJob job_ = nullptr;
  void* context_ = nullptr;
  int parts_ = 0, at_once_ = 1;
  std::atomic<int> next_{0};
};

}  // namespace biseam::ring
