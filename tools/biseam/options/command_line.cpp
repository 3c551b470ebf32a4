#include "options/command_line.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <concepts>
#include <limits>
#include <sstream>

#include "options/usage.hpp"

namespace biseam::tool {
namespace {

std::string fault(const std::string& text, const std::string& rule) { return rule.empty() ? "" : "'" + text + "' " + rule; }

template <class Number>
CLI::Validator in_range(Number low, Number high) {
  const auto check = [low, high](const std::string& text) -> std::string {
    Number value{};
    if (CLI::detail::lexical_cast(text, value) && value >= low && value <= high) return "";
    std::ostringstream rule;
    rule.precision(std::numeric_limits<double>::digits10);
    rule << "must be a " << (std::integral<Number> ? "whole number" : "number") << ", " << low << " to " << high;
    return fault(text, rule.str());
  };
  return CLI::Validator(check, "");
}

// Empty: it is one of them.
std::string choice_fault(const std::string& text, const std::vector<std::string>& texts) {
  if (std::find(texts.begin(), texts.end(), text) != texts.end()) return "";
  std::string rule = "must be " + texts.front();
  for (std::size_t k = 1; k < texts.size(); ++k) rule += (k + 1 < texts.size() ? ", " : " or ") + texts[k];
  return fault(text, rule);
}

CLI::Validator one_of(const std::vector<std::string>& texts) {
  return CLI::Validator([texts](const std::string& text) { return choice_fault(text, texts); }, "");
}

// The number of a text in place of it.
CLI::Validator number_among(const std::vector<std::string>& texts) {
  const auto number = [texts](std::string& text) -> std::string {
    const std::string wrong = choice_fault(text, texts);
    if (wrong.empty()) text = std::to_string(std::find(texts.begin(), texts.end(), text) - texts.begin());
    return wrong;
  };
  return CLI::Validator(number, "");
}

struct AddOption {
  CLI::App& parser;
  const std::string &names, &help;

