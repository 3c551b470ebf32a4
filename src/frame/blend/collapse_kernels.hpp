#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"
#include "frame/blend/collapse_rows.hpp"

// The versions behind collapse_rows.hpp.
namespace biseam {

using CollapseRow = void(const CollapseRows& rows, int32_t* out, ptrdiff_t count) noexcept;

extern const Variants<CollapseRow> kCollapseRowOn, kCollapseRowBetween;

}  // namespace biseam
