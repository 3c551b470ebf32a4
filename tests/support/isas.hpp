#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/isa.hpp"

namespace biseam::test {

// Instruction sets that this host can run, for tests of every version: testing::ValuesIn(isas_here()), isa_name.
inline std::vector<Isa> isas_here() {
  std::vector<Isa> isas;
  for (const Isa isa : kIsas) {
    if (can_run(isa)) isas.push_back(isa);
  }
  return isas;
}

// Leaves the program with the set it had.
class KeptIsa : public testing::Test {
 protected:
  ~KeptIsa() override { limit_isa(before_); }

 private:
  const Isa before_ = isa_in_use();
};

inline std::string isa_name(const testing::TestParamInfo<Isa>& info) { return name_of(info.param); }

}  // namespace biseam::test
