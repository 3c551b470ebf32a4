#include "engine/threads.hpp"

#include <pthread.h>

namespace biseam {

namespace {
constexpr int kMostThreads = 8;
}

void run_together(const ThreadTask* tasks, int count) {
  pthread_t threads[kMostThreads];
  int started = 0;
  for (int i = 0; i < count; ++i) {
    if (started < kMostThreads && pthread_create(&threads[started], nullptr, tasks[i].entry, tasks[i].args) == 0) {
      ++started;
    } else {
      tasks[i].entry(tasks[i].args);
    }
  }
  for (int i = 0; i < started; ++i) pthread_join(threads[i], nullptr);
}

}  // namespace biseam
