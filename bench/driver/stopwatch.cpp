#include "driver/stopwatch.hpp"

#include <sys/resource.h>

#include <ctime>
#include <fstream>

namespace biseam::bench {

namespace {

double milliseconds(clockid_t clock) {
  timespec time;
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

rusage usage() {
  rusage all;
  getrusage(RUSAGE_SELF, &all);
  return all;
}

}  // namespace

// The clocks are read last here and first in stop(), so that reading the faults isn't measured.
Stopwatch::Stopwatch() {
  faults_ = usage().ru_minflt;
  cpu_ms_ = milliseconds(CLOCK_PROCESS_CPUTIME_ID);
  wall_ms_ = milliseconds(CLOCK_MONOTONIC);
}

void Stopwatch::stop(const std::string& name, Figures& figures) const {
  const double wall = milliseconds(CLOCK_MONOTONIC) - wall_ms_;
  const double cpu = milliseconds(CLOCK_PROCESS_CPUTIME_ID) - cpu_ms_;
  const long faults = usage().ru_minflt - faults_;
  figures.emplace_back(name + ".wall_ms", wall);
  figures.emplace_back(name + ".cpu_ms", cpu);
  figures.emplace_back(name + ".faults", static_cast<double>(faults));
}

// Not ru_maxrss, which starts with what the parent held when it made this process.
void add_peak_memory(const std::string& name, Figures& figures) {
  const std::string field = "VmHWM:";
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(field)) figures.emplace_back(name + ".kib", std::stod(line.substr(field.size())));
  }
}

}  // namespace biseam::bench
