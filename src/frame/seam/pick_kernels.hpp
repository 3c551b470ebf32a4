#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"

// The versions behind pick.hpp.
namespace biseam {

// Every sample becomes its nearest float.
using RoundRow = void(int32_t* row, ptrdiff_t count) noexcept;
extern const Variants<RoundRow> kRoundRow;

}  // namespace biseam
