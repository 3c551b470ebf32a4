#include "commands/commands.hpp"

namespace biseam::tool {

void add_stitch_command(CLI::App&, int&) {}

}  // namespace biseam::tool
