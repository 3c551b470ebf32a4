#include "support/failing_heap.hpp"

#include <atomic>

namespace {

std::atomic<bool> watching{false}, later_fail{false};
std::atomic<int> request_count{0}, failing{-1};
std::atomic<std::ptrdiff_t> held_blocks{0};

constexpr int kKnownRequests = 64;
std::atomic<std::size_t> request_bytes[kKnownRequests];

bool refuse(std::size_t bytes) {
  if (!watching) return false;
  const int request = request_count++;
  if (request < kKnownRequests) request_bytes[request] = bytes;
  return failing >= 0 && (request == failing || (later_fail && request > failing));
}

void* counted(void* block) {
  if (watching && block != nullptr) ++held_blocks;
  return block;
}

}  // namespace

extern "C" {
void* __real_malloc(std::size_t bytes);
void* __real_calloc(std::size_t count, std::size_t bytes);
void* __real_aligned_alloc(std::size_t alignment, std::size_t bytes);
void __real_free(void* block);

void* __wrap_malloc(std::size_t bytes) { return refuse(bytes) ? nullptr : counted(__real_malloc(bytes)); }
void* __wrap_calloc(std::size_t count, std::size_t bytes) {
  return refuse(count * bytes) ? nullptr : counted(__real_calloc(count, bytes));
}
void* __wrap_aligned_alloc(std::size_t alignment, std::size_t bytes) {
  return refuse(bytes) ? nullptr : counted(__real_aligned_alloc(alignment, bytes));
}
void __wrap_free(void* block) {
  if (watching && block != nullptr) --held_blocks;
  __real_free(block);
}
}

namespace biseam::test {

FailingHeap::FailingHeap(int failing_request, bool and_later) {
  request_count = 0;
  held_blocks = 0;
  failing = failing_request;
  later_fail = and_later;
  watching = true;
}

FailingHeap::~FailingHeap() { watching = false; }

int FailingHeap::requests() const { return request_count; }
std::size_t FailingHeap::bytes_of(int request) const { return request_bytes[request]; }
std::ptrdiff_t FailingHeap::held() const { return held_blocks; }

}  // namespace biseam::test
