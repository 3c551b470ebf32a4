#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "base/variants.hpp"
#include "kernels/guarded_buffer.hpp"

// Kernels checked and measured by the same code: a kernel's case makes its buffers and calls the version it is given.
namespace biseam::test {

// random: any value of the range asked for; lowest, highest: its ends; ends: either end, sample by sample.
enum class Content { random, lowest, highest, ends };

// xorshift of 32 bits.  It begins at once and needs no division, as calls are many and some processors are emulated.
class RandomBits {
 public:
  using result_type = uint32_t;

  // Seeds that follow each other begin far apart.  Nothing comes after a state of 0.
  explicit RandomBits(uint32_t seed) : state_(seed * 2654435761u) { state_ = state_ == 0 ? 1 : state_; }

  static constexpr uint32_t min() { return 1; }
  static constexpr uint32_t max() { return UINT32_MAX; }

  uint32_t operator()() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 17;
    state_ ^= state_ << 5;
    return state_;
  }

 private:
  uint32_t state_;
};

// One call of one version.  Buffers come out the same for every version, as they are made in the same order from one seed.
class KernelCall {
 public:
  struct Settings {
    int size;  // what it counts is the case's business
    Content content = Content::random;
    Placement placement = Placement::amid_poison;
    std::size_t shift = 0;  // samples off alignment
    uint32_t seed = 1;
  };
  // measure: instead of once, the call runs as often as it takes to be timed.
  explicit KernelCall(const Settings& settings, bool measure = false)
      : settings_(settings), random_(settings.seed), measure_(measure) {}

  int size() const { return settings_.size; }

  // count samples in [low, high], filled as the settings say.  Their bytes are compared too: a kernel leaves its input alone.
  template <class T>
  T* input(std::size_t count, std::type_identity_t<T> low, std::type_identity_t<T> high);

  // count samples of poison, to be written by the kernel.
  template <class T>
  T* output(std::size_t count) {
    return static_cast<T*>(allocate(count, sizeof(T)));
  }

  // A number in [low, high], for what is no sample: strides, weights, positions.
  int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
  float real(float low, float high) { return std::uniform_real_distribution<float>(low, high)(random_); }

  // Runs the kernel.  Once for each case, after its buffers are made.
  template <class Run>
  void run(Run run) {
    if (measure_) {
      nanoseconds_ = measure_time(run);
    } else {
      run();
    }
  }

  const std::vector<GuardedBuffer>& buffers() const { return buffers_; }
  double nanoseconds() const { return nanoseconds_; }

 private:
  void* allocate(std::size_t count, std::size_t sample_bytes);
  static double measure_time(const std::function<void()>& run);

  Settings settings_;
  RandomBits random_;
  bool measure_;
  double nanoseconds_ = 0;
  std::vector<GuardedBuffer> buffers_;
};

template <class T>
T* KernelCall::input(std::size_t count, std::type_identity_t<T> low, std::type_identity_t<T> high) {
  T* samples = static_cast<T*>(allocate(count, sizeof(T)));
  for (std::size_t i = 0; i < count; ++i) {
    switch (settings_.content) {
      case Content::lowest:
        samples[i] = low;
        break;
      case Content::highest:
        samples[i] = high;
        break;
      case Content::ends:
        samples[i] = (random_() & 1) != 0 ? high : low;
        break;
      default:
        if constexpr (std::is_floating_point_v<T>) {
          samples[i] = std::uniform_real_distribution<T>(low, high)(random_);
        } else {
          static_assert(sizeof(T) <= sizeof(uint32_t));
          const uint64_t values = static_cast<uint64_t>(static_cast<int64_t>(high) - low) + 1;
          samples[i] = static_cast<T>(low + static_cast<int64_t>(random_() * values >> 32));
        }
    }
  }
  return samples;
}

struct Kernel {
  std::string name;
  std::vector<Isa> isas;  // sets with a version of their own, scalar first
  std::function<void(KernelCall&, Isa)> call;
  std::vector<int> sizes;
  int bench_size;
  double pixels_per_size;  // what a size of 1 stands for when times are given per pixel
};

// Sizes around the widths of all vectors, odd and even.
std::vector<int> usual_sizes();

// A kernel of size samples a row, measured at bench_size.  call makes the buffers and runs the version once through
// KernelCall::run.
template <class Function>
Kernel make_kernel(std::string name, const Variants<Function>& variants, void (*call)(KernelCall&, Function*),
                   int bench_size = 1920, double pixels_per_size = 1.0, std::vector<int> sizes = usual_sizes()) {
  Kernel kernel{std::move(name), {}, nullptr, std::move(sizes), bench_size, pixels_per_size};
  for (const Isa isa : kIsas) {
    if (variants.of(isa) != nullptr && can_run(isa)) kernel.isas.push_back(isa);
  }
  kernel.call = [variants, call](KernelCall& c, Isa isa) { call(c, variants.of(isa)); };
  return kernel;
}

// What is wrong with a version, in words; empty when it equals the scalar one over all sizes, contents and placements.
std::string find_difference(const Kernel& kernel, Isa isa, uint32_t seed);

// Nanoseconds per pixel of each of kernel.isas, from interleaved runs (medians).
std::vector<double> measure(const Kernel& kernel);

}  // namespace biseam::test
