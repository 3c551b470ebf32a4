// The manual page has the options that --help has, of every command, and no others.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>

#include "tool/support/places.hpp"
#include "tool/support/process.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::test {
namespace {

using Names = std::set<std::string>;
using Options = std::map<std::string, Names>;  // by command; "" is the tool itself

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::string help(const std::vector<std::string>& command) {
  std::vector<std::string> words = {kTool};
  words.insert(words.end(), command.begin(), command.end());
  words.push_back("--help");
  const Finished finished = run(words);
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  return finished.out;
}

// "  -o,--output FILE REQUIRED   text" and "  --no-360-metadata{false}    text"
Names options_of_help(const std::string& text) {
  Names names;
  for (const std::string& line : lines_of(text)) {
    if (line.rfind("  -", 0) != 0) continue;
    std::istringstream in(line.substr(2, line.find_first_of(" {", 2) - 2));
    for (std::string name; std::getline(in, name, ',');) names.insert(name);
  }
  return names;
}

// The lines under "Subcommands:" that begin with a name.
Names commands_of_help(const std::string& text) {
  Names names;
  bool inside = false;
  for (const std::string& line : lines_of(text)) {
    if (inside && line.empty()) break;
    if (inside && line.size() > 3 && line[2] != ' ') names.insert(line.substr(2, line.find(' ', 2) - 2));
    inside = inside || line == "Subcommands:";
  }
  return names;
}

const Options& told_by_help() {
  static const Options all = [] {
    Options options{{"", options_of_help(help({}))}};
    for (const std::string& command : commands_of_help(help({}))) options[command] = options_of_help(help({command}));
    return options;
  }();
  return all;
}

// ".It Fl o , Fl -output Ar file" names -o and --output.
Names options_of_item(const std::string& line) {
  Names names;
  std::istringstream in(line);
  for (std::string word; in >> word;) {
    if (word == "Fl" && in >> word) names.insert("-" + word);
  }
  return names;
}

// ".Ss biseam stitch" begins a command; what stands before the first one holds for all.
Options told_by_page(const std::string& page) {
  Options options{{"", {}}};
  std::string command;
  for (const std::string& line : lines_of(page)) {
    const std::string heading = ".Ss biseam ";
    if (line.rfind(".Sh ", 0) == 0) command = "";
    if (line.rfind(heading, 0) == 0) command = line.substr(heading.size());
    if (line.rfind(".Ss ", 0) == 0) {
      options[command] = options[""];
      options[command].erase("--version");  // the tool's own
    }
    if (line.rfind(".It Fl ", 0) == 0) options[command].merge(options_of_item(line));
  }
  return options;
}

Names differences(const Options& help, const Options& page) {
  Names found;
  const auto compare = [&](const Options& here, const Options& there, const std::string& where) {
    for (const auto& [command, names] : here) {
      const auto other = there.find(command);
      if (other == there.end()) found.insert(command + ": not in " + where);
      for (const std::string& name : names) {
        if (other != there.end() && !other->second.contains(name)) found.insert(command + " " + name + ": not in " + where);
      }
    }
  };
  compare(help, page, "the page");
  compare(page, help, "--help");
  return found;
}

std::string page_text() {
  const std::string text = read_bytes(std::string(kSourceFolder) + "/docs/biseam.1");
  EXPECT_FALSE(text.empty());
  return text;
}

Names trouble_with(const std::vector<std::string>& lines) {
  std::string page;
  for (const std::string& line : lines) page += line + "\n";
  return differences(told_by_help(), told_by_page(page));
}

TEST(Manual, HasEveryOptionOfEveryCommandAndNoOther) {
  EXPECT_EQ(differences(told_by_help(), told_by_page(page_text())), Names());
}

TEST(Manual, IsComparedWithWhatTheToolReallyTakes) {
  EXPECT_EQ(told_by_help().size(), 9u);
  EXPECT_EQ(told_by_help().at("tag"), (Names{"-h", "--help", "-o", "--output"}));
  EXPECT_TRUE(told_by_help().at("stitch").contains("--no-360-metadata"));
  EXPECT_TRUE(told_by_help().at("stitch").contains("--layout"));
}

TEST(Manual, ComparisonNoticesEveryOptionThatIsRemoved) {
  const std::vector<std::string> lines = lines_of(page_text());
  int removed = 0;
  for (std::size_t k = 0; k < lines.size(); ++k) {
    if (lines[k].rfind(".It Fl ", 0) != 0) continue;
    std::vector<std::string> rest = lines;
    rest.erase(rest.begin() + std::ptrdiff_t(k));
    EXPECT_FALSE(trouble_with(rest).empty()) << lines[k];
    ++removed;
  }
  EXPECT_GT(removed, 50);
}

TEST(Manual, ComparisonNoticesAnOptionThatIsAddedToAnyCommand) {
  const std::vector<std::string> lines = lines_of(page_text());
  for (std::size_t k = 0; k < lines.size(); ++k) {
    if (lines[k].rfind(".Ss ", 0) != 0) continue;
    std::vector<std::string> more = lines;
    more.insert(more.begin() + std::ptrdiff_t(k) + 1, ".It Fl -sideways Ar n");
    const std::string command = lines[k].substr(std::string(".Ss biseam ").size());
    EXPECT_EQ(trouble_with(more), Names{command + " --sideways: not in --help"});
  }
}

TEST(Manual, ComparisonNoticesCommands) {
  std::vector<std::string> lines = lines_of(page_text());
  const auto at = std::find(lines.begin(), lines.end(), ".Ss biseam tag");
  ASSERT_NE(at, lines.end());
  *at = ".Ss biseam label";
  const Names found = trouble_with(lines);
  EXPECT_TRUE(found.contains("tag: not in the page"));
  EXPECT_TRUE(found.contains("label: not in --help"));
}

}  // namespace
}  // namespace biseam::test
