#pragma once

#include <gtest/gtest.h>

#include <string>

#include "biseam/biseam.h"
#include "support/captured_output.hpp"

namespace biseam::test {

// A created and configured engine over a configuration that the caller keeps.
class EngineSession {
 public:
  explicit EngineSession(StitchConfig& config) {
    EXPECT_EQ(0, QOR_Create_BI_Soft(&config, &engine_));
    if (engine_ != nullptr) {
      EXPECT_EQ(0, QOR_SetConfig_BI_Soft(&engine_));
    }
  }
  EngineSession(const EngineSession&) = delete;
  EngineSession& operator=(const EngineSession&) = delete;
  ~EngineSession() {
    if (engine_ != nullptr) {
      EXPECT_EQ(0, QOR_Destroy_BI_Soft(&engine_));
    }
  }

  // One frame; returns what was printed.
  std::string process(uint8_t* luma0, uint8_t* chroma0, uint8_t* luma1, uint8_t* chroma1, uint8_t* luma, uint8_t* chroma) {
    // Words that are not read hold an address that can't be.
    void* const wild = reinterpret_cast<void*>(8);
    void* in[16];
    void* out[16];
    for (int i = 0; i < 16; ++i) in[i] = out[i] = wild;
    in[2] = luma0;
    in[3] = luma1;
    in[6] = chroma0;
    in[7] = chroma1;
    out[4] = luma;
    out[12] = chroma;
    CapturedOutput output;
    EXPECT_EQ(0, QOR_Proc_BI_Soft(&engine_, in, out));
    return output.text();
  }

  StitchEngine* operator->() { return engine_; }
  StitchEngine& operator*() { return *engine_; }

 private:
  StitchEngine* engine_ = nullptr;
};

}  // namespace biseam::test
