// One function and one file per command, which describes its options and what it does.
#pragma once

#include "options/command_line.hpp"

namespace biseam::tool {

void add_stitch_command(CommandLine& line);
void add_analyse_command(CommandLine& line);
void add_calibrate_command(CommandLine& line);
void add_scene_command(CommandLine& line);
void add_compare_command(CommandLine& line);
void add_contact_sheet_command(CommandLine& line);
void add_tag_command(CommandLine& line);
void add_view_command(CommandLine& line);

}  // namespace biseam::tool
