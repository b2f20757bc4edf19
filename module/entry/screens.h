// The module's windows.
#pragma once

namespace rvx {

// Gives the instruments' questions, editors, status windows and screens the windows of this
// process, if it has a QApplication; otherwise no window is ever made. Sheets can be had as PDF in
// both cases. A prompter that the host has set already stays. Any thread; further calls do nothing.
void InstallScreens();

}  // namespace rvx
