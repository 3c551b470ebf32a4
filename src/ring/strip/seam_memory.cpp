#include "ring/strip/seam_memory.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace biseam::ring {

namespace {

constexpr int kFrames = SeamMemory::kFrames;
// What a difference costs that a blend hides, and noise of two codes makes; and of a sample's distance from the middle.
constexpr int kNoise = 160, kPull = 16;
constexpr size_t kLine = 64;

size_t whole_lines(size_t bytes) { return (bytes + kLine - 1) / kLine * kLine; }
size_t path_bytes(StripShape shape) { return whole_lines(sizeof(int16_t) * static_cast<size_t>(shape.length)); }
size_t cost_bytes(StripShape shape) { return whole_lines(sizeof(uint16_t) * static_cast<size_t>(strip_samples(shape))); }
size_t bytes_kept(StripShape shape) { return kLine + kFrames * (path_bytes(shape) + cost_bytes(shape)); }

bool can_have_been(SeamMemory::Count count) {
  return count.filled >= 0 && count.filled <= kFrames && count.next >= 0 && count.next < kFrames &&
         (count.filled == kFrames || count.next == count.filled);
}

bool is_valid_path(const char* kept, StripShape shape, int margin) {
  const auto row_at = [kept](int t) {
    int16_t row;
    std::memcpy(&row, kept + sizeof row * static_cast<size_t>(t), sizeof row);
    return row;
  };
  int before = row_at(shape.length - 1);
  for (int t = 0; t < shape.length; ++t) {
    const int row = row_at(t);
    if (row < margin || row > shape.width - 1 - margin || row - before > 1 || before - row > 1) return false;
    before = row;
  }
  return true;
}

bool are_valid_costs(const char* kept, StripShape shape) {
  uint16_t most = 0;
  for (ptrdiff_t i = 0; i < strip_samples(shape); ++i) {
    uint16_t cost;
    std::memcpy(&cost, kept + sizeof cost * static_cast<size_t>(i), sizeof cost);
    most = std::max(most, cost);
  }
  return most <= kMostSeamCost;
}

}  // namespace

size_t SeamMemory::kept_bytes() const noexcept { return bytes_kept(shape); }

size_t seam_memory_bytes(StripShape shape) noexcept { return bytes_kept(shape) + cost_bytes(shape); }

SeamMemory lay_out_seam_memory(StripShape shape, void* block) noexcept {
  std::memset(block, 0, seam_memory_bytes(shape));
  char* piece = static_cast<char*>(block);
  SeamMemory memory{
      .shape = shape, .count = reinterpret_cast<SeamMemory::Count*>(piece), .paths = {}, .costs = {}, .sum = nullptr};
  piece += kLine;
  for (int16_t*& path : memory.paths) {
    path = reinterpret_cast<int16_t*>(piece);
    piece += path_bytes(shape);
  }
  for (uint16_t*& cost : memory.costs) {
    cost = reinterpret_cast<uint16_t*>(piece);
    piece += cost_bytes(shape);
  }
  memory.sum = reinterpret_cast<uint16_t*>(piece);
  return memory;
}

void forget(SeamMemory& memory) noexcept {
  *memory.count = {};
  std::fill_n(memory.sum, strip_samples(memory.shape), uint16_t{0});
}

void remember_costs(SeamMemory& memory, const uint16_t* cost) noexcept {
  const int filled = memory.count->filled, next = memory.count->next;
  uint16_t *const kept = memory.costs[next], *const sum = memory.sum;
  const uint16_t counts = filled == kFrames ? 0xFFFF : 0;  // whether the frame that goes did
  for (ptrdiff_t i = 0; i < strip_samples(memory.shape); ++i) {
    const uint16_t now = std::min<uint16_t>(cost[i], kMostSeamCost);
    sum[i] = static_cast<uint16_t>(sum[i] + now - (kept[i] & counts));
    kept[i] = now;
  }
}

void fill_lasting_cost(const SeamMemory& memory, uint16_t* cost) noexcept {
  const StripShape shape = memory.shape;
  const int frames = std::min(memory.count->filled + 1, kFrames), noise = frames * kNoise, pull = frames * kPull;
  for (int t = 0; t < shape.length; ++t) {
    const ptrdiff_t at = ptrdiff_t{t} * shape.width;
    for (int b = 0; b < shape.width; ++b) {
      const int away = std::abs(2 * b - (shape.width - 1));
      cost[at + b] = static_cast<uint16_t>(std::min(std::max(memory.sum[at + b] - noise, 0) + (pull * away >> 1), 65535));
    }
  }
}

void remember_path(SeamMemory& memory, const int16_t* rows) noexcept {
  int32_t &filled = memory.count->filled, &next = memory.count->next;
  std::copy_n(rows, memory.shape.length, memory.paths[next]);
  next = (next + 1) % kFrames;
  filled = std::min(filled + 1, kFrames);
}

void mean_path(const SeamMemory& memory, int32_t* path) noexcept {
  const int filled = memory.count->filled;
  for (int t = 0; t < memory.shape.length; ++t) {
    int32_t sum = 0;
    for (int i = 0; i < filled; ++i) sum += memory.paths[i][t];
    path[t] = (sum << 16) / filled;
  }
}

bool are_valid_seams(const SeamMemory& memory, int margin, const char* kept) noexcept {
  SeamMemory::Count count;
  std::memcpy(&count, kept, sizeof count);
  if (!can_have_been(count)) return false;
  const char *const paths = kept + kLine, *const costs = paths + kFrames * path_bytes(memory.shape);
  for (size_t i = 0; i < static_cast<size_t>(count.filled); ++i) {
    if (!is_valid_path(paths + i * path_bytes(memory.shape), memory.shape, margin)) return false;
    if (!are_valid_costs(costs + i * cost_bytes(memory.shape), memory.shape)) return false;
  }
  return true;
}

void go_on(SeamMemory& memory, const char* kept) noexcept {
  std::memcpy(static_cast<void*>(memory.count), kept, memory.kept_bytes());
  std::fill_n(memory.sum, strip_samples(memory.shape), uint16_t{0});
  for (int i = 0; i < memory.count->filled; ++i) {
    for (ptrdiff_t k = 0; k < strip_samples(memory.shape); ++k) {
      memory.sum[k] = static_cast<uint16_t>(memory.sum[k] + memory.costs[i][k]);
    }
  }
}

}  // namespace biseam::ring
