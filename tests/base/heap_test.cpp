#include "base/heap.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <utility>

#include "support/failing_heap.hpp"

namespace biseam::test {
namespace {

// Compilers leave out requests whose blocks nobody looks at, and take them for granted.
template <class T>
bool is_there(const HeapArray<T>& array) {
  const T* volatile block = array.data();
  return block != nullptr;
}

TEST(HeapArray, HoldsAndFreesItsBlock) {
  const FailingHeap heap;
  {
    auto plain = HeapArray<int32_t>::plain(7);
    auto zeroed = HeapArray<int64_t>::zeroed(5);
    ASSERT_TRUE(is_there(plain) && is_there(zeroed));
    EXPECT_EQ(2, heap.held());
    EXPECT_EQ(7 * sizeof(int32_t), heap.bytes_of(0));
    for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(0, zeroed[i]);
  }
  EXPECT_EQ(0, heap.held());
}

TEST(HeapArray, NoneHoldsNothing) {
  const FailingHeap heap;
  const auto none = HeapArray<int32_t>::none();
  EXPECT_FALSE(none);
  EXPECT_EQ(nullptr, none.data());
  EXPECT_EQ(0, heap.requests());
}

TEST(HeapArray, FailedRequestsAreNull) {
  const FailingHeap heap(0, true);
  EXPECT_FALSE(is_there(HeapArray<int32_t>::plain(1)));
  EXPECT_FALSE(is_there(HeapArray<int32_t>::zeroed(1)));
  EXPECT_EQ(0, heap.held());
}

// The product of count and size would wrap.
TEST(HeapArray, SizesThatNoAddressReachesAreNull) {
  volatile std::size_t count = SIZE_MAX / 8 + 1;  // unknown to the compiler, which warns of such calls
  EXPECT_FALSE(is_there(HeapArray<int64_t>::plain(count)));
  EXPECT_FALSE(is_there(HeapArray<int64_t>::zeroed(count)));
}

TEST(HeapArray, MovingHandsTheBlockOver) {
  const FailingHeap heap;
  auto first = HeapArray<int32_t>::plain(3), second = HeapArray<int32_t>::plain(4);
  const int32_t* const block = first.data();
  second = std::move(first);
  EXPECT_EQ(1, heap.held());  // the second's own is freed
  EXPECT_EQ(block, second.data());
  EXPECT_FALSE(first);
  auto third(std::move(second));
  EXPECT_EQ(block, third.data());
  auto& same = third;
  third = std::move(same);
  EXPECT_EQ(block, third.data());
}

TEST(HeapArray, ReleasedBlocksAreTheCallers) {
  const FailingHeap heap;
  int32_t* volatile block;  // or the compiler leaves out the pair of request and release
  {
    auto array = HeapArray<int32_t>::plain(3);
    block = array.release();
    EXPECT_FALSE(array);
  }
  EXPECT_EQ(1, heap.held());
  std::free(block);
}

}  // namespace
}  // namespace biseam::test
