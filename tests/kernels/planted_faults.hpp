#pragma once

#include <vector>

#include "kernels/kernel.hpp"

namespace biseam::test {

// A right kernel, and wrong ones of which every one has to be caught.
Kernel right_kernel();
std::vector<Kernel> wrong_kernels();

}  // namespace biseam::test
