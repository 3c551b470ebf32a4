#pragma once

#include <cstddef>

namespace biseam::test {

// Makes one request to the C heap fail and counts what is held, for programs linked with
// -Wl,--wrap=malloc,--wrap=calloc,--wrap=aligned_alloc,--wrap=free.  Requests by libstdc++ (operator new) don't pass here.
class FailingHeap {
 public:
  // The request with this number, counted from 0, fails, and every one after it if and_later; negative: none.
  explicit FailingHeap(int failing_request = -1, bool and_later = false);
  ~FailingHeap();
  FailingHeap(const FailingHeap&) = delete;
  FailingHeap& operator=(const FailingHeap&) = delete;

  int requests() const;                     // since the start
  std::ptrdiff_t held() const;              // blocks allocated less blocks freed since the start
  std::size_t bytes_of(int request) const;  // what the request with this number asked for; the first 64 are known
};

}  // namespace biseam::test
