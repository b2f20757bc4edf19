// The module's windows.
#pragma once

namespace rvx {

// Puts the window's dialogs behind the instruments' questions, editors and status windows, if the
// process has a QApplication; otherwise nothing changes, and no window is ever made. Any thread;
// once is enough, and further calls do nothing. A host that answers questions in its own way sets
// its prompter behind the call of CreateInstruments.
void InstallScreens();

}  // namespace rvx
