// The module's windows.
#pragma once

namespace rvx {

// Puts the window's dialogs behind the instruments' questions, editors and status windows, if the
// process has a QApplication; otherwise nothing changes, and no window is ever made. A prompter
// that the host has set already stays. Any thread; further calls do nothing.
void InstallScreens();

}  // namespace rvx
