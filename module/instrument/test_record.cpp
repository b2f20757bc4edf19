#include "module/instrument/test_record.h"

#include <string_view>
#include <vector>

#include "boundary/host.h"
#include "module/instrument/record_text.h"
#include "platform/text.h"

namespace rvx {
namespace {

using TestGuard = platform::RecursiveGuard;

constexpr char kSeparator = '\t';
constexpr size_t kFieldCount = 53;
// A text with only this many leaves the csv flag and the save location as they are.
constexpr size_t kMinFieldCount = 51;

}  // namespace

TestRecord::TestRecord() { SetDefaults(); }

TestRecord::TestRecord(const TestRecord& other) : TestParameters() {
  const TestGuard guard(other.lock_);
  TestParameters::operator=(other);
}

TestRecord& TestRecord::operator=(const TestRecord& other) {
  Assign(other);
  return *this;
}

void TestRecord::SetDefaults() {
  // Read before the lock is taken: the host is not called with a record locked.
  std::string folder;
  GetArchiveManager()->GetDefaultName(folder);

  const TestGuard guard(lock_);
  injectionTime = 240;
  burstTime = 25;
  pauseTime = 30;
  purgeTime = 15;
  preconditionSpeed = 240;
  preconditionTime = 0;
  coolDownTime = 180;
  undershoot = 0.2;
  tolerance = 0.1;
  averagingCount = 5;
  rotorOnTimes.fill(0);
  rotorOnTimes[0] = 60;
  testTemperatures.fill(kTemperatureOff);
  testTemperatures[0] = -20.0;
  testCount = 1;
  csvFlag = 0;
  saveLocation = folder;
}

void TestRecord::Assign(const TestRecord& other) {
  if (this == &other) return;
  // By way of a copy, so that the locks of two records are never held together.
  const TestRecord copy(other);
  const TestGuard guard(lock_);
  TestParameters::operator=(copy);
}

std::string TestRecord::ToText() const {
  const TestGuard guard(lock_);
  RecordWriter writer(kSeparator);
  for (const int32_t value : {injectionTime, burstTime, pauseTime, purgeTime, preconditionSpeed,
                              preconditionTime, coolDownTime}) {
    writer.Int(value);
  }
  writer.Double(undershoot).Double(tolerance).Int(averagingCount).Int(testCount);
  for (const double temperature : testTemperatures) writer.Double(temperature);
  for (const int32_t time : rotorOnTimes) writer.Int(time);
  // The text is a field of the configuration's text, which is a line of the settings text.
  writer.Int(csvFlag).Text(saveLocation, "\t\x0B\n");
  return writer.Take();
}

void TestRecord::FromText(const std::string& text) {
  const std::vector<std::string> fields = platform::SplitFields(text, kSeparator, kFieldCount);
  if (fields.size() < kMinFieldCount) return;
  RecordReader reader(fields);

  const TestGuard guard(lock_);
  for (int32_t* value : {&injectionTime, &burstTime, &pauseTime, &purgeTime, &preconditionSpeed,
                         &preconditionTime, &coolDownTime}) {
    *value = reader.Int();
  }
  undershoot = reader.Double();
  tolerance = reader.Double();
  averagingCount = reader.Int();
  testCount = reader.Int();
  for (double& temperature : testTemperatures) temperature = reader.Double();
  for (int32_t& time : rotorOnTimes) time = reader.Int();
  if (fields.size() < kFieldCount) return;
  csvFlag = reader.Int();
  saveLocation = reader.Text();
}

}  // namespace rvx
