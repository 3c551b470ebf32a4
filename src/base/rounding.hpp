#pragma once

#include <cfenv>

namespace biseam {

// Tables, details and costs are made of floats that are rounded to the nearest.  While it lives, so does the calling thread,
// and those that it starts; then the thread rounds again as it did.
class RoundToNearest {
 public:
  RoundToNearest() noexcept : mode_(std::fegetround()) {
    if (mode_ != FE_TONEAREST) std::fesetround(FE_TONEAREST);
  }
  ~RoundToNearest() {
    if (mode_ != FE_TONEAREST) std::fesetround(mode_);
  }
  RoundToNearest(const RoundToNearest&) = delete;
  RoundToNearest& operator=(const RoundToNearest&) = delete;

 private:
  int mode_;
};

}  // namespace biseam
