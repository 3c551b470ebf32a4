#pragma once

namespace biseam::test {

// While this lives no thread can be created, in programs linked with -Wl,--wrap=pthread_create.
class FailingThreads {
 public:
  FailingThreads();
  ~FailingThreads();
  FailingThreads(const FailingThreads&) = delete;
  FailingThreads& operator=(const FailingThreads&) = delete;

  int refused() const;
};

}  // namespace biseam::test
