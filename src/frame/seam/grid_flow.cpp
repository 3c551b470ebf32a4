#include "frame/seam/grid_flow.hpp"

#include <algorithm>
#include <cmath>

#include "frame/seam/grid_search.hpp"

namespace biseam {

namespace {

void plant_roots(GridSearch& s, const Grid& grid) noexcept {
  for (int64_t i = 0; i < int64_t{grid.height} * grid.width; ++i) {
    GridNode* const n = &grid.at(i);
    const float terminal = grid.terminals[i];
    n->time_stamp = 0;
    n->parent = kGridFree;
    n->queued = 0;
    if (terminal == 0.0f) continue;
    n->parent = kGridRoot;
    n->distance = 1;
    n->sink = terminal < 0.0f;
    append_active(s, n);
  }
}

// Looks from node n of a tree in one direction.  True: the neighbour is of the other tree and can be reached.
template <bool sink, Direction d>
bool grow_towards(GridSearch& s, GridNode* n) noexcept {
  GridNode* const other = s.neighbour<d>(n);
  if (sink ? is_full(other, opposite(d)) : is_full(n, d)) return false;
  if (other->parent == kGridFree) {
    other->sink = sink;
    hang(s, other, n, opposite(d));
    append_active(s, other);
  } else if (other->sink != sink) {
    return true;
  } else if (other->distance > n->distance + 1 && other->time_stamp <= n->time_stamp) {
    hang(s, other, n, opposite(d));
  }
  return false;
}

constexpr int kNoBridge = 4;

template <bool sink>
int grow(GridSearch& s, GridNode* n) noexcept {
  if (grow_towards<sink, kDown>(s, n)) return kDown;
  if (grow_towards<sink, kRight>(s, n)) return kRight;
  if (grow_towards<sink, kLeft>(s, n)) return kLeft;
  if (grow_towards<sink, kUp>(s, n)) return kUp;
  return kNoBridge;
}

// A way from a bridge to a terminal: the nodes on it but the root, in the room of the orphans to come.
struct Path {
  uint32_t *first, *end;
  GridNode* root;
};

template <bool sink>
Path find_path(const GridSearch& s, GridNode* n, uint32_t* places, float& limit) noexcept {
  Path path{places, places, nullptr};
  while (has_parent(n)) {
    *path.end++ = s.place(n);
    GridNode* const parent = s.node(n->parent);
    limit = std::min(limit, sink ? n->room[n->to_parent] : parent->room[opposite(n->to_parent)]);
    n = parent;
  }
  path.root = n;
  limit = std::min(limit, std::fabs(s.terminal(n)));
  return path;
}

template <bool sink>
void push_path(GridSearch& s, const Path& path, float amount) noexcept {
  for (const uint32_t* place = path.first; place != path.end; ++place) {
    GridNode* const n = s.node(*place);
    GridNode* const parent = s.node(n->parent);
    float& up_room = n->room[n->to_parent];
    float& down_room = parent->room[opposite(n->to_parent)];
    float& downstream = sink ? up_room : down_room;
    downstream -= amount;
    (sink ? down_room : up_room) += amount;
    if (downstream == 0.0f) push_orphan(s, n);
  }
  float& terminal = s.terminal(path.root);
  terminal += sink ? amount : -amount;
  if (terminal == 0.0f) push_orphan(s, path.root);
}

void augment(GridSearch& s, GridNode* source_end, GridNode* sink_end, Direction d) noexcept {
  float amount = source_end->room[d];
  const Path source_path = find_path<false>(s, source_end, s.orphans, amount);
  const Path sink_path = find_path<true>(s, sink_end, source_path.end + 1, amount);
  source_end->room[d] -= amount;
  sink_end->room[opposite(d)] += amount;
  push_path<false>(s, source_path, amount);
  push_path<true>(s, sink_path, amount);
  ++s.time;
}

int32_t terminal_distance(GridSearch& s, GridNode* n) noexcept {
  for (int32_t links = 0;; ++links) {
    if (n->time_stamp == s.time) return links + n->distance;
    if (n->parent == kGridRoot) {
      n->time_stamp = s.time;
      n->distance = 1;
      return links + 1;
    }
    if (!has_parent(n)) return 0;
    n = s.node(n->parent);
  }
}

void stamp_path(GridSearch& s, GridNode* n, int32_t distance) noexcept {
  while (n->time_stamp != s.time) {
    n->time_stamp = s.time;
    n->distance = distance--;
    n = s.node(n->parent);
  }
}

template <bool sink, Direction d>
void release(GridSearch& s, GridNode* n) noexcept {
  GridNode* const other = s.neighbour<d>(n);
  if (other->sink != sink || other->parent == kGridFree) return;
  if (!is_full(other, opposite(d))) append_active(s, other);
  if (has_parent(other) && other->to_parent == opposite(d)) push_orphan(s, other);
}

struct Candidate {
  int32_t distance;
  GridNode* node;
  Direction to_parent;
};

template <bool sink, Direction d>
void consider(GridSearch& s, GridNode* n, Candidate& best) noexcept {
  GridNode* const other = s.neighbour<d>(n);
  if (sink ? is_full(n, d) : is_full(other, opposite(d))) return;
  if (other->sink != sink || other->parent == kGridFree) return;
  const int32_t distance = terminal_distance(s, other);
  if (distance == 0) return;
  if (best.node == nullptr || distance < best.distance) best = {distance, other, d};
  stamp_path(s, other, distance);
}

template <bool sink>
void adopt(GridSearch& s, GridNode* n) noexcept {
  Candidate best{0, nullptr, kDown};
  consider<sink, kDown>(s, n, best);
  consider<sink, kRight>(s, n, best);
  consider<sink, kLeft>(s, n, best);
  consider<sink, kUp>(s, n, best);
  if (best.node != nullptr) {
    n->parent = s.place(best.node);
    n->to_parent = best.to_parent;
    n->time_stamp = s.time;
    n->distance = best.distance + 1;
    return;
  }
  n->time_stamp = 0;
  n->parent = kGridFree;
  release<sink, kDown>(s, n);
  release<sink, kRight>(s, n);
  release<sink, kLeft>(s, n);
  release<sink, kUp>(s, n);
}

GridNode* neighbour_at(const GridSearch& s, GridNode* n, Direction d) noexcept {
  switch (d) {
    case kDown:
      return s.neighbour<kDown>(n);
    case kRight:
      return s.neighbour<kRight>(n);
    case kLeft:
      return s.neighbour<kLeft>(n);
    default:
      return s.neighbour<kUp>(n);
  }
}

}  // namespace

void solve_grid(const Grid& grid) noexcept {
  GridSearch s(grid);
  plant_roots(s, grid);
  while (s.first != s.last) {
    GridNode* const n = s.node(*s.first);
    const int found = n->parent == kGridFree ? kNoBridge : n->sink != 0 ? grow<true>(s, n) : grow<false>(s, n);
    if (found == kNoBridge) {
      remove_first_active(s);
      continue;
    }
    const Direction d = static_cast<Direction>(found);
    GridNode* const other = neighbour_at(s, n, d);
    if (n->sink != 0)
      augment(s, other, n, opposite(d));
    else
      augment(s, n, other, d);
    while (s.orphans_end != s.orphans) {
      GridNode* const orphan = s.node(*--s.orphans_end);
      if (orphan->sink != 0)
        adopt<true>(s, orphan);
      else
        adopt<false>(s, orphan);
    }
  }
}

}  // namespace biseam
