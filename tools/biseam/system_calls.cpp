// Requests for memory and for threads, of this program and of every library it uses, pass here.  Sanitizers take them
// themselves.
#include <cstddef>

#include "base/sanitized.hpp"
#include "base/shortage.hpp"

#if defined(__GLIBC__) && !defined(BISEAM_SANITIZED)

#include <dlfcn.h>
#include <pthread.h>

#include <cerrno>

extern "C" {

void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* block, std::size_t bytes);
void* __libc_memalign(std::size_t alignment, std::size_t bytes);
}

namespace {

void* needed(void* block, std::size_t bytes) {
  if (!block && bytes != 0) biseam::tool::end_without_memory(bytes);
  return block;
}

}  // namespace

extern "C" {

void* malloc(std::size_t bytes) { return needed(__libc_malloc(bytes), bytes); }
void* calloc(std::size_t count, std::size_t bytes) { return needed(__libc_calloc(count, bytes), count * bytes); }
void* realloc(void* block, std::size_t bytes) { return needed(__libc_realloc(block, bytes), bytes); }
void* memalign(std::size_t alignment, std::size_t bytes) { return needed(__libc_memalign(alignment, bytes), bytes); }
void* aligned_alloc(std::size_t alignment, std::size_t bytes) { return memalign(alignment, bytes); }

int posix_memalign(void** to, std::size_t alignment, std::size_t bytes) {
  const bool is_power = alignment != 0 && (alignment & (alignment - 1)) == 0;
  if (!is_power || alignment % sizeof(void*) != 0) return EINVAL;
  *to = memalign(alignment, bytes);
  return 0;
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*entry)(void*), void* argument) {
  using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
  const int status = create(thread, attributes, entry, argument);
  if (status != 0) biseam::tool::note_refused_thread();
  return status;
}
}

#endif
