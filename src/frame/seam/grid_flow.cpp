#include "frame/seam/grid_flow.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>

namespace biseam {

namespace {

struct Search {
  explicit Search(const Grid& grid)
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
  float* terminals;  // of the first node of the block
  uint32_t *ring, *ring_end, *first, *last;
  uint32_t *orphans, *orphans_end;
  ptrdiff_t row;
  int32_t time = 0;

  GridNode* node(uint32_t place) const noexcept { return reinterpret_cast<GridNode*>(base + place); }
  uint32_t place(const GridNode* n) const noexcept { return static_cast<uint32_t>(reinterpret_cast<const char*>(n) - base); }
  float& terminal(const GridNode* n) const noexcept { return terminals[place(n) / sizeof(GridNode)]; }
  template <Direction d>
  GridNode* neighbour(GridNode* n) const noexcept {
    constexpr ptrdiff_t one = sizeof(GridNode);
    const ptrdiff_t step = d == down ? row : d == right ? one : d == left ? -one : -row;
    return reinterpret_cast<GridNode*>(reinterpret_cast<char*>(n) + step);
  }
};

void append_active(Search& s, GridNode* n) noexcept {
  if (n->queued != 0) return;
  n->queued = 1;
  *s.last++ = s.place(n);
  if (s.last == s.ring_end) s.last = s.ring;
}

void remove_first_active(Search& s) noexcept {
  s.node(*s.first)->queued = 0;
  if (++s.first == s.ring_end) s.first = s.ring;
}

void push_orphan(Search& s, GridNode* n) noexcept {
  n->parent = grid_orphan;
  *s.orphans_end++ = s.place(n);
}

// Room is +0 where there is none: it never falls below zero, and a difference of equals is +0.
bool is_full(const GridNode* n, Direction d) noexcept { return std::bit_cast<uint32_t>(n->room[d]) == 0; }

bool has_parent(const GridNode* n) noexcept { return n->parent > grid_orphan; }

void plant_roots(Search& s, const Grid& grid) noexcept {
  for (int64_t i = 0; i < int64_t{grid.height} * grid.width; ++i) {
    GridNode* const n = &grid.at(i);
    const float terminal = grid.terminals[i];
    n->time_stamp = 0;
    n->parent = grid_free;
    n->queued = 0;
    if (terminal == 0.0f) continue;
    n->parent = grid_root;
    n->distance = 1;
    n->sink = terminal < 0.0f;
    append_active(s, n);
  }
}

void hang(const Search& s, GridNode* child, const GridNode* parent, Direction to_parent) noexcept {
  child->parent = s.place(parent);
  child->to_parent = to_parent;
  child->time_stamp = parent->time_stamp;
  child->distance = parent->distance + 1;
}

// Looks from node n of a tree in one direction.  True: the neighbour is of the other tree and can be reached.
template <bool sink, Direction d>
bool grow_towards(Search& s, GridNode* n) noexcept {
  GridNode* const other = s.neighbour<d>(n);
  if (sink ? is_full(other, opposite(d)) : is_full(n, d)) return false;
  if (other->parent == grid_free) {
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

constexpr int no_bridge = 4;

template <bool sink>
int grow(Search& s, GridNode* n) noexcept {
  if (grow_towards<sink, down>(s, n)) return down;
  if (grow_towards<sink, right>(s, n)) return right;
  if (grow_towards<sink, left>(s, n)) return left;
  if (grow_towards<sink, up>(s, n)) return up;
  return no_bridge;
}

// A way from a bridge to a terminal: the nodes on it but the root, in the room of the orphans to come.
struct Path {
  uint32_t *first, *end;
  GridNode* root;
};

template <bool sink>
Path find_path(const Search& s, GridNode* n, uint32_t* places, float& limit) noexcept {
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
void push_path(Search& s, const Path& path, float amount) noexcept {
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

void augment(Search& s, GridNode* source_end, GridNode* sink_end, Direction d) noexcept {
  float amount = source_end->room[d];
  const Path source_path = find_path<false>(s, source_end, s.orphans, amount);
  const Path sink_path = find_path<true>(s, sink_end, source_path.end + 1, amount);
  source_end->room[d] -= amount;
  sink_end->room[opposite(d)] += amount;
  push_path<false>(s, source_path, amount);
  push_path<true>(s, sink_path, amount);
  ++s.time;
}

int32_t terminal_distance(Search& s, GridNode* n) noexcept {
  for (int32_t links = 0;; ++links) {
    if (n->time_stamp == s.time) return links + n->distance;
    if (n->parent == grid_root) {
      n->time_stamp = s.time;
      n->distance = 1;
      return links + 1;
    }
    if (!has_parent(n)) return 0;
    n = s.node(n->parent);
  }
}

void stamp_path(Search& s, GridNode* n, int32_t distance) noexcept {
  while (n->time_stamp != s.time) {
    n->time_stamp = s.time;
    n->distance = distance--;
    n = s.node(n->parent);
  }
}

template <bool sink, Direction d>
void release(Search& s, GridNode* n) noexcept {
  GridNode* const other = s.neighbour<d>(n);
  if (other->sink != sink || other->parent == grid_free) return;
  if (!is_full(other, opposite(d))) append_active(s, other);
  if (has_parent(other) && other->to_parent == opposite(d)) push_orphan(s, other);
}

struct Candidate {
  int32_t distance;
  GridNode* node;
  Direction to_parent;
};

template <bool sink, Direction d>
void consider(Search& s, GridNode* n, Candidate& best) noexcept {
  GridNode* const other = s.neighbour<d>(n);
  if (sink ? is_full(n, d) : is_full(other, opposite(d))) return;
  if (other->sink != sink || other->parent == grid_free) return;
  const int32_t distance = terminal_distance(s, other);
  if (distance == 0) return;
  if (best.node == nullptr || distance < best.distance) best = {distance, other, d};
  stamp_path(s, other, distance);
}

template <bool sink>
void adopt(Search& s, GridNode* n) noexcept {
  Candidate best{0, nullptr, down};
  consider<sink, down>(s, n, best);
  consider<sink, right>(s, n, best);
  consider<sink, left>(s, n, best);
  consider<sink, up>(s, n, best);
  if (best.node != nullptr) {
    n->parent = s.place(best.node);
    n->to_parent = best.to_parent;
    n->time_stamp = s.time;
    n->distance = best.distance + 1;
    return;
  }
  n->time_stamp = 0;
  n->parent = grid_free;
  release<sink, down>(s, n);
  release<sink, right>(s, n);
  release<sink, left>(s, n);
  release<sink, up>(s, n);
}

GridNode* neighbour_at(const Search& s, GridNode* n, Direction d) noexcept {
  switch (d) {
    case down:
      return s.neighbour<down>(n);
    case right:
      return s.neighbour<right>(n);
    case left:
      return s.neighbour<left>(n);
    default:
      return s.neighbour<up>(n);
  }
}

}  // namespace

void solve_grid(const Grid& grid) noexcept {
  Search s(grid);
  plant_roots(s, grid);
  while (s.first != s.last) {
    GridNode* const n = s.node(*s.first);
    const int found = n->parent == grid_free ? no_bridge : n->sink != 0 ? grow<true>(s, n) : grow<false>(s, n);
    if (found == no_bridge) {
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
