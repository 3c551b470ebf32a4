#pragma once

namespace biseam {

struct ThreadTask {
  void* (*entry)(void*);
  void* args;
};

// Runs the tasks at the same time, begun in order, and returns when all have ended.  As many threads as tasks, created in order
// with default attributes and joined in order; one that is done takes the next task not yet begun, so that no processor waits
// while another has several.  Tasks whose threads can't be created run on the calling thread: no frame is left half done.
void run_together(const ThreadTask* tasks, int count);

}  // namespace biseam
