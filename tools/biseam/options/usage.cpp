#include "options/usage.hpp"

#include <algorithm>

namespace biseam::tool {
namespace {

// Letters added, left out, replaced or exchanged with their neighbour to make b of a.
std::size_t distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> before, last(b.size() + 1), row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] != b[j - 1])});
      const bool exchanged = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (exchanged) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before = last;
    last = row;
  }
  return last[b.size()];
}

// The known name most like the given one, or none where a third of it would have to change.  A beginning counts as a slip.
std::string nearest(const std::string& given, const std::vector<std::string>& known) {
  const std::size_t most = std::max<std::size_t>(1, given.size() / 3);
  std::string found;
  std::size_t least = most + 1;
  for (const std::string& name : known) {
    const bool begins = given.size() >= 2 && name.starts_with(given);
    const std::size_t far = begins ? 1 : distance(given, name);
    if (far >= least) continue;
    least = far;
    found = name;
  }
  return found;
}

}  // namespace

std::string command_trouble(const std::string& given, const std::vector<std::string>& known) {
  const std::string meant = nearest(given, known);
  if (!meant.empty()) return given + ": no such command; is " + meant + " meant?";
  std::string all;
  for (const std::string& name : known) all += (all.empty() ? "" : ", ") + name;
  return (given.empty() ? "a command is wanted: " : given + ": no such command; there are ") + all;
}

std::string option_trouble(std::string given, const std::string& command, const std::vector<std::string>& known) {
  given.resize(std::min(given.find('='), given.size()));
  const std::string meant = nearest(given, known), name = command.empty() ? "" : " of " + command;
  return given + ": no such option" + name + (meant.empty() ? "; --help lists them" : "; is " + meant + " meant?");
}

// "Could not convert: --crf = x"
std::string conversion_trouble(const std::string& line) {
  const std::string before = "Could not convert: ", between = " = ";
  const std::size_t at = line.find(between);
  if (!line.starts_with(before) || at == line.npos) return line;
  return line.substr(before.size(), at - before.size()) + ": '" + line.substr(at + between.size()) +
         "' is not a number it can take";
}

// "IN: At Most 2 required but received 3", "--crop: At least 4 required but received 3", "--width: 1 required COLUMNS missing"
std::string count_trouble(const std::string& line) {
  const std::string most = ": At Most ", least = ": At least ", between = " required but received ", one = ": 1 required ";
  const auto said = [&](const std::string& before, const std::string& rule) -> std::string {
    const std::size_t at = line.find(before), given = line.find(between);
    if (at == line.npos || given == line.npos) return "";
    const std::size_t digits = at + before.size(), number = given + between.size();
    const std::string verb = line.substr(number) == "1" ? " is" : " are";
    return line.substr(0, at) + ": " + line.substr(number) + verb + " given, " + line.substr(digits, given - digits) + rule;
  };
  for (const std::string& text : {said(most, " are the most"), said(least, " are wanted")}) {
    if (!text.empty()) return text;
  }
  const std::size_t lacking = line.find(one);
  return lacking == line.npos ? line : line.substr(0, lacking) + ": its value is missing";
}

}  // namespace biseam::tool
