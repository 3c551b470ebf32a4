#include "support/failing_threads.hpp"

#include <pthread.h>

#include <atomic>
#include <cerrno>

namespace {

std::atomic<bool> refusing{false};
std::atomic<int> asked{0}, refused_count{0}, first_refused{0}, end_refused{0};

}  // namespace

extern "C" {
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*entry)(void*), void* args);

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*entry)(void*), void* args) {
  const int number = asked++;
  if (!refusing || number < first_refused || number >= end_refused)
    return __real_pthread_create(thread, attributes, entry, args);
  ++refused_count;
  return EAGAIN;
}
}

namespace biseam::test {

FailingThreads::FailingThreads(int first, int end) {
  asked = 0;
  first_refused = first;
  end_refused = end;
  refused_count = 0;
  refusing = true;
}

FailingThreads::~FailingThreads() { refusing = false; }

int FailingThreads::refused() const { return refused_count; }

}  // namespace biseam::test
