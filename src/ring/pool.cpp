#include "ring/pool.hpp"

#include <sched.h>
#include <time.h>

#include <algorithm>
#include <cstdint>

namespace biseam::ring {

namespace {

// Threads wait for what they have written whenever they take parts; the last ones that are taken should end together.
constexpr int kMostAtOnce = 8, kLeastTimes = 32;  // that a thread takes parts

constexpr int64_t kAwake = 50000;  // nanoseconds

int64_t nanoseconds() noexcept {
  timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return int64_t{time.tv_sec} * 1000000000 + time.tv_nsec;
}

// A frame is some jobs one after the other, and to be woken for the next one takes as long as a short one does.  So threads
// stay awake for a while, unless others want their processor.
template <class Condition>
void await_awake(const Condition& holds) noexcept {
  for (const int64_t end = nanoseconds() + kAwake; !holds() && nanoseconds() < end;) sched_yield();
}

}  // namespace

Pool::Pool() noexcept {
  pthread_mutex_init(&mutex_, nullptr);
  pthread_cond_init(&begun_, nullptr);
  pthread_cond_init(&ended_, nullptr);
}

Pool::~Pool() {
  pthread_mutex_lock(&mutex_);
  closing_ = true;
  pthread_cond_broadcast(&begun_);
  pthread_mutex_unlock(&mutex_);
  for (int i = 0; i < started_; ++i) pthread_join(workers_[i].thread, nullptr);
  pthread_cond_destroy(&ended_);
  pthread_cond_destroy(&begun_);
  pthread_mutex_destroy(&mutex_);
}

void Pool::start(int count) noexcept {
  const int wanted = std::clamp(count, 1, kMostThreads) - 1;
  while (started_ < wanted) {
    Worker& worker = workers_[started_];
    worker.pool = this;
    worker.index = started_ + 1;
    if (pthread_create(&worker.thread, nullptr, work, &worker) != 0) return;
    ++started_;
  }
}

void Pool::take_parts(int thread) noexcept {
  for (int first; (first = next_.fetch_add(at_once_, std::memory_order_relaxed)) < parts_;) {
    const int end = std::min(first + at_once_, parts_);
    for (int part = first; part < end; ++part) job_(context_, part, thread);
  }
}

void* Pool::work(void* argument) {
  const Worker& worker = *static_cast<const Worker*>(argument);
  Pool& pool = *worker.pool;
  unsigned done = 0;
  while (true) {
    await_awake([&] { return pool.round_.load(std::memory_order_relaxed) != done; });
    pthread_mutex_lock(&pool.mutex_);
    while ((pool.round_ == done || !pool.open_) && !pool.closing_) pthread_cond_wait(&pool.begun_, &pool.mutex_);
    if (pool.closing_) break;
    done = pool.round_;
    ++pool.busy_;
    pthread_mutex_unlock(&pool.mutex_);
    pool.take_parts(worker.index);
    pthread_mutex_lock(&pool.mutex_);
    if (--pool.busy_ == 0) pthread_cond_signal(&pool.ended_);
    pthread_mutex_unlock(&pool.mutex_);
  }
  pthread_mutex_unlock(&pool.mutex_);
  return nullptr;
}

void Pool::run(PoolJob job, void* context, int parts) noexcept {
  pthread_mutex_lock(&mutex_);
  job_ = job;
  context_ = context;
  parts_ = parts;
  at_once_ = std::clamp(parts / (kLeastTimes * size()), 1, kMostAtOnce);
  next_.store(0, std::memory_order_relaxed);
  open_ = true;
  ++round_;
  pthread_cond_broadcast(&begun_);
  pthread_mutex_unlock(&mutex_);
  take_parts(0);
  await_awake([&] { return busy_.load(std::memory_order_relaxed) == 0; });
  pthread_mutex_lock(&mutex_);
  open_ = false;  // nothing is left to take: who has not woken up yet isn't waited for
  while (busy_ > 0) pthread_cond_wait(&ended_, &mutex_);
  pthread_mutex_unlock(&mutex_);
}

}  // namespace biseam::ring
