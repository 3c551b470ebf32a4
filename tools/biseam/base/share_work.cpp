#include "base/share_work.hpp"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace biseam::tool {

void share_work(int pieces, int threads, const std::function<void(int)>& work) {
  std::atomic<int> next{0};
  std::mutex mutex;
  std::exception_ptr trouble;
  const auto run = [&] {
    try {
      for (int piece = next++; piece < pieces; piece = next++) work(piece);
    } catch (...) {
      const std::lock_guard lock(mutex);
      if (!trouble) trouble = std::current_exception();
      next = pieces;
    }
  };
  {
    std::vector<std::jthread> helpers;
    helpers.reserve(std::size_t(std::max(threads, 1)));
    try {
      while (int(helpers.size()) + 1 < std::min(threads, pieces)) helpers.emplace_back(run);
    } catch (const std::system_error&) {  // those that could be started do it
    } catch (const std::bad_alloc&) {     // likewise
    }
    run();
  }
  if (trouble) std::rethrow_exception(trouble);
}

}  // namespace biseam::tool
