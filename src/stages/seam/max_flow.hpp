#pragma once

#include <cstdint>

#include "biseam/records.h"

namespace biseam {

// Maximum flow by two search trees that grow from the terminals until they touch; the graph holds the residual afterwards.
// orphan_stack: scratch of stack_size words; at least as many as the graph has arcs, or nodes if those are fewer, else nothing
// is done.  Allocates nothing.  Which of several minimum cuts the nodes' sides describe depends on the order of the active
// list, the orphan stack and the arc lists.
float max_flow(SeamGraph& graph, int32_t* orphan_stack, int32_t stack_size);

}  // namespace biseam
