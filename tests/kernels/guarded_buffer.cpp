#include "kernels/guarded_buffer.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <new>
#include <vector>

namespace biseam::test {

namespace {

constexpr uint8_t kPoison = 0xA5;
constexpr std::size_t kAlignment = 128;

std::size_t page_size() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }
std::size_t round_up(std::size_t value, std::size_t unit) { return (value + unit - 1) / unit * unit; }

// Mappings that nobody uses, by their size: to map and protect pages anew for every buffer takes longer than most kernels.
std::map<std::size_t, std::vector<uint8_t*>>& idle_mappings() {
  static std::map<std::size_t, std::vector<uint8_t*>> mappings;
  return mappings;
}

// Open pages between two that can't be touched.
uint8_t* take_mapping(std::size_t bytes) {
  std::vector<uint8_t*>& idle = idle_mappings()[bytes];
  if (!idle.empty()) {
    uint8_t* const mapping = idle.back();
    idle.pop_back();
    return mapping;
  }
  void* const mapping = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapping == MAP_FAILED) throw std::bad_alloc();
  uint8_t* const first = static_cast<uint8_t*>(mapping);
  mprotect(first, page_size(), PROT_NONE);
  mprotect(first + bytes - page_size(), page_size(), PROT_NONE);
  return first;
}

// Each byte equals the next one: a comparison of memory, which is fast where tests aren't optimised too.
bool is_poison(const uint8_t* first, const uint8_t* last) {
  return first == last || (*first == kPoison && std::equal(first, last - 1, first + 1));
}

}  // namespace

GuardedBuffer::GuardedBuffer(std::size_t bytes, Placement placement, std::size_t shift) : bytes_(bytes) {
  const std::size_t page = page_size();
  const std::size_t before = placement == Placement::amid_poison ? kAlignment + shift : 0;
  const std::size_t open = round_up(before + bytes + kAlignment, page);
  mapped_ = open + 2 * page;
  mapping_ = take_mapping(mapped_);
  std::memset(mapping_ + page, kPoison, open);
  data_ = placement == Placement::at_end ? mapping_ + page + open - bytes : mapping_ + page + before;
}

GuardedBuffer::GuardedBuffer(GuardedBuffer&& other) noexcept
    : mapping_(other.mapping_), mapped_(other.mapped_), bytes_(other.bytes_), data_(other.data_) {
  other.mapping_ = nullptr;
}

GuardedBuffer::~GuardedBuffer() {
  if (mapping_ != nullptr) idle_mappings()[mapped_].push_back(mapping_);
}

bool GuardedBuffer::poison_is_whole() const {
  const std::size_t page = page_size();
  return is_poison(mapping_ + page, data_) && is_poison(data_ + bytes_, mapping_ + mapped_ - page);
}

}  // namespace biseam::test
