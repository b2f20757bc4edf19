// The module's windows.
#pragma once

namespace rvx {

// Puts the window's dialogs behind the instruments' questions, editors and status windows, if the
// process has a QApplication; otherwise no window is ever made. Sheets can be had as PDF in both
// cases. A prompter that the host has set already stays. Any thread; further calls do nothing.
void InstallScreens();

}  // namespace rvx
