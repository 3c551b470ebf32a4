// One function and one file per command.  Each adds its subcommand; the callback does the work when the command was chosen,
// throws Failure, and may set exit_code on success.
#pragma once

#include <CLI/CLI.hpp>

namespace biseam::tool {

void add_stitch_command(CLI::App& app, int& exit_code);
void add_analyse_command(CLI::App& app);
void add_calibrate_command(CLI::App& app);
void add_scene_command(CLI::App& app);
void add_compare_command(CLI::App& app, int& exit_code);
void add_contact_sheet_command(CLI::App& app);
void add_tag_command(CLI::App& app, int& exit_code);
void add_view_command(CLI::App& app);

}  // namespace biseam::tool
