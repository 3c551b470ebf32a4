#pragma once

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define BISEAM_TEST_LEAK_CHECK 1
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define BISEAM_TEST_LEAK_CHECK 1
#endif
#ifdef BISEAM_TEST_LEAK_CHECK
#include <sanitizer/lsan_interface.h>
#endif

namespace biseam::test {

// Blocks allocated while this lives may stay allocated at the end of the program.
class PurposefulLeaks {
 public:
#ifdef BISEAM_TEST_LEAK_CHECK
  PurposefulLeaks() { __lsan_disable(); }
  ~PurposefulLeaks() { __lsan_enable(); }
#else
  PurposefulLeaks() {}
  ~PurposefulLeaks() {}
#endif
  PurposefulLeaks(const PurposefulLeaks&) = delete;
  PurposefulLeaks& operator=(const PurposefulLeaks&) = delete;
};

}  // namespace biseam::test
