#include <memory>
#include <string>

#include "base/failure.hpp"
#include "commands/commands.hpp"
#include "tag/tag_file.hpp"

namespace biseam::tool {

void add_tag_command(CommandLine& line) {
  Command& command = line.add("tag", "mark a finished panorama, picture or clip, so that players and sites know it");
  struct Names {
    std::string from, to;
  };
  const auto names = std::make_shared<Names>();
  command
      .option("FILE", &names->from,
              "JPEG, PNG, MP4, MOV or MKV, twice as wide as high; nothing is encoded anew, and what is marked already stays")
      .type("")
      .required();
  command.option("-o,--output", &names->to, "marked copy (FILE itself, which is replaced when all is written)").type("FILE");
  command.does([names] {
    if (tag_file(names->from, names->to)) return ExitCode::done;
    notice("interrupted");
    return ExitCode::interrupted;
  });
}

}  // namespace biseam::tool
