// Everything that is remembered about an instrument.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "boundary/host.h"
#include "module/calibration/calibration_temperatures.h"
#include "module/instrument/lock_ranks.h"
#include "module/instrument/test_record.h"
#include "platform/date.h"
#include "platform/lock.h"

namespace rvx {

// For HasCellConstants: any temperature.
inline constexpr double kAnyTemperature = 1.7976931348623157e+308;
// A value of samplesSinceCheck that is this or more means that no check standard was ever run.
inline constexpr int32_t kNeverChecked = 10000;

// What FromText takes over in addition to the configuration id.
enum SettingsFlag : int32_t {
  kLoadTray = 1,
  kLoadRunParameters = 2,
  kLoadCalibration = 4,
  kLoadIdentity = 8,
  kLoadAll = 15
};

enum RunFlag : uint32_t { kTrayRunning = 1, kTrayPaused = 2 };

// The values of a configuration, without a lock: for the record below, which guards them, and for
// working copies.
struct ConfigurationFields {
  ConfigurationFields();

  // Sets instrument id, tray positions, time-out, period, injection temperature (by the present
  // model code), check-standard fields and the test record to their defaults; the rest stays.
  // `testDefaults` is a fresh test record.
  void SetDefaults(const TestRecord& testDefaults);
  // The text form: 52 fields, each with 0x0B after it.
  std::string ToText() const;
  // Takes over what `flags` selects. Returns false and changes nothing for fewer than 44 fields.
  bool FromText(const std::string& text, int32_t flags);

  std::string GetInstrumentId() const;  // trimmed
  void SetInstrumentId(const std::string& text);
  std::string GetConfigurationId() const;  // trimmed

  // 9 with the low temperature option, else 8.
  int GetSlotCount() const;
  // The slot in use whose temperature range contains `temperature` (degrees C).
  int SelectCalibrationSlot(double temperature) const;
  void GetCellConstants(double temperature, double& b0Out, double& b1Out, double& b2Out) const;
  // Whether that slot, or for kAnyTemperature any slot in use, is not empty.
  bool HasCellConstants(double temperature) const;

  std::string instrumentId;        // use GetInstrumentId
  std::string configurationId;     // use GetConfigurationId
  int32_t responseTimeout = 6000;  // ms
  std::string serialNumber;
  std::string firmwareVersion;
  int32_t trayPositions = 30;
  int32_t statusPeriod = 495;  // ms
  std::string probeId;
  double a0 = 1.292035, a1 = 0.22621, a2 = 0.000210003;  // probe
  std::array<double, kCalibrationSlots> b0{}, b1{}, b2{};
  uint8_t checkStandardFlag = 0;
  int32_t checkStandardInterval = 25;  // samples
  int32_t samplesSinceCheck = kNeverChecked;
  double injectionTemperature = -5.0;  // degrees C
  std::array<platform::Date, kCalibrationSlots> calibrationDates;
  TestRecord testRecord;
  double temperatureOffset = 0.0;  // degrees C, models "3" and "4"
  std::string portName = "COM2";
  uint8_t address = 0;
  char modelCode = 0;  // '1' to '4'
  uint8_t optionByte = 0;
  uint16_t selfTestWord = 0;
  uint8_t latchedMachineStatus = 0;
  std::string lastReply;
  uint32_t runFlags = 0;  // RunFlag
  Port* port = nullptr;   // not owned
};

// The configuration of an instrument, a part of C_RVX; its lock is the configuration lock. Any
// thread. The operations take the lock themselves; `fields` requires it, so that several values
// can be read or changed at once:
//
//   const ConfigurationGuard guard(record);
//   record.fields.b0[slot] = b0;
class CAPABILITY("mutex") ConfigurationRecord {
 public:
  ConfigurationRecord() = default;
  ConfigurationRecord(const ConfigurationRecord&) = delete;
  ConfigurationRecord& operator=(const ConfigurationRecord&) = delete;

  void Lock() const ACQUIRE() { lock_.Lock(); }
  void Unlock() const RELEASE() { lock_.Unlock(); }

  // A working copy.
  ConfigurationFields Copy() const;
  // Copies everything but the lock. The two locks are never held together.
  void Assign(const ConfigurationRecord& other);

  // The same as the operations of ConfigurationFields.
  void SetDefaults();
  std::string ToText() const;
  bool FromText(const std::string& text, int32_t flags);
  std::string GetInstrumentId() const;
  void SetInstrumentId(const std::string& text);
  std::string GetConfigurationId() const;
  int GetSlotCount() const;
  int SelectCalibrationSlot(double temperature) const;
  void GetCellConstants(double temperature, double& b0, double& b1, double& b2) const;
  bool HasCellConstants(double temperature) const;

  ConfigurationFields fields GUARDED_BY(this);

 private:
  mutable platform::RecursiveLock lock_{"configuration", kConfigurationLockRank};
};
using ConfigurationGuard = platform::LockGuard<const ConfigurationRecord>;

}  // namespace rvx
