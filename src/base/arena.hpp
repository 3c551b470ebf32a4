#pragma once

#include <cstdint>

#include "biseam/records.h"

namespace biseam {

// Every piece of a block but the first starts on an address that is a multiple of this.
inline constexpr int kPieceAlignment = 128;

// A block of size bytes as a rounded-up request: down to a multiple of 128, then 128 more.
inline constexpr int64_t block_size(int64_t bytes) { return bytes / kPieceAlignment * kPieceAlignment + kPieceAlignment; }

// What customary blocks have for the alignment of their pieces.  It is enough on average only: with many levels a carving can
// fail at one base address and succeed at another.
inline constexpr int64_t kCustomaryRoom = 4096;

// What a piece takes in a block that has room for it wherever the block lies.
inline constexpr int64_t room_for(int64_t piece_bytes) { return piece_bytes + kPieceAlignment - 1; }

// Blocks of the customary size, or with room for every piece: then and only then carving can't fail.
enum class Room { customary, every_piece };

// The next piece, or null when fewer than bytes lie before the block's last byte; the cursor stays then.
void* take_piece(MemoryCursor& cursor, int32_t bytes);

// Takes pieces of one block, one after the other, and remembers whether all fitted.
class Carver {
 public:
  // base may be null: no piece fits then.
  Carver(void* base, int64_t size);

  // Null when the piece does not fit, or its computed size is negative or leaves 32 bits.
  template <class T>
  void take(T*& piece, int64_t bytes) {
    piece = static_cast<T*>(take_bytes(bytes));
  }
  bool complete() const { return complete_; }

 private:
  void* take_bytes(int64_t bytes);

  MemoryCursor cursor_;
  bool complete_;
};

}  // namespace biseam
