#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "frame/seam/grid_flow.hpp"

namespace biseam {

// A search for the flow of a grid under way: its nodes, named by their places in bytes from the first of the block, and its
// lists.
struct GridSearch {
  explicit GridSearch(const Grid& grid)
      : base(reinterpret_cast<char*>(grid.nodes)),
        terminals(grid.terminals - grid.width),
        ring(grid.active),
        ring_end(grid.active + int64_t{grid.height} * grid.width + 1),
        first(grid.active),
        last(grid.active),
        orphans(grid.orphans),
        orphans_end(grid.orphans),
        row(static_cast<ptrdiff_t>(grid.width) * ptrdiff_t{sizeof(GridNode)}) {}

  char* base;
  float* terminals;                          // of the first node of the block
  uint32_t *ring, *ring_end, *first, *last;  // active nodes, first in first out
  uint32_t *orphans, *orphans_end;           // a stack
  ptrdiff_t row;                             // bytes from a node to the one below
  int32_t time = 0;                          // augmentations so far

  GridNode* node(uint32_t place) const noexcept { return reinterpret_cast<GridNode*>(base + place); }
  uint32_t place(const GridNode* n) const noexcept { return static_cast<uint32_t>(reinterpret_cast<const char*>(n) - base); }
  float& terminal(const GridNode* n) const noexcept { return terminals[place(n) / sizeof(GridNode)]; }
  template <Direction d>
  GridNode* neighbour(GridNode* n) const noexcept {
    constexpr ptrdiff_t one = sizeof(GridNode);
    const ptrdiff_t step = d == kDown ? row : d == kRight ? one : d == kLeft ? -one : -row;
    return reinterpret_cast<GridNode*>(reinterpret_cast<char*>(n) + step);
  }
};

inline void append_active(GridSearch& s, GridNode* n) noexcept {
  if (n->queued != 0) return;
  n->queued = 1;
  *s.last++ = s.place(n);
  if (s.last == s.ring_end) s.last = s.ring;
}

inline void remove_first_active(GridSearch& s) noexcept {
  s.node(*s.first)->queued = 0;
  if (++s.first == s.ring_end) s.first = s.ring;
}

inline void push_orphan(GridSearch& s, GridNode* n) noexcept {
  n->parent = kGridOrphan;
  *s.orphans_end++ = s.place(n);
}

// Room is +0 where there is none: it never falls below zero, and a difference of equals is +0.
inline bool is_full(const GridNode* n, Direction d) noexcept { return std::bit_cast<uint32_t>(n->room[d]) == 0; }

inline bool has_parent(const GridNode* n) noexcept { return n->parent > kGridOrphan; }

inline void hang(const GridSearch& s, GridNode* child, const GridNode* parent, Direction to_parent) noexcept {
  child->parent = s.place(parent);
  child->to_parent = to_parent;
  child->time_stamp = parent->time_stamp;
  child->distance = parent->distance + 1;
}

}  // namespace biseam
