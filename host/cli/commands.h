// Each family of commands adds its subcommands to the parser; the chosen one sets
// Invocation::command.
#pragma once

#include "host/cli/options.h"

namespace torvell {

void AddReadingCommands(CLI::App& app, Invocation& invocation);    // discover, status, monitor
void AddPortCommands(CLI::App& app, Invocation& invocation);       // ports
void AddConstantsCommands(CLI::App& app, Invocation& invocation);  // constants
void AddSettingsCommands(CLI::App& app, Invocation& invocation);   // settings
void AddStandardsCommands(CLI::App& app, Invocation& invocation);  // standards
void AddTrayCommands(CLI::App& app, Invocation& invocation);       // tray
void AddRunCommand(CLI::App& app, Invocation& invocation);         // run
void AddArchiveCommands(CLI::App& app, Invocation& invocation);    // samples, messages
void AddServiceCommands(CLI::App& app, Invocation& invocation);    // service
void AddCalibrateCommand(CLI::App& app, Invocation& invocation);   // calibrate
void AddSimulateCommands(CLI::App& app, Invocation& invocation);   // simulate
void AddDesktopCommand(CLI::App& app, Invocation& invocation);     // desktop
void AddUserCommands(CLI::App& app, Invocation& invocation);       // users

}  // namespace torvell
