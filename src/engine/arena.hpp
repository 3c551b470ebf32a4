#pragma once

#include <cstdint>

#include "biseam/records.h"

namespace biseam {

// Every piece of a block but the first starts on an address that is a multiple of this.
inline constexpr int kPieceAlignment = 128;

// A block of size bytes as a rounded-up request: down to a multiple of 128, then 128 more.
inline constexpr int64_t block_size(int64_t bytes) { return bytes / kPieceAlignment * kPieceAlignment + kPieceAlignment; }

MemoryCursor open_block(void* base, int64_t size);

// The next piece, or null when fewer than bytes lie before the block's last byte; the cursor stays then.
void* take_piece(MemoryCursor& cursor, int32_t bytes);

// The same for a computed size: null as well when it is negative or does not fit 32 bits.
void* take_checked_piece(MemoryCursor& cursor, int64_t bytes);

}  // namespace biseam
