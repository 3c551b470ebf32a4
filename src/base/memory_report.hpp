#pragma once

#include <cstdio>

namespace biseam {

// Told what memory could not be had; null where nobody is told.
using MemoryReport = void (*)(const char* text);

// The C interface tells it on standard output, without a newline, as its contract says; the checked interface prints nothing.
inline void print_missing_memory(const char* text) { std::fputs(text, stdout); }

}  // namespace biseam
