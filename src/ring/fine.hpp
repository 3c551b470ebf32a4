#pragma once

namespace biseam::ring {

// Fine samples are codes x 2^(kFineBits - depth): 1/64 code of 8 bits, 1/16 of 10, 1/4 of 12.  So everything that is added or
// mixed has one unit, whatever the depth.
inline constexpr int kFineBits = 14;

}  // namespace biseam::ring
