// A data folder to try everything on.
#pragma once

#include <QString>
#include <string>
#include <vector>

#include "host/core/host.h"

namespace torvell {

struct DemoUser {
  const char* name;
  const char* password;
  int32_t level;
  const char* may;  // completes "may ..."
};
const std::vector<DemoUser>& DemoUsers();

// $XDG_DATA_HOME/torvell-demo or the like, beside the real folder's default.
std::string DefaultDemoFolder();

// The folder was filled by FillDemoFolder.
bool IsDemoFolder(const std::string& folder);

// Gives a fresh folder its standards: nothing is done if it has users. Before the instruments are
// looked for, since they read the standards when they begin. Not on the window's thread. HostError
// if it can't be stored.
void WriteDemoStandards(Host& host);

// Gives a fresh folder its constants and users: nothing is done if it has users. The instruments
// have been looked for. Not on the window's thread. HostError if it can't be stored.
void FillDemoFolder(Host& host);

}  // namespace torvell
