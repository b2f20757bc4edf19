// A data folder for demonstrations, with users, standards and constants.
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

// Returns DefaultDataFolder() with "-demo" added.
std::string DefaultDemoFolder();

// Returns whether the folder was filled by FillDemoFolder.
bool IsDemoFolder(const std::string& folder);

// Stores standards in a fresh folder; no effect if it has users. Called before instruments are
// looked for, since they read the standards when they start. Not on the window's thread. HostError
// if they can't be stored.
void WriteDemoStandards(Host& host);

// Stores constants and users in a fresh folder; no effect if it has users. Called after instruments
// were looked for. Not on the window's thread. HostError if they can't be stored.
void FillDemoFolder(Host& host);

}  // namespace torvell
