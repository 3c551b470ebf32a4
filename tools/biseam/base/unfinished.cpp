#include "base/unfinished.hpp"

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace biseam::tool {
namespace {

constexpr int kMost = 16;
std::atomic<char*> paths[kMost];  // who takes one out owns it
static_assert(std::atomic<char*>::is_always_lock_free);

}  // namespace

void UnfinishedFile::name(const std::string& path) {
  char* const copy = ::strdup(path.c_str());
  if (!copy) throw std::bad_alloc();
  for (int k = 0; k < kMost; ++k) {
    char* none = nullptr;
    if (!paths[k].compare_exchange_strong(none, copy)) continue;
    place_ = k;
    return;
  }
  std::free(copy);
}

void UnfinishedFile::forget() {
  if (place_ >= 0) std::free(paths[place_].exchange(nullptr));
  place_ = -1;
}

void remove_unfinished_files() {
  for (std::atomic<char*>& path : paths) {
    if (const char* taken = path.exchange(nullptr)) ::unlink(taken);  // not freed: the program ends
  }
}

}  // namespace biseam::tool
