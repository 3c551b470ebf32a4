#pragma once

#include <cstdio>
#include <functional>
#include <map>
#include <string>

#include "driver/stopwatch.hpp"

namespace biseam::bench {

// What a driver can be asked for; the argument is what follows the command's name on its line.
using Commands = std::map<std::string, std::function<Figures(const std::string& argument)>>;

// Answers the lines of the standard input, each by a line of JSON: the suite runs all contestants at once and asks them in
// turn, so that each sees the machine in the same state.  Whatever else is printed while a server lives goes nowhere.
class Server {
 public:
  Server();
  ~Server() { std::fclose(answers_); }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  // Until the input ends; main's result.
  int serve(const Commands& commands) const;

 private:
  std::FILE* answers_;
};

}  // namespace biseam::bench
