// The run parameters of an instrument, which each sample action copies.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "module/instrument/lock_ranks.h"
#include "platform/lock.h"

namespace rvx {

inline constexpr int kMaxTests = 20;
// As a temperature: off, or a test point that is not in use.
inline constexpr double kTemperatureOff = 65535.0;

// What may be given for a test of a sample.
inline constexpr int32_t kMinRotorOnTime = 30;        // s
inline constexpr int32_t kMaxRotorOnTime = 255;       // s, the largest value of a byte in a command
inline constexpr double kMinKnownViscosity = 1000.0;  // mPa*s
inline constexpr double kMaxKnownViscosity = 50000.0;  // mPa*s

// The values of a test record.
struct TestParameters {
  int32_t injectionTime = 0;      // s
  int32_t burstTime = 0;          // s
  int32_t pauseTime = 0;          // s
  int32_t purgeTime = 0;          // s
  int32_t preconditionSpeed = 0;  // rpm
  int32_t preconditionTime = 0;   // min; 0: off
  int32_t coolDownTime = 0;       // s
  double undershoot = 0.0;        // degrees C
  double tolerance = 0.0;         // degrees C
  int32_t averagingCount = 0;     // N, pairs of readings at the end of a run that are averaged
  std::array<int32_t, kMaxTests> rotorOnTimes{};     // s
  std::array<double, kMaxTests> testTemperatures{};  // degrees C; kTemperatureOff: not in use
  int32_t testCount = 0;
  int32_t csvFlag = 0;            // non-zero: save each measurement as csv
  std::string saveLocation;       // folder of the csv files, with its trailing separator
  int32_t sentInjectionTime = 0;  // s, of the last CST or CMC; not stored
};

// The record's own lock makes each operation atomic against the other operations. Single values are
// read and written without it: the caller is the only user of the record, or holds the lock of the
// object that the record is a member of. That is where the guard is declared
// (ConfigurationRecord::fields, C_RVXViscAction::testRecord_), so the compiler checks each access.
class TestRecord : public TestParameters {
 public:
  // With the defaults.
  TestRecord();
  TestRecord(const TestRecord& other);
  TestRecord& operator=(const TestRecord& other);

  // Sets every value but sentInjectionTime to its default. Asks the archive manager for the default
  // folder.
  void SetDefaults();
  // Copies everything but the lock.
  void Assign(const TestRecord& other);
  // The text form: 53 values, each with a TAB after it, with a point as decimal sign.
  std::string ToText() const;
  // Fewer than 51 fields change nothing; 51 or 52 leave csv flag and save location as they are.
  void FromText(const std::string& text);

 private:
  mutable platform::RecursiveLock lock_{"test record", kTestRecordLockRank};
};

}  // namespace rvx
