#pragma once

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>

namespace biseam::test {

// Random input from a printed seed.  BISEAM_TEST_SEED repeats a run.
class RandomSource {
 public:
  RandomSource() : seed_(choose()), engine_(seed_) { std::cout << "seed " << seed_ << "\n"; }

  int between(int low, int high) { return std::uniform_int_distribution<int>(low, high)(engine_); }
  float real_between(float low, float high) { return std::uniform_real_distribution<float>(low, high)(engine_); }
  uint8_t byte() { return static_cast<uint8_t>(engine_()); }
  uint32_t word() { return static_cast<uint32_t>(engine_()); }

 private:
  static uint32_t choose() {
    const char* given = std::getenv("BISEAM_TEST_SEED");
    return given != nullptr ? static_cast<uint32_t>(std::strtoul(given, nullptr, 0)) : std::random_device{}();
  }

  uint32_t seed_;
  std::mt19937 engine_;
};

}  // namespace biseam::test
