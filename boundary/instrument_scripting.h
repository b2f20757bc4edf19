// What a program may do with an instrument without a screen: readings, constants, settings by key,
// the tests of a sample action, calibrations, the manual commands. An addition of this module to
// the host's interface: the host finds it by a dynamic_cast of its ViscometerInstrument, and gets
// null from a module that has none. Rights are checked here, where the change is made.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "boundary/access_levels.h"
#include "boundary/action.h"
#include "boundary/calibration_records.h"
#include "boundary/printed_sheets.h"
#include "boundary/scripting_problem.h"
#include "boundary/viscometer_instrument.h"
#include "platform/date.h"
#include "platform/event.h"

namespace rvx {

struct InstrumentIdentity {
  std::string portName;    // "COM1"
  int32_t address = 0;     // 0 to 15
  std::string archiveKey;  // key of the settings text in the instrument archive, "RVXCOM1:0"
  std::string modelCode;   // "1" to "4"
  std::string model;       // "RVX-D TX"
  uint8_t optionByte = 0;
  std::vector<std::string> options;  // texts of the option bits that are set
  std::string firmware;
  std::string serialNumber;
  bool simulated = false;
};

// The last status frame, converted; all values belong to that one frame.
struct InstrumentReadings {
  uint64_t sequence = 0;  // status frames so far; 0: none has come yet, nothing else counts
  platform::Microseconds time{0};  // when the frame came, MonotonicTime
  uint16_t intCount = 0;
  double temperature = 0.0;                 // degrees C
  std::optional<double> targetTemperature;  // degrees C; nothing when control is off
  double plusVss = 0.0;                     // V
  double minusVss = 0.0;                    // V
  double speed = 0.0;                       // rpm/1000
  uint8_t machineStatus = 0;
  std::string machineStatusText;
  uint8_t switchByte = 0;
  uint8_t operation = 0;
  std::string operationText;
  uint8_t errorCode = 0;
  bool countsDown = false;  // direction of `seconds`
  int32_t seconds = 0;      // remaining or elapsed time of the present operation
};

// The constants of one calibration temperature.
struct CellConstants {
  double temperature = 0.0;  // degrees C
  double b0 = 0.0, b1 = 0.0, b2 = 0.0;
  platform::Date date;
  bool empty = true;  // all three are exactly 0
};

// One setting that a person may see or change.
struct InstrumentSetting {
  std::string key;                // "injection-time"
  std::string value;              // with a point as decimal sign
  std::string unit;               // "s", "degC", ""
  std::string accepts;            // what may be written, for messages: "0 to 255"
  std::string description;        // one line
  int32_t level = kLevelManager;  // needed for a change; kLevelUnreachable: nobody changes it
};

// One test of a sample action.
struct SampleTest {
  double temperature = -20.0;            // degrees C
  std::optional<int32_t> rotorOnTime;    // s; the instrument's default when absent
  std::optional<double> knownViscosity;  // mPa*s; Verify Known Viscosity only
};

// The parameters of a sample action.
struct SampleTests {
  std::vector<SampleTest> tests;         // 1 to 20
  std::optional<int32_t> injectionTime;  // s, 0 to 255
  std::optional<int32_t> coolDownTime;   // s, 0 to 255
};

enum class ServiceSwitch { Injection, Motor, Cooling, AutoReport };
enum class ServiceAxis { Tube, Table, Trolley };

// The operations of a program, with the lifetime of the instrument. Any thread but the
// user-interface thread; they throw nothing themselves, but pass on what a call to the host throws.
// A ScriptingResult is empty when the operation was done, else it says why not; then nothing has
// changed unless it is said here. Those that change something check the rights of the user who is
// logged in, require that no tray is running unless it is paused, and store the change in the
// archive.
class InstrumentScripting {
 public:
  virtual ~InstrumentScripting() = default;

  // What the instrument has reported so far. At once.
  virtual InstrumentIdentity GetIdentity() = 0;
  // At once.
  virtual InstrumentReadings GetReadings() = 0;
  // Waits for a status frame with a sequence above `after`: false at the deadline.
  virtual bool WaitForReadings(uint64_t after, const platform::Deadline& deadline) = 0;
  // What an error byte of a status means, for people; empty for 0.
  virtual std::string GetErrorText(uint8_t errorCode) = 0;

