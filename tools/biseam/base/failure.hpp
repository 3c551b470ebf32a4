// What ends a run early, and what the tool says besides its results.
#pragma once

#include <stdexcept>
#include <string>

namespace biseam::tool {

// Exit codes of every command.
enum class ExitCode {
  done = 0,
  different = 1,  // compare: the pictures differ by more than was allowed
  usage = 2,      // the command line can't be understood
  input = 3,      // a file can't be read or holds no picture
  output = 4,     // the result can't be written
  settings = 5,   // camera profile, lens or blend values that can't work
  system = 6,     // the machine has no memory or no thread left
  interrupted = 130
};

// One line without a newline that names the file or value at fault.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& line) : std::runtime_error(line), code_(code) {}
  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

// "path: what: reason" with the reason of errno.
Failure system_failure(ExitCode code, const std::string& path, const std::string& what);

// One line on standard error, made printable, as names in it may come from anywhere; standard output carries results only.
void notice(const std::string& line);

}  // namespace biseam::tool