  template <class Value>
  CLI::Option* operator()(Value* value) const {
    return parser.add_option(names, *value, help);
  }
  CLI::Option* operator()(std::optional<bool>* value) const {
    const auto set = [value](const std::string& text) { *value = text == "on"; };
    return parser.add_option_function<std::string>(names, set, help)->check(one_of({"on", "off"}));
  }
};

template <class IsOfKind>
std::string given_option(const CLI::App& parser, const IsOfKind& is_of_kind) {
  for (const CLI::Option* option : parser.get_options()) {
    if (option->count() > 0 && is_of_kind(*option)) return option->get_name();
  }
  return "";
}

std::vector<std::string> commands_of(const CLI::App& parser) {
  std::vector<std::string> names;
  for (const CLI::App* command : parser.get_subcommands([](const CLI::App*) { return true; }))
    names.push_back(command->get_name());
  return names;
}

std::vector<std::string> options_of(const CLI::App& parser) {
  std::vector<std::string> names;
  for (const CLI::Option* option : parser.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

bool is_option(const std::string& word) { return word.size() > 1 && word[0] == '-'; }

std::string trouble(const CLI::App& parser, const CLI::ParseError& error) {
  const auto code = CLI::ExitCodes(error.get_exit_code());
  if (code == CLI::ExitCodes::ConversionError) return conversion_trouble(error.what());
  // Values of an option that there isn't are taken for inputs, of which there are too many then.
  const bool is_miscounted = code == CLI::ExitCodes::ArgumentMismatch;
  if (code != CLI::ExitCodes::RequiredError && code != CLI::ExitCodes::ExtrasError && !is_miscounted) return error.what();
  const std::vector<CLI::App*> chosen = parser.get_subcommands();
  const CLI::App& command = chosen.empty() ? parser : *chosen.front();
  const std::vector<std::string> unknown = command.remaining();
  const auto option = std::find_if(unknown.begin(), unknown.end(), is_option);
  if (chosen.empty() && !unknown.empty() && !is_option(unknown.front())) {
    return command_trouble(unknown.front(), commands_of(parser));
  }
  if (option != unknown.end()) {
    return option_trouble(*option, chosen.empty() ? "" : command.get_name(), options_of(command));
  }
  if (is_miscounted) return count_trouble(error.what());
  if (chosen.empty()) return command_trouble("", commands_of(parser));
  return unknown.empty() ? error.what() : unknown.front() + ": is one argument too many for " + command.get_name();
}

}  // namespace

Option& Option::group(const std::string& heading) {
  option_->group(heading);
  return *this;
}

Option& Option::type(const std::string& name) {
  option_->type_name(name);
  return *this;
}

Option& Option::shown_as(const std::string& words) {
  option_->option_text(words);
  return *this;
}

Option& Option::required() {
  option_->required();
  return *this;
}

Option& Option::count(int least, int most) {
  option_->expected(least, most);
  return *this;
}

Option& Option::separator(char between) {
  option_->delimiter(between);
  return *this;
}

Option& Option::one_word() {
  option_->allow_extra_args(false);
  return *this;
}

Option& Option::whole_number(std::int64_t low, std::int64_t high) {
  option_->check(in_range(low, high));
  return *this;
}

Option& Option::number(double low, double high) {
  option_->check(in_range(low, high));
  return *this;
}

Option& Option::among(const std::vector<std::string>& texts) {
  option_->check(one_of(texts));
  return *this;
}

Option& Option::check(const char* (*rule)(const std::string& text)) {
  option_->check([rule](const std::string& text) { return fault(text, rule(text)); });
  return *this;
}

bool Option::is_given() const { return option_->count() > 0; }

Option Command::option(const std::string& names, Target value, const std::string& help) {
  return Option(*std::visit(AddOption{*parser_, names, help}, value));
}

Option Command::flag(const std::string& names, bool* value, const std::string& help) {
  if (!names.starts_with('!')) return Option(*parser_->add_flag(names, *value, help));
  const auto clear = [value] { *value = false; };  // --help would show the parser's own way as --no-mark{false}
  return Option(*parser_->add_flag_callback(names.substr(1), clear, help));
}

Option Command::flag(const std::string& names, std::optional<bool>* place, bool value, const std::string& help) {
  return Option(*parser_->add_flag_callback(
      names, [place, value] { *place = value; }, help));
}

Option Command::choice(const std::string& names, const SetNumber& set, const std::vector<std::string>& texts,
                       const std::string& help) {
  return Option(*parser_->add_option_function<int>(names, set, help)->transform(number_among(texts)));
}

std::string Command::given_in(const std::string& group) const {
  return given_option(*parser_, [&](const CLI::Option& option) { return option.get_group() == group; });
}

std::string Command::given_of(const std::vector<std::string>& names) const {
  return given_option(*parser_, [&](const CLI::Option& option) {
    return std::find(names.begin(), names.end(), option.get_name()) != names.end();
  });
}

CommandLine::CommandLine(const std::string& program, const std::string& about, const std::string& version,
                         const std::string& footer)
    : parser_(std::make_unique<CLI::App>(about, program)) {
  parser_->require_subcommand(1);
  parser_->set_version_flag("--version", version, "Print the version and exit");
  parser_->footer(footer);
}

CommandLine::~CommandLine() = default;

Command& CommandLine::add(const std::string& name, const std::string& about) {
  commands_.push_back(std::make_unique<Command>(*parser_->add_subcommand(name, about)));
  return *commands_.back();
}

ExitCode CommandLine::run(std::vector<std::string> words) {
  std::reverse(words.begin(), words.end());  // the parser takes the last word first
  try {
    parser_->parse(std::move(words));
  } catch (const CLI::Success& answer) {
    return ExitCode(parser_->exit(answer));
  } catch (const CLI::ParseError& error) {
    throw Failure(ExitCode::usage, trouble(*parser_, error));
  }
  for (const std::unique_ptr<Command>& command : commands_) {
    if (command->parser_->parsed()) return command->work_();
  }
  return ExitCode::done;
}

}  // namespace biseam::tool
