#include "base/arena.hpp"

#include <cstdint>

namespace biseam {

void* take_piece(MemoryCursor& cursor, int32_t bytes) {
  // Addresses as numbers: the cursor may come to lie past the end of the block.
  const uintptr_t current = reinterpret_cast<uintptr_t>(cursor.current);
  const intptr_t left = static_cast<intptr_t>(reinterpret_cast<uintptr_t>(cursor.last) - current);
  if (left < bytes) return nullptr;
  void* piece = cursor.current;
  const uintptr_t next = current + (kPieceAlignment - 1) + static_cast<uintptr_t>(static_cast<intptr_t>(bytes));
  cursor.current = reinterpret_cast<uint8_t*>(next & ~uintptr_t{kPieceAlignment - 1});
  return piece;
}

Carver::Carver(void* base, int64_t size) : cursor_{}, complete_(base != nullptr) {
  if (base == nullptr) return;
  uint8_t* first = static_cast<uint8_t*>(base);
  cursor_ = {first, first + size - 1, first};
}

void* Carver::take_bytes(int64_t bytes) {
  const bool possible = cursor_.base != nullptr && bytes >= 0 && bytes <= INT32_MAX;
  void* piece = possible ? take_piece(cursor_, static_cast<int32_t>(bytes)) : nullptr;
  complete_ = complete_ && piece != nullptr;
  return piece;
}

}  // namespace biseam
