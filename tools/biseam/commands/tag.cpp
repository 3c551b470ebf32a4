#include <memory>
#include <string>

#include "base/failure.hpp"
#include "commands/commands.hpp"
#include "tag/tag_file.hpp"

namespace biseam::tool {

void add_tag_command(CLI::App& app, int& exit_code) {
  CLI::App* command = app.add_subcommand("tag", "mark a finished panorama, picture or clip, so that players and sites know it");
  struct Names {
    std::string from, to;
  };
  const auto names = std::make_shared<Names>();
  command
      ->add_option(
          "FILE", names->from,
          "JPEG, PNG, MP4, MOV or MKV, twice as wide as high; nothing is encoded anew, and what is marked already stays")
      ->type_name("")
      ->required();
  command->add_option("-o,--output", names->to, "marked copy (FILE itself, which is replaced when all is written)")
      ->type_name("FILE");
  command->callback([names, &exit_code] {
    if (tag_file(names->from, names->to)) return;
    notice("interrupted");
    exit_code = int(ExitCode::interrupted);
  });
}

}  // namespace biseam::tool