  // The constants of the temperatures in use (eight, or nine with the low temperature option). At
  // once.
  virtual std::vector<CellConstants> GetCellConstants() = 0;
  // Level 50. `temperature` must be one of them; the values are rounded to whole numbers as a
  // calibration's are. Dated now, or as never calibrated if all are 0.
  virtual ScriptingResult SetCellConstants(double temperature, double b0, double b1, double b2) = 0;

  // Finds the runs and fits constants to them; changes nothing. All temperatures at once need level
  // 100. Too few runs for a fit are no problem: the summary has no fit then. Waits for the archive.
  virtual ScriptingResult FitCalibration(const CalibrationQuestion& question,
                                         CalibrationSummary& summary) = 0;
  // Level 10, and 100 for all temperatures (nothing as the temperature). Puts the constants that
  // the texts contain into force, dated now. Refused while a tray runs, paused or not. When the
  // archive refuses, the constants are in force all the same, with the old date (for all
  // temperatures: of the first one), and closing the instrument stores them if it can by then.
  virtual ScriptingResult SaveCalibration(std::optional<double> temperature,
                                          const std::string& b0Text, const std::string& b1Text,
                                          const std::string& b2Text) = 0;
  // At which temperatures the stored standards conform to ASTM D5293. Changes nothing; reads the
  // group file and, the first time, the archive.
  virtual ScriptingResult GetConformity(ConformityReport& report) = 0;
  // Level 10. Fills the tray with the conforming standards of the temperatures and empties the rest
  // of it. Refused while a tray runs, paused or not. Does not store: the host stores the instrument
  // after it.
  virtual ScriptingResult MakeCalibrationTray(const CalibrationTrayRequest& request) = 0;

  // In the order in which people see them. At once.
  virtual std::vector<InstrumentSetting> GetSettings() = 0;
  // Pairs of key and value. Level 50 (100 for some). All or nothing.
  virtual ScriptingResult SetSettings(
      const std::vector<std::pair<std::string, std::string>>& values) = 0;
  // Level 50 (100 if it changes a setting that needs 100). Refuses a text that LoadSettingsText
  // would not take as a whole.
  virtual ScriptingResult ImportSettings(const std::string& text) = 0;

  // A printed sheet as the bytes of a PDF file. Every level, as reading needs none. Refused if the
  // sheet can't be drawn; `pdf` is unchanged then. Works without a display.
  virtual ScriptingResult MakePdf(const SheetRequest& request, std::string& pdf) = 0;

  // The tests of a sample action, with the defaults filled in; nothing for other actions. At once.
  virtual std::optional<SampleTests> GetSampleTests(Action& action) = 0;
  // Gives a sample action its tests without a dialog and marks it as configured. A running tray is
  // no reason to refuse, and nothing is stored, since the action may be in no tray yet. Level 10.
  // Refuses more than 20 tests, a Measure Viscosity temperature without constants, values out of
  // range, an action that runs or has run, and, below level 50, times that differ from the
  // instrument's.
  virtual ScriptingResult SetSampleTests(Action& action, const SampleTests& tests) = 0;
  // An estimate of the running time of a sample action, in seconds; 0 for other actions. At once.
  virtual int32_t EstimateSeconds(Action& action) = 0;

  // Manual commands, level 10. They block until the instrument has replied or its response time-out
  // is over; the result says what it replied. All but AbortOperation are refused as Busy while a
  // tray runs or is paused; none of them stores anything.
  //
  // Says why such a command would be refused at present, if so. A caller that starts one of the
  // service actions by hand asks this first: a tray starts the same actions, so they can't refuse
  // by themselves. At once.
  virtual ScriptingResult MayServe() = 0;
  virtual ScriptingResult SetHomeFlag() = 0;
  virtual ScriptingResult SetTemperature(std::optional<double> celsius) = 0;  // nothing: off
  // Does for a simulated cell what a chiller does for a real one: with the temperature control off,
  // the cell goes to this temperature and stays there until a test gives it another. NotAllowed on
  // a real instrument.
  virtual ScriptingResult ChillSimulatedCell(double celsius) = 0;
  virtual ScriptingResult SetSwitch(ServiceSwitch which, bool on) = 0;
  // `target` in steps from home. Refused on a model without the service.
  virtual ScriptingResult JogAxis(ServiceAxis axis, int32_t target) = 0;
  virtual ScriptingResult AbortOperation() = 0;
  // The failures of the instrument's self test, for people; empty when all passed.
  virtual ScriptingResult RunSelfTest(std::vector<std::string>& failures) = 0;
};

}  // namespace rvx
