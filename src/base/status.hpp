#pragma once

namespace biseam {

// What a stage reports to its caller.  The exported functions turn it into the codes of the C interface.
enum class Status { ok, mismatch, no_memory };

constexpr int code_of(Status status) { return status == Status::ok ? 0 : -1; }

}  // namespace biseam
