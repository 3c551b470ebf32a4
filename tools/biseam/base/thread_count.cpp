#include "base/thread_count.hpp"

#include <algorithm>
#include <thread>

namespace biseam::tool {

int processors() { return std::max(1, int(std::thread::hardware_concurrency())); }

int usual_threads() { return std::min(processors(), 16); }

}  // namespace biseam::tool
