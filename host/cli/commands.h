// Each family of commands adds its own to the program.
#pragma once

#include "host/cli/parser.h"

namespace torvell {

void AddReadingCommands(const Command& program);    // discover, status, monitor
void AddPortCommands(const Command& program);       // ports
void AddConstantsCommands(const Command& program);  // constants
void AddSettingsCommands(const Command& program);   // settings
void AddStandardsCommands(const Command& program);  // standards
void AddTrayCommands(const Command& program);       // tray
void AddRunCommand(const Command& program);         // run
void AddArchiveCommands(const Command& program);    // samples, messages
void AddServiceCommands(const Command& program);    // service
void AddCalibrateCommand(const Command& program);   // calibrate
void AddSimulateCommands(const Command& program);   // simulate
void AddPrintCommands(const Command& program);      // print
void AddDesktopCommand(const Command& program);     // desktop
void AddUserCommands(const Command& program);       // users

// Adds the options before the command and all families, in the order of the help.
void DescribeCommandLine(const Command& program, GlobalOptions& options);

}  // namespace torvell
