#include "commands/layout_options.hpp"

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

void add_layout_options(Command& command, Layout& layout, std::string& streams) {
  command.choice("--layout", &layout, {"auto", "side-by-side", "top-bottom"}, "of one input with both circles (by its shape)")
      .type("auto|side-by-side|top-bottom");
  command
      .option("--streams", &streams,
              "video streams of one input that hold a lens each, lens 0's first, counted from 0 among all its streams")
      .type("A,B");
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
