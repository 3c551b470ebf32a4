#include "base/unfinished.hpp"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace biseam::tool {
namespace {

constexpr int kMost = 16;
std::atomic<char*> paths[kMost];  // who takes one out owns it
std::atomic<int> being_created = 0;
std::atomic<bool> is_ending = false;  // files are being removed for the last time
static_assert(std::atomic<char*>::is_always_lock_free && std::atomic<int>::is_always_lock_free &&
              std::atomic<bool>::is_always_lock_free);

// While a file is there that has no place in the list yet: this thread takes no signals, and who removes files in other threads
// waits.  Once that one has begun, a file would stay: the end of the program is waited for in place of making it.
class Creation {
 public:
  Creation() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, &before_);
    ++being_created;
    if (!is_ending) return;
    --being_created;
    for (;;) ::poll(nullptr, 0, -1);
  }
  Creation(const Creation&) = delete;
  Creation& operator=(const Creation&) = delete;
  ~Creation() {
    const int reason = errno;
    --being_created;
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    errno = reason;
  }

 private:
  sigset_t before_;
};

int place_for(char* path) {
  for (int k = 0; k < kMost; ++k) {
    char* none = nullptr;
    if (paths[k].compare_exchange_strong(none, path)) return k;
  }
  return -1;
}

}  // namespace

int UnfinishedFile::create(std::string& pattern) {
  char* const path = ::strdup(pattern.c_str());
  if (!path) throw std::bad_alloc();
  const Creation creation;  // asks for no memory, whose lack would remove the files
  const int descriptor = ::mkostemp(path, O_CLOEXEC);
  std::memcpy(pattern.data(), path, pattern.size());
  if (descriptor >= 0) place_ = place_for(path);
  if (place_ < 0) std::free(path);
  return descriptor;
}

void UnfinishedFile::forget() {
  if (place_ >= 0) std::free(paths[place_].exchange(nullptr));
  place_ = -1;
}

void remove_unfinished_files() {
  is_ending = true;
  while (being_created != 0) ::poll(nullptr, 0, 1);  // which signal handlers may call
  for (std::atomic<char*>& path : paths) {
    if (const char* taken = path.exchange(nullptr)) ::unlink(taken);  // not freed: the program ends
  }
}

}  // namespace biseam::tool
