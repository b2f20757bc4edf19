// The tray as a CSV file: one line for each test of a position.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/tray/csv.h"

namespace torvell {

// Columns of the file, in order; values are column numbers from 1.
enum class TrayColumn {
  Position = 1,
  Action,
  SampleId,
  Temperature,
  RotorOnTime,
  KnownViscosity,
  InjectionTime,
  CoolDownTime
};
const std::vector<std::string>& TrayFileHeading();
std::string TrayColumnName(TrayColumn column);

inline constexpr int kMaxTestsOfSample = 20;

// An absent value takes the instrument's default.
struct TrayFileTest {
  int line = 0;
  std::optional<double> temperature;     // degrees C
  std::optional<int> rotorOnTime;        // s, 30 to 255
  std::optional<double> knownViscosity;  // mPa*s, verify only
};

struct TrayFilePosition {
  int line = 0;
  int position = 0;     // from 1
  bool verify = false;  // Verify Known Viscosity, else Measure Viscosity
  std::string sampleId;
  std::optional<int> injectionTime;  // s, 0 to 255
  std::optional<int> coolDownTime;   // s, 0 to 255
  std::vector<TrayFileTest> tests;   // 1 to 20
};

// Reads the file for a tray of `trayPositions` positions. Returns the positions in rising order.
// The result must not be used if anything was added to `problems`.
std::vector<TrayFilePosition> ParseTrayFile(std::string_view text, int trayPositions,
                                            std::vector<FileProblem>& problems);

// Returns the file for these positions; ParseTrayFile reads the same back.
std::string FormatTrayFile(const std::vector<TrayFilePosition>& positions);

}  // namespace torvell
