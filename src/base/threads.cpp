#include "base/threads.hpp"

#include <pthread.h>

#include <atomic>

namespace biseam {

namespace {

constexpr int kMostThreads = 8;

struct Queue {
  const ThreadTask* tasks;
  int count;
  std::atomic<int> next;
};

void* run_what_is_left(void* queue) {
  Queue& q = *static_cast<Queue*>(queue);
  for (int i; (i = q.next.fetch_add(1, std::memory_order_relaxed)) < q.count;) q.tasks[i].entry(q.tasks[i].args);
  return nullptr;
}

}  // namespace

void run_together(const ThreadTask* tasks, int count) {
  Queue queue{tasks, count, 0};
  pthread_t threads[kMostThreads];
  int started = 0;
  for (int i = 0; i < count && started < kMostThreads; ++i) {
    if (pthread_create(&threads[started], nullptr, run_what_is_left, &queue) == 0) ++started;
  }
  if (started < count) run_what_is_left(&queue);
  for (int i = 0; i < started; ++i) pthread_join(threads[i], nullptr);
}

}  // namespace biseam
