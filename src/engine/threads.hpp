#pragma once

namespace biseam {

struct ThreadTask {
  void* (*entry)(void*);
  void* args;
};

// Runs the tasks at the same time and returns when all have ended: created in order with default attributes, joined in order.
// A task whose thread can't be created runs on the calling thread, so that no frame is left half done.
void run_together(const ThreadTask* tasks, int count);

}  // namespace biseam
