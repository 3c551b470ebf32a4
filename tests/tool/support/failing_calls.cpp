// Loaded before the C library into the tool: one request for memory or for a thread fails between the beginning and the end of
// main(), whichever library asks.  From the environment: FAILING_ALLOCATION and FAILING_THREAD, numbers counted from 0, and
// COUNTED_CALLS, a file that gets "allocations threads" when main() returns.  The tool takes all requests for memory itself and
// asks the C library by the names that are defined here.
#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace {

// The next definition of a name, looked up at the first call; without a lock, as looking up may ask for memory.
template <class Result, class... Values>
class Function {
 public:
  auto operator()(const char* name) {
    if (!found_) found_ = reinterpret_cast<Result (*)(Values...)>(dlsym(RTLD_NEXT, name));
    return found_;
  }

 private:
  Result (*found_)(Values...) = nullptr;
};

using Main = int (*)(int, char**, char**);

std::atomic<bool> counting{false};
std::atomic<long> allocations{0}, threads{0};
long failing_allocation = -1, failing_thread = -1;
Main real_main = nullptr;

bool refuses_memory() {
  if (!counting || allocations++ != failing_allocation) return false;
  errno = ENOMEM;
  return true;
}

long number_of(const char* variable) {
  const char* text = std::getenv(variable);
  return text ? std::atol(text) : -1;
}

int counted_main(int count, char** words, char** environment) {
  failing_allocation = number_of("FAILING_ALLOCATION");
  failing_thread = number_of("FAILING_THREAD");
  counting = true;
  const int code = real_main(count, words, environment);
  counting = false;
  if (const char* path = std::getenv("COUNTED_CALLS")) {
    if (std::FILE* file = std::fopen(path, "w")) {
      std::fprintf(file, "%ld %ld\n", allocations.load(), threads.load());
      std::fclose(file);
    }
  }
  return code;
}

}  // namespace

extern "C" {

void* __libc_malloc(std::size_t bytes) {
  static Function<void*, std::size_t> real;
  return refuses_memory() ? nullptr : real("malloc")(bytes);
}

void* __libc_calloc(std::size_t count, std::size_t bytes) {
  static Function<void*, std::size_t, std::size_t> real;
  return refuses_memory() ? nullptr : real("calloc")(count, bytes);
}

void* __libc_realloc(void* block, std::size_t bytes) {
  static Function<void*, void*, std::size_t> real;
  return refuses_memory() ? nullptr : real("realloc")(block, bytes);
}

void* __libc_memalign(std::size_t alignment, std::size_t bytes) {
  static Function<void*, std::size_t, std::size_t> real;
  return refuses_memory() ? nullptr : real("memalign")(alignment, bytes);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*entry)(void*), void* argument) {
  static Function<int, pthread_t*, const pthread_attr_t*, void* (*)(void*), void*> real;
  if (counting && threads++ == failing_thread) return EAGAIN;
  return real("pthread_create")(thread, attributes, entry, argument);
}

int __libc_start_main(Main main, int count, char** words, void (*init)(), void (*end)(), void (*end_loader)(), void* stack) {
  static Function<int, Main, int, char**, void (*)(), void (*)(), void (*)(), void*> real;
  real_main = main;
  return real("__libc_start_main")(counted_main, count, words, init, end, end_loader, stack);
}
}
