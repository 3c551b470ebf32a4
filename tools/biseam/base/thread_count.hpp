#pragma once

namespace biseam::tool {

// Threads that the machine runs at once, at least 1.
int processors();

// Threads that share the work on a picture; more than 16 gain nothing.
int usual_threads();

}  // namespace biseam::tool
