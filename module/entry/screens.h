// The module's windows.
#pragma once

namespace rvx {

// Registers the module's windows for questions, editors, status windows and screens of instruments,
// if this process has a QApplication; otherwise no window is ever made. Sheets can be made as PDF
// in both cases. A prompter that the host has already set stays. Any thread; further calls do
// nothing.
void InstallScreens();

}  // namespace rvx
