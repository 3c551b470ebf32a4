// What the system refused.
#pragma once

#include <cstddef>

namespace biseam::tool {

// Ends the program with one line and the exit code for a lack of memory; unfinished files are removed.  For a failed
// allocation wherever it is: the libraries below don't survive one (x264 crashes, decoders call it damage).
[[noreturn]] void end_without_memory(std::size_t bytes) noexcept;

// That a thread could not be started, by whichever library.
void note_refused_thread();
bool was_thread_refused();

}  // namespace biseam::tool
