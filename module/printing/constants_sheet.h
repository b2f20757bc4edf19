// The sheet with the cell constants in force.
#pragma once

#include <string>
#include <vector>

#include "boundary/instrument_scripting.h"
#include "module/printing/page.h"
#include "platform/date.h"

namespace rvx {

struct ConstantsSheet {
  InstrumentIdentity instrument;
  std::string instrumentId;
  std::string portAddress;  // "RVX 0h"
  std::vector<CellConstants> constants;
  std::string user;          // who prints; may be empty
  platform::Date printTime;  // local time
};

// The document's name: "Current Cell Calibration Constants (RVX 0h : Cell 7)".
std::string GetTitle(const ConstantsSheet& sheet);

void DrawSheet(PrintPage& page, const ConstantsSheet& sheet);

}  // namespace rvx
