// The sheets that a program can get as PDF without a screen (instrument_scripting.h).
#pragma once

#include <optional>

namespace rvx {

enum class Paper { A4, Letter };

// What is on the sheet.
enum class SheetKind {
  CellConstants  // the constants in force at each calibration temperature
};

struct SheetRequest {
  SheetKind kind = SheetKind::CellConstants;
  std::optional<Paper> paper;  // nothing: the usual one of the user's country
};

}  // namespace rvx
