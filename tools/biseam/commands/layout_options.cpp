#include "commands/layout_options.hpp"

#include <algorithm>
#include <charconv>

#include "base/failure.hpp"

namespace biseam::tool {
namespace {

[[noreturn]] void refuse_streams(const std::string& rule) { throw Failure(ExitCode::usage, "--streams: " + rule); }

// "0,2"
LensStreams parse_streams(const std::string& text) {
  LensStreams streams{};
  const char* const end = text.data() + text.size();
  const auto [comma, first_error] = std::from_chars(text.data(), end, streams[0]);
  if (first_error == std::errc() && comma != end && *comma == ',') {
    const auto [after, error] = std::from_chars(comma + 1, end, streams[1]);
    const bool differ = streams[0] >= 0 && streams[1] >= 0 && streams[0] != streams[1];
    if (error == std::errc() && after == end && differ) return streams;
  }
  refuse_streams("'" + text + "': the numbers of two streams with a comma between are wanted, from 0");
}

}  // namespace

CLI::Validator one_of(std::vector<std::string> names) {
  const auto number = [names = std::move(names)](std::string& text) -> std::string {
    const auto found = std::find(names.begin(), names.end(), text);
    if (found == names.end()) {
      std::string rule = "must be " + names.front();
      for (std::size_t k = 1; k < names.size(); ++k) rule += (k + 1 < names.size() ? ", " : " or ") + names[k];
      return rule;
    }
    text = std::to_string(found - names.begin());
    return "";
  };
  return CLI::Validator(number, "");
}

void add_layout_options(CLI::App& command, Layout& layout, std::string& streams) {
  command.add_option("--layout", layout, "of one input with both circles (by its shape)")
      ->type_name("auto|side-by-side|top-bottom")
      ->transform(one_of({"auto", "side-by-side", "top-bottom"}));
  command
      .add_option("--streams", streams,
                  "video streams of one input that hold a lens each, lens 0's first, counted from 0 among all its streams")
      ->type_name("A,B");
}

StreamChoice choose_streams(const std::string& streams, Layout layout, std::size_t inputs, bool is_raw) {
  StreamChoice choice{std::nullopt, layout == Layout::automatic};
  if (streams.empty()) return choice;
  if (layout != Layout::automatic) refuse_streams("with --layout one stream holds both circles");
  if (inputs > 1) refuse_streams("only for one input");
  if (is_raw) refuse_streams("raw frames are one stream");
  choice.wanted = parse_streams(streams);
  return choice;
}

}  // namespace biseam::tool
