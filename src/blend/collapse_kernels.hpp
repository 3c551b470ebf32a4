#pragma once

#include <cstddef>
#include <cstdint>

#include "blend/collapse_rows.hpp"
#include "cpu/variants.hpp"

// The versions behind collapse_rows.hpp.
namespace biseam {

using CollapseRow = void(const CollapseRows& rows, int32_t* out, ptrdiff_t count) noexcept;

extern const Variants<CollapseRow> kCollapseRowOn, kCollapseRowBetween;

}  // namespace biseam
