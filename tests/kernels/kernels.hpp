#pragma once

#include <vector>

#include "kernels/kernel.hpp"

// Every kernel with more than one version, by stage.
namespace biseam::test {

std::vector<Kernel> blend_kernels();
std::vector<Kernel> exchange_kernels();
std::vector<Kernel> format_kernels();
std::vector<Kernel> light_kernels();
std::vector<Kernel> near_kernels();
std::vector<Kernel> remap_kernels();
std::vector<Kernel> ring_kernels();
std::vector<Kernel> sample_kernels();
std::vector<Kernel> strip_kernels();
std::vector<Kernel> seam_kernels();
std::vector<Kernel> pyramid_kernels();
std::vector<Kernel> table_kernels();

std::vector<Kernel> all_kernels();

}  // namespace biseam::test
