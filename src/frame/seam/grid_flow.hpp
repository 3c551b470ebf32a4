#pragma once

#include <cstdint>

namespace biseam {

// Directions in a grid, in the order in which a node's arcs are looked at: that of its list in a graph that build_grid made.
enum Direction : uint8_t { kDown, kRight, kLeft, kUp };
constexpr Direction opposite(Direction d) { return static_cast<Direction>(d ^ 3); }

// Values of GridNode::parent that are no node.
enum : uint32_t { kGridFree = 0, kGridRoot = 1, kGridOrphan = 2 };

// What a node's neighbours want to know of it, in half a cache line.
struct alignas(32) GridNode {
  float room[4];    // residual capacity towards each neighbour, 0 where there is none
  uint32_t parent;  // where the parent lies, in bytes from the first node of the block
  int32_t time_stamp, distance;
  Direction to_parent;
  uint8_t sink;    // 1: in the sink tree
  uint8_t queued;  // 1: among the active nodes
  uint8_t unused;
};
static_assert(sizeof(GridNode) == 32);

// A grid of height x width nodes, with a row of nodes that lead nowhere on either side: so every node has four neighbours.  The
// one after a row's last node is the next row's first, with no room between them.
struct Grid {
  GridNode* nodes;    // (height + 2) * width
  float* terminals;   // height * width: > 0 towards the source, < 0 towards the sink
  uint32_t* active;   // height * width + 1, a ring
  uint32_t* orphans;  // height * width
  int32_t height, width;

  GridNode& at(int64_t i) const { return nodes[width + i]; }
};

// max_flow on a grid without records of arcs, in half the bytes and half the time: the same steps in the same order and so the
// same residuals, trees and labels.  The flow itself is not added up.  Rooms, terminals and zeros elsewhere in the nodes are
// given; needs at most 2^27 of them.
void solve_grid(const Grid& grid) noexcept;

}  // namespace biseam
