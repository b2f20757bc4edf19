#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

#include "module/instrument/configuration_record.h"
#include "module/instrument/test_record.h"
#include "platform/text.h"
#include "tests/support/fake_host.h"

namespace rvx {
namespace {

std::string Cut(const std::string& text, char separator, size_t fields) {
  std::string cut;
  const auto parts = platform::SplitFields(text, separator, fields);
  for (const std::string& part : parts) cut += part + separator;
  return cut;
}

// A text with one field replaced, counted from 1.
std::string WithField(const std::string& text, char separator, size_t field,
                      const std::string& value) {
  std::string changed;
  auto parts = platform::SplitFields(text, separator);
  parts.at(field - 1) = value;
  for (const std::string& part : parts) changed += part + separator;
  return changed;
}

size_t CountFields(const std::string& text, char separator) {
  return static_cast<size_t>(std::count(text.begin(), text.end(), separator));
}

class Records : public ::testing::Test {
 protected:
  FakeHost host_;
};

using TestRecordText = Records;

const char kDefaultFront[] =
    "240\t25\t30\t15\t240\t0\t180\t0.200000000000000\t0.100000000000000\t5\t1\t"
    "-20.000000000000000\t65535.000000000000000\t";

TEST_F(TestRecordText, DefaultsAsText) {
  const std::string text = TestRecord().ToText();
  EXPECT_EQ(text.substr(0, sizeof(kDefaultFront) - 1), kDefaultFront);
  EXPECT_TRUE(text.ends_with("\t60" + [] {
    std::string zeros;
    for (int i = 0; i < 19; ++i) zeros += "\t0";
    return zeros;
  }() + "\t0\t/fake/\t"));
  EXPECT_EQ(CountFields(text, '\t'), 53u);
}

TEST_F(TestRecordText, SetDefaultsKeepsTheSentInjectionTime) {
  TestRecord record;
  record.sentInjectionTime = 99;
  record.injectionTime = 1;
  record.rotorOnTimes[7] = 5;
  host_.archiveManager.SetDefaultName("/other/");
  record.SetDefaults();
  EXPECT_EQ(record.sentInjectionTime, 99);
  EXPECT_EQ(record.injectionTime, 240);
  EXPECT_EQ(record.rotorOnTimes[7], 0);
  EXPECT_EQ(record.saveLocation, "/other/");
}

TEST_F(TestRecordText, CopiesHoldEverything) {
  TestRecord record;
  record.sentInjectionTime = 99;
  record.testTemperatures[19] = -35.5;
  const TestRecord copy(record);
  TestRecord assigned;
  assigned = copy;
  assigned.Assign(assigned);
  EXPECT_EQ(assigned.sentInjectionTime, 99);
  EXPECT_EQ(assigned.ToText(), record.ToText());
}

TEST_F(TestRecordText, ShortTexts) {
  TestRecord full;
  full.injectionTime = 7;
  full.rotorOnTimes[19] = 3;
  full.csvFlag = 1;
  full.saveLocation = "/elsewhere/";
  const std::string text = full.ToText();
  const std::string defaults = TestRecord().ToText();

  TestRecord record;
  record.FromText(Cut(text, '\t', 50));
  EXPECT_EQ(record.ToText(), defaults) << "50 fields change nothing";
  for (const size_t fields : {size_t{51}, size_t{52}}) {
    record.SetDefaults();
    record.FromText(Cut(text, '\t', fields));
    EXPECT_EQ(record.injectionTime, 7) << fields;
    EXPECT_EQ(record.rotorOnTimes[19], 3) << fields;
    EXPECT_EQ(record.csvFlag, 0) << fields;
    EXPECT_EQ(record.saveLocation, "/fake/") << fields;
  }
  record.FromText(text + "more\tfields\t");
  EXPECT_EQ(record.ToText(), text);
}

TEST_F(TestRecordText, BadFieldIsZero) {
  TestRecord record;
  std::string text = WithField(record.ToText(), '\t', 1, "12x");
  text = WithField(text, '\t', 2, "junk");
  text = WithField(text, '\t', 8, "0,5");
  text = WithField(text, '\t', 12, "");
  record.FromText(text);
  EXPECT_EQ(record.injectionTime, 12);
  EXPECT_EQ(record.burstTime, 0);
  EXPECT_EQ(record.undershoot, 0.0) << "a comma ends the number";
  EXPECT_EQ(record.testTemperatures[0], 0.0);
}

TEST_F(TestRecordText, SaveLocationCannotBreakTheText) {
  TestRecord record;
  record.saveLocation = "/a\tb\vc\nd\\e, \xC3\xA4/";
  TestRecord read;
  read.FromText(record.ToText());
  EXPECT_EQ(read.saveLocation, "/a b c d\\e, \xC3\xA4/");
  record.saveLocation.clear();
  read.FromText(record.ToText());
  EXPECT_EQ(read.saveLocation, "");
}

using Configuration = Records;

ConfigurationFields Filled() {
  ConfigurationFields record;
  record.configurationId = "Line 3";
  record.instrumentId = "RVX 7";
  record.serialNumber = "SN-1";
  record.trayPositions = 20;
  record.responseTimeout = 7000;
  record.statusPeriod = 600;
  record.probeId = "P-9";
  record.a1 = 0.25;
  for (size_t i = 0; i < kCalibrationSlots; ++i) {
    record.b0[i] = 100000.5 + static_cast<double>(i);
    record.b1[i] = -2000.25;
    record.b2[i] = 3.125;
    record.calibrationDates[i] = platform::Date(2026, 1, 1 + static_cast<int>(i), 14, 5, 6);
  }
  record.injectionTemperature = 12.5;
  record.testRecord.injectionTime = 33;
  record.temperatureOffset = 0.12;
  record.checkStandardFlag = 1;
  record.checkStandardInterval = 10;
  record.samplesSinceCheck = 4;
  return record;
}

TEST_F(Configuration, FieldsStandInTheirPlaces) {
  const auto fields = platform::SplitFields(Filled().ToText(), '\v');
  ASSERT_EQ(fields.size(), 52u);
  EXPECT_EQ(fields[0], "Line 3");
  EXPECT_EQ(fields[1], "RVX 7");
  EXPECT_EQ(fields[2], "SN-1");
  EXPECT_EQ(fields[3] + "," + fields[4] + "," + fields[5], "20,7000,600");
  EXPECT_EQ(fields[6], "P-9");
  EXPECT_EQ(fields[7], "1.292035000000000");
  EXPECT_EQ(fields[9], "0.000210003000000");
  EXPECT_EQ(fields[10], "100000.500000000000000");
  EXPECT_EQ(fields[13], "1/1/2026 2:05:06 PM");
  EXPECT_EQ(fields[41], "1/8/2026 2:05:06 PM");
  EXPECT_EQ(fields[42], "12.500000000000000");
  EXPECT_TRUE(fields[43].starts_with("33\t25\t"));
  EXPECT_TRUE(fields[43].ends_with("/fake/\t"));
  EXPECT_EQ(fields[44], "0.120000000000000");
  EXPECT_EQ(fields[45], "100008.500000000000000");
  EXPECT_EQ(fields[48], "1/9/2026 2:05:06 PM");
  EXPECT_EQ(fields[49] + "," + fields[50] + "," + fields[51], "1,10,4");
}

TEST_F(Configuration, FreshRecord) {
  ConfigurationFields record;
  EXPECT_EQ(record.GetInstrumentId(), "RVX");
  EXPECT_EQ(record.GetConfigurationId(), "Unsaved");
  EXPECT_EQ(record.portName, "COM2");
  EXPECT_EQ(record.calibrationDates[8], platform::Date(1938, 1, 1));
  EXPECT_FALSE(record.HasCellConstants(kAnyTemperature));
}

TEST_F(Configuration, SetDefaultsLeavesIdentityAndCalibration) {
  ConfigurationFields record = Filled();
  record.modelCode = '3';
  record.testRecord.sentInjectionTime = 5;
  record.SetDefaults(TestRecord());
  EXPECT_EQ(record.instrumentId, "RVX");
  EXPECT_EQ(record.trayPositions, 30);
  EXPECT_EQ(record.responseTimeout, 6000);
  EXPECT_EQ(record.statusPeriod, 495);
  EXPECT_EQ(record.injectionTemperature, 15.0);
  EXPECT_EQ(record.checkStandardFlag, 0);
  EXPECT_EQ(record.samplesSinceCheck, kNeverChecked);
  EXPECT_EQ(record.testRecord.injectionTime, 240);
  EXPECT_EQ(record.testRecord.sentInjectionTime, 5);
  EXPECT_EQ(record.configurationId, "Line 3");
  EXPECT_EQ(record.b0[0], 100000.5);
  EXPECT_EQ(record.temperatureOffset, 0.12);
  EXPECT_EQ(record.serialNumber, "SN-1");
  record.modelCode = '2';
  record.SetDefaults(TestRecord());
  EXPECT_EQ(record.injectionTemperature, -5.0);
}

TEST_F(Configuration, IdsAreTrimmed) {
  ConfigurationFields record;
  record.SetInstrumentId("  RVX 7 ");
  EXPECT_EQ(record.instrumentId, "RVX 7");
  record.instrumentId = " raw ";
  EXPECT_EQ(record.GetInstrumentId(), "raw");
  record.configurationId = " raw ";
  EXPECT_EQ(record.GetConfigurationId(), "raw");
}

TEST_F(Configuration, CopiesHoldEverything) {
  ConfigurationFields record = Filled();
  record.firmwareVersion = "02.17";
  record.portName = "COM4";
  record.address = 11;
  record.modelCode = '4';
  record.optionByte = 2;
  record.selfTestWord = 0x140;
  record.latchedMachineStatus = 4;
  record.lastReply = "TC";
  record.runFlags = kTrayRunning;
  ConfigurationRecord first;
  {
    const ConfigurationGuard guard(first);
    first.fields = record;
  }
  ConfigurationRecord second;
  second.Assign(first);
  second.Assign(second);
  const ConfigurationFields copy = second.Copy();
  EXPECT_EQ(copy.ToText(), record.ToText());
  EXPECT_EQ(copy.firmwareVersion, "02.17");
  EXPECT_EQ(copy.portName, "COM4");
  EXPECT_EQ(copy.address, 11);
  EXPECT_EQ(copy.modelCode, '4');
  EXPECT_EQ(copy.optionByte, 2);
  EXPECT_EQ(copy.selfTestWord, 0x140);
  EXPECT_EQ(copy.latchedMachineStatus, 4);
  EXPECT_EQ(copy.lastReply, "TC");
  EXPECT_EQ(copy.runFlags, kTrayRunning);
}

// The fields of a filled record's text that a fresh record takes over with these flags, as field
// numbers from 1.
std::vector<size_t> Taken(const std::string& text, int32_t flags) {
  ConfigurationFields record;
  const auto before = platform::SplitFields(record.ToText(), '\v');
  record.FromText(text, flags);
  const auto after = platform::SplitFields(record.ToText(), '\v');
  std::vector<size_t> taken;
  for (size_t i = 0; i < after.size(); ++i) {
    if (after[i] == before[i]) continue;
    taken.push_back(i + 1);
    EXPECT_EQ(after[i], platform::SplitFields(text, '\v').at(i)) << "field " << i + 1;
  }
  return taken;
}

// The numbers from `first` to `last` except those of `without`.
std::vector<size_t> Range(size_t first, size_t last, std::vector<size_t> without = {}) {
  std::vector<size_t> numbers;
  for (size_t i = first; i <= last; ++i) {
    if (std::find(without.begin(), without.end(), i) == without.end()) numbers.push_back(i);
  }
  return numbers;
}

TEST_F(Configuration, FlagsSelectWhatIsTaken) {
  const std::string text = Filled().ToText();
  EXPECT_EQ(Taken(text, 0), Range(1, 1));
  EXPECT_EQ(Taken(text, kLoadTray), Range(1, 1));
  EXPECT_EQ(Taken(text, kLoadIdentity), Range(1, 5));
  EXPECT_EQ(Taken(text, kLoadRunParameters), (std::vector<size_t>{1, 43, 44, 45}));
  // a0 and a2 (8, 10) are filled with their defaults.
  EXPECT_EQ(Taken(text, kLoadCalibration), [] {
    std::vector<size_t> numbers{1};
    for (const size_t i : Range(6, 42, {8, 10})) numbers.push_back(i);
    for (const size_t i : Range(46, 52)) numbers.push_back(i);
    return numbers;
  }());
  EXPECT_EQ(Taken(text, kLoadAll), Range(1, 52, {8, 10}));
}

TEST_F(Configuration, ShortTexts) {
  const std::string text = Filled().ToText();
  EXPECT_TRUE(Taken(Cut(text, '\v', 43), kLoadAll).empty());
  EXPECT_EQ(Taken(Cut(text, '\v', 44), kLoadAll), Range(1, 44, {8, 10}));
  EXPECT_EQ(Taken(Cut(text, '\v', 45), kLoadAll), Range(1, 45, {8, 10}));
  EXPECT_EQ(Taken(Cut(text, '\v', 48), kLoadAll), Range(1, 45, {8, 10}));
  EXPECT_EQ(Taken(Cut(text, '\v', 49), kLoadAll), Range(1, 49, {8, 10}));
  EXPECT_EQ(Taken(Cut(text, '\v', 51), kLoadAll), Range(1, 49, {8, 10}));
  EXPECT_EQ(Taken(text + "future\v", kLoadAll), Range(1, 52, {8, 10}));
}

TEST_F(Configuration, DamagedFields) {
  std::string text = WithField(Filled().ToText(), '\v', 4, "many");
  text = WithField(text, '\v', 11, "1,5");
  text = WithField(text, '\v', 14, "some day");
  text = WithField(text, '\v', 18, "");
  text = WithField(text, '\v', 44, "1\t2\t3\t");
  text = WithField(text, '\v', 50, "7");
  ConfigurationFields record;
  record.FromText(text, kLoadAll);
  EXPECT_EQ(record.trayPositions, 0);
  EXPECT_EQ(record.b0[0], 1.0);
  EXPECT_EQ(record.calibrationDates[0].state(), platform::Date::State::Invalid);
  EXPECT_EQ(record.calibrationDates[1].state(), platform::Date::State::Null);
  EXPECT_EQ(record.testRecord.injectionTime, 240) << "a short test record changes nothing";
  EXPECT_EQ(record.checkStandardFlag, 1);
  const auto fields = platform::SplitFields(record.ToText(), '\v');
  EXPECT_EQ(fields[13], "Invalid DateTime");
  EXPECT_EQ(fields[17], "");
}

TEST_F(Configuration, NamesCannotBreakTheText) {
  ConfigurationFields record = Filled();
  record.configurationId = "a\vb";
  record.instrumentId = "c\nd";
  record.probeId = std::string("e\0f", 3);
  const std::string text = record.ToText();
  EXPECT_EQ(CountFields(text, '\v'), 52u);
  EXPECT_EQ(text.find('\n'), std::string::npos);
  ConfigurationFields read;
  read.FromText(text, kLoadAll);
  EXPECT_EQ(read.configurationId, "a b");
  EXPECT_EQ(read.instrumentId, "c d");
  EXPECT_EQ(read.probeId, "e f");
}

TEST_F(Configuration, SlotBorders) {
  ConfigurationFields record;
  struct {
    double temperature;
    int slot8, slot9;
  } const cases[] = {{25.0, 0, 0},  {-7.49, 0, 0},  {-7.5, 1, 1},  {-12.5, 2, 2}, {-16.49, 2, 2},
                     {-16.5, 3, 3}, {-17.0, 3, 3},  {-19.0, 4, 4}, {-22.5, 5, 5}, {-27.5, 6, 6},
                     {-32.5, 7, 7}, {-37.49, 7, 7}, {-37.5, 7, 8}, {-60.0, 7, 8}};
  for (const auto& c : cases) {
    record.optionByte = 0x01;
    EXPECT_EQ(record.SelectCalibrationSlot(c.temperature), c.slot8) << c.temperature;
    record.optionByte = 0x02;
    EXPECT_EQ(record.SelectCalibrationSlot(c.temperature), c.slot9) << c.temperature;
  }
}

TEST_F(Configuration, EmptySlots) {
  ConfigurationFields record;
  record.b2[8] = 1e-300;
  EXPECT_FALSE(record.HasCellConstants(-40.0)) << "slot 7 without the option";
  EXPECT_FALSE(record.HasCellConstants(kAnyTemperature));
  record.optionByte = 0x02;
  EXPECT_TRUE(record.HasCellConstants(-40.0));
  EXPECT_TRUE(record.HasCellConstants(kAnyTemperature));
  EXPECT_FALSE(record.HasCellConstants(-20.0));
  record.b1[4] = 5.0;
  EXPECT_TRUE(record.HasCellConstants(-20.0));
  double b0 = 1.0, b1 = 1.0, b2 = 1.0;
  record.GetCellConstants(-21.0, b0, b1, b2);
  EXPECT_EQ(b0, 0.0);
  EXPECT_EQ(b1, 5.0);
  EXPECT_EQ(b2, 0.0);
}

// The text with a piece cut out, doubled or overwritten.
std::string Damaged(const std::string& text) {
  const auto from = *rc::gen::inRange<size_t>(0, text.size());
  const auto size = *rc::gen::inRange<size_t>(0, text.size() - from);
  const auto junk = *rc::gen::container<std::string>(
      rc::gen::oneOf(rc::gen::elementOf(std::string("\v\t\n0.-")), rc::gen::arbitrary<char>()));
  return text.substr(0, from) + junk + text.substr(from + size);
}

RC_GTEST_PROP(RecordTextProperty, DamagedConfigurationSettlesInOneRoundTrip, ()) {
  FakeHost host;
  ConfigurationFields record;
  record.FromText(Damaged(Filled().ToText()), *rc::gen::inRange(0, 16));
  const std::string once = record.ToText();
  ConfigurationFields again;
  again.FromText(once, kLoadAll);
  RC_ASSERT(again.ToText() == once);
}

RC_GTEST_PROP(RecordTextProperty, TestRecordComesBack, ()) {
  FakeHost host;
  TestRecord record;
  record.injectionTime = *rc::gen::arbitrary<int32_t>();
  record.coolDownTime = *rc::gen::arbitrary<int32_t>();
  for (double& t : record.testTemperatures) t = *rc::gen::inRange(-40000, 25000) / 1000.0;
  for (int32_t& t : record.rotorOnTimes) t = *rc::gen::arbitrary<int32_t>();
  record.csvFlag = *rc::gen::inRange(0, 2);
  TestRecord read;
  read.FromText(record.ToText());
  RC_ASSERT(read.injectionTime == record.injectionTime);
  RC_ASSERT(read.coolDownTime == record.coolDownTime);
  RC_ASSERT(read.testTemperatures == record.testTemperatures);
  RC_ASSERT(read.rotorOnTimes == record.rotorOnTimes);
  RC_ASSERT(read.csvFlag == record.csvFlag);
}

}  // namespace
}  // namespace rvx
