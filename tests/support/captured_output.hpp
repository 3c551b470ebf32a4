#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "support/temporary_file.hpp"

namespace biseam::test {

// What is written to standard output while this lives.
class CapturedOutput {
 public:
  CapturedOutput() {
    std::fflush(stdout);
    saved_ = dup(STDOUT_FILENO);
    const int file = open(file_.path(), O_WRONLY | O_TRUNC);
    dup2(file, STDOUT_FILENO);
    close(file);
  }
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;
  ~CapturedOutput() { restore(); }

  // Ends the capture.
  std::string text() {
    restore();
    const auto bytes = file_.bytes();
    return std::string(bytes.begin(), bytes.end());
  }

 private:
  void restore() {
    if (saved_ < 0) return;
    std::fflush(stdout);
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
    saved_ = -1;
  }

  TemporaryFile file_;
  int saved_;
};

}  // namespace biseam::test
