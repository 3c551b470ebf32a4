#include "ring/strip/seam_path.hpp"

#include "ring/strip/seam_states.hpp"

namespace biseam::ring {

namespace {

// Levels of division: the first ones divide where it helps most, the others in halves.
constexpr int kFreeDivisions = 4;
constexpr int kMaxDivisions = kFreeDivisions + 10;
static_assert(kMaxStripWidth <= 1 << 9);

constexpr size_t whole_lines(size_t bytes) { return (bytes + 63) / 64 * 64; }

size_t path_bytes(StripShape shape) { return whole_lines(sizeof(int16_t) * static_cast<size_t>(shape.length)); }

size_t state_bytes(StripShape shape) {
  return whole_lines(sizeof(uint32_t) * static_cast<size_t>(shape.length) * static_cast<size_t>(state_stride(shape.width)));
}

// A closed path through row r at t = 0, and best ones through rows below and above r, need not cross: where they do, what lies
// between the crossings can be exchanged.  So a best path through a row divides the search for those through other rows; and
// a search over paths that end in another row than they began bounds what the rows between can give.
struct Search {
  StripShape shape;
  const uint16_t* cost;
  uint32_t* states;
  int16_t* paths;  // of each level of division, then the two limits
  int16_t* best_path;
  uint32_t best;

  int16_t* path_of(int level) const { return paths + static_cast<size_t>(level) * (path_bytes(shape) / sizeof(int16_t)); }

  // The least sum of a path within the limits that begins and ends, after the last t, in rows [first, last] of t = 0.
  struct Found {
    uint32_t sum;
    int begin, end;
  };
  Found run(const int16_t* low, const int16_t* high, int first, int last, int16_t* path) const {
    kSeamStates.best()(shape, cost, {low, high, first, last}, states);
    return trace_back({low, high, first, last}, path);
  }

  const uint32_t* state_row(int t) const { return states + ptrdiff_t{t} * state_stride(shape.width) + kStateMargin; }

  // The least of rows b, b - 1 and b + 1, in this order.
  static int least_near(const uint32_t* row, int b) {
    const int least = row[b - 1] < row[b] ? b - 1 : b;
    return row[b + 1] < row[least] ? b + 1 : least;
  }

  Found trace_back(const SeamLimits& limits, int16_t* path) const {
    const uint32_t* row = state_row(shape.length - 1);
    int end = limits.first;
    for (int b = limits.first; b <= limits.last; ++b) {
      if (row[least_near(row, b)] < row[least_near(row, end)]) end = b;
    }
    int b = least_near(row, end);
    const uint32_t sum = row[b];
    path[shape.length - 1] = static_cast<int16_t>(b);
    for (int t = shape.length - 2; t >= 0; --t) {
      b = least_near(state_row(t), b);
      path[t] = static_cast<int16_t>(b);
    }
    return {sum, b, end};
  }

  void keep(uint32_t sum, const int16_t* path) {
    if (sum >= best) return;
    best = sum;
    for (int t = 0; t < shape.length; ++t) best_path[t] = path[t];
  }

  // All closed paths within the limits that begin in rows [first, last].
  void search(const int16_t* low, const int16_t* high, int first, int last, int level) {
    if (first > last) return;
    int16_t* path = path_of(level);
    const Found open = run(low, high, first, last, path);
    if (open.sum >= best) return;
    if (open.begin == open.end) return keep(open.sum, path);
    const int middle = level < kFreeDivisions ? (open.begin + open.end) / 2 : (first + last) / 2;
    keep(run(low, high, middle, middle, path).sum, path);
    search(low, path, first, middle - 1, level + 1);
    search(path, high, middle + 1, last, level + 1);
  }
};

}  // namespace

size_t seam_search_bytes(StripShape shape) noexcept { return state_bytes(shape) + (kMaxDivisions + 2) * path_bytes(shape); }

uint32_t find_seam(StripShape shape, const uint16_t* cost, int margin, void* memory, int16_t* path) noexcept {
  char* bytes = static_cast<char*>(memory);
  Search search{shape, cost,      reinterpret_cast<uint32_t*>(bytes), reinterpret_cast<int16_t*>(bytes + state_bytes(shape)),
                path,  UINT32_MAX};
  const int low = margin, high = shape.width - 1 - margin;
  int16_t *lowest = search.path_of(kMaxDivisions), *highest = search.path_of(kMaxDivisions + 1);
  for (int t = 0; t < shape.length; ++t) {
    lowest[t] = static_cast<int16_t>(low);
    highest[t] = static_cast<int16_t>(high);
  }
  search.search(lowest, highest, low, high, 0);
  return search.best;
}

}  // namespace biseam::ring
