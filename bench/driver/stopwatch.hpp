#pragma once

#include <string>
#include <utility>
#include <vector>

namespace biseam::bench {

// Figures by name, in the order in which they were taken.
using Figures = std::vector<std::pair<std::string, double>>;

// Runs from its construction.
class Stopwatch {
 public:
  Stopwatch();

  // Adds NAME.wall_ms, NAME.cpu_ms (all threads of the process) and NAME.faults (page faults that needed no reading).
  void stop(const std::string& name, Figures& figures) const;

 private:
  double wall_ms_, cpu_ms_;
  long faults_;
};

// Adds the most memory the process has held so far.
void add_peak_memory(const std::string& name, Figures& figures);

}  // namespace biseam::bench
