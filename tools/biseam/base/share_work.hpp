#pragma once

#include <functional>

namespace biseam::tool {

// Runs work(0) to work(pieces - 1), begun in order, on so many threads, of which this is one.  What threads that can't be
// started should have done is done by the others.  Returns when all has ended; rethrows the first exception of any of them,
// after which no further piece is begun.
void share_work(int pieces, int threads, const std::function<void(int)>& work);

}  // namespace biseam::tool
