#include "base/large_block.hpp"

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>

namespace biseam {

namespace {

// Of pages inside the block only: no neighbour is touched, and no more becomes resident than the block has.  It is advice, so
// nothing depends on what comes of it.
void ask_for_large_pages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t bytes) noexcept {
#if defined(MADV_HUGEPAGE)
  constexpr std::uintptr_t page = std::uintptr_t{2} << 20;
  const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(block);
  const std::uintptr_t first = (start + page - 1) / page * page, end = (start + bytes) / page * page;
  if (first < end) madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
#endif
}

}  // namespace

void* allocate_large_block(std::size_t bytes) noexcept {
  void* block = std::calloc(1, bytes);
  if (block != nullptr) ask_for_large_pages(block, bytes);
  return block;
}

}  // namespace biseam
