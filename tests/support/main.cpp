// The main function of every test program.
#include <gtest/gtest.h>

#include "support/forced_isa.hpp"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  biseam::test::force_isa_by_environment();
  return RUN_ALL_TESTS();
}
