#pragma once

#include <climits>

namespace biseam::test {

// While this lives the threads with numbers [first, end), counted from 0, can't be created, in programs linked with
// -Wl,--wrap=pthread_create.
class FailingThreads {
 public:
  explicit FailingThreads(int first = 0, int end = INT_MAX);
  ~FailingThreads();
  FailingThreads(const FailingThreads&) = delete;
  FailingThreads& operator=(const FailingThreads&) = delete;

  int refused() const;
};

}  // namespace biseam::test
