#include "engine/threads.hpp"

#include <pthread.h>

namespace biseam {

namespace {
constexpr int kMostTasks = 8;
}

void run_together(const ThreadTask* tasks, int count) {
  pthread_t threads[kMostTasks];
  bool started[kMostTasks] = {};
  for (int i = 0; i < count; ++i) {
    started[i] = i < kMostTasks && pthread_create(&threads[i], nullptr, tasks[i].entry, tasks[i].args) == 0;
    if (!started[i]) tasks[i].entry(tasks[i].args);
  }
  for (int i = 0; i < count && i < kMostTasks; ++i) {
    if (started[i]) pthread_join(threads[i], nullptr);
  }
}

}  // namespace biseam
