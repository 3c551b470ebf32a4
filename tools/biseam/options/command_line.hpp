// Commands and their options.  command_line.cpp alone knows the parser behind them: its header takes longer to compile than all
// else that a command is made of.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/failure.hpp"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace biseam::tool {

// Where the value of an option goes.  What isn't given is left as it is.  optional<bool>: on or off.
using Target = std::variant<std::string*, std::vector<std::string>*, int*, std::vector<int>*, std::uint64_t*, double*,
                            std::optional<bool>*, std::optional<int>*, std::optional<std::int64_t>*, std::optional<double>*>;

// What else there is to say about an option, in any order.
class Option {
 public:
  explicit Option(CLI::Option& option) : option_(&option) {}

  Option& group(const std::string& heading);   // that --help lists it under
  Option& type(const std::string& name);       // stands for the value in --help
  Option& shown_as(const std::string& words);  // stands in --help for the type and for whether it is required
  Option& required();
  Option& count(int least, int most);  // of values
  Option& separator(char between);     // of several values in one word
  Option& one_word();                  // each time it is given
  Option& whole_number(std::int64_t low, std::int64_t high);
  Option& number(double low, double high);
  Option& among(const std::vector<std::string>& texts);
  Option& check(const char* (*rule)(const std::string& text));  // gives what the text breaks, or ""

  bool is_given() const;

 private:
  CLI::Option* option_;
};

class Command {
 public:
  explicit Command(CLI::App& parser) : parser_(&parser) {}

  // names: "-o,--output", or a word without dashes for what its place tells.  help: one line or some.
  Option option(const std::string& names, Target value, const std::string& help);
  // Without a value.  An exclamation mark before the name: it makes false.
  Option flag(const std::string& names, bool* value, const std::string& help);
  Option flag(const std::string& names, std::optional<bool>* place, bool value, const std::string& help);
  // One of the names of an enumeration, whose enumerators are counted from 0.
  template <class Enum>
  Option choice(const std::string& names, Enum* value, const std::vector<std::string>& texts, const std::string& help) {
    return choice(
        names, [value](int number) { *value = Enum(number); }, texts, help);
  }
  template <class Enum>
  Option choice(const std::string& names, std::optional<Enum>* value, const std::vector<std::string>& texts,
                const std::string& help) {
    return choice(
        names, [value](int number) { *value = Enum(number); }, texts, help);
  }

  // What the command does, once all options have their values.  Throws Failure.
  void does(std::function<ExitCode()> work) { work_ = std::move(work); }

  // One of these options that is given, with its dashes; empty: there is none.
  std::string given_in(const std::string& group) const;
  std::string given_of(const std::vector<std::string>& names) const;

 private:
  friend class CommandLine;
  using SetNumber = std::function<void(int)>;
  Option choice(const std::string& names, const SetNumber& set, const std::vector<std::string>& texts, const std::string& help);

  CLI::App* parser_;
  std::function<ExitCode()> work_;
};

class CommandLine {
 public:
  // version: the line that --version prints; footer: under the help of every command.
  CommandLine(const std::string& program, const std::string& about, const std::string& version, const std::string& footer);
  ~CommandLine();

  Command& add(const std::string& name, const std::string& about);

  // Does what the words behind the program's name ask for: runs a command, or prints help or the version.  Throws Failure
  // (usage) for what can't be understood, and what the command throws.
  ExitCode run(std::vector<std::string> words);

 private:
  std::unique_ptr<CLI::App> parser_;
  std::vector<std::unique_ptr<Command>> commands_;
};

}  // namespace biseam::tool
