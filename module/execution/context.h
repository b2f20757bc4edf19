// The context text that an action is started with: "tray,position", both from 0.
#pragma once

#include <optional>
#include <string>

namespace rvx {

class C_RVX;

struct ActionPlace {
  int tray = 0;
  int position = 0;
};

// Reads a context; returns nothing if it has no comma. A part that is not a number counts as 0, and
// what follows a number is ignored, as the C runtime reads numbers.
std::optional<ActionPlace> ParseContext(const std::string& context);

// Whether it is tray 0 and one of the positions of the instrument's tray. Takes the configuration
// lock.
bool IsTrayPlace(C_RVX& instrument, const ActionPlace& place);

}  // namespace rvx
