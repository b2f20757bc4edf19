#include "module/scripting/settings_table.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>

#include "module/protocol/identification.h"
#include "platform/text.h"

namespace rvx {
namespace {

using platform::FormatText;
using IntOf = int32_t& (*)(ConfigurationRecord&);
using DoubleOf = double& (*)(ConfigurationRecord&);
using TextOf = std::string& (*)(ConfigurationRecord&);

// A getter reads through the same accessor as the setter.
ConfigurationRecord& Writable(const ConfigurationRecord& record) {
  return const_cast<ConfigurationRecord&>(record);
}

SettingEntry IntSetting(const char* key, const char* unit, int32_t least, int32_t most,
                        const char* description, IntOf field) {
  SettingEntry entry{key,         unit,          FormatText("%d to %d", least, most),
                     description, kManagerLevel, nullptr,
                     nullptr,     nullptr};
  entry.get = [field](const ConfigurationRecord& record) {
    return std::to_string(field(Writable(record)));
  };
  entry.set = [=](ConfigurationRecord& record, const std::string& text) {
    const std::optional<int> value = platform::ParseInt(text);
    if (!value || *value < least || *value > most) return false;
    field(record) = *value;
    return true;
  };
  entry.copy = [field](ConfigurationRecord& to, const ConfigurationRecord& from) {
    field(to) = field(Writable(from));
  };
  return entry;
}

SettingEntry DoubleSetting(const char* key, const char* unit, double least, double most,
                           int decimals, const char* description, DoubleOf field) {
  SettingEntry entry{
      key,         unit,          FormatText("%.*f to %.*f", decimals, least, decimals, most),
      description, kManagerLevel, nullptr,
      nullptr};
  entry.get = [=](const ConfigurationRecord& record) {
    return FormatText("%.*f", decimals, field(Writable(record)));
  };
  entry.set = [=](ConfigurationRecord& record, const std::string& text) {
    const std::optional<double> value = platform::ParseDouble(text);
    if (!value || !(*value >= least && *value <= most)) return false;
    field(record) = *value;
    return true;
  };
  entry.copy = [field](ConfigurationRecord& to, const ConfigurationRecord& from) {
    field(to) = field(Writable(from));
  };
  return entry;
}

// Control characters are the separators of the stored text.
bool IsPlainText(const std::string& text) {
  return std::none_of(text.begin(), text.end(),
                      [](char c) { return static_cast<unsigned char>(c) < 0x20; });
}

SettingEntry TextSetting(const char* key, const char* accepts, const char* description,
                         TextOf field, bool (*accept)(const std::string&)) {
  SettingEntry entry{key, "", accepts, description, kManagerLevel, nullptr, nullptr, nullptr};
  entry.get = [field](const ConfigurationRecord& record) { return field(Writable(record)); };
  entry.set = [=](ConfigurationRecord& record, const std::string& text) {
    const std::string trimmed = platform::Trim(text);
    if (!IsPlainText(trimmed) || !accept(trimmed)) return false;
    field(record) = trimmed;
    return true;
  };
  entry.copy = [field](ConfigurationRecord& to, const ConfigurationRecord& from) {
    field(to) = field(Writable(from));
  };
  return entry;
}

std::optional<bool> ParseOnOff(const std::string& text) {
  if (text == "on" || text == "1") return true;
  if (text == "off" || text == "0") return false;
  return std::nullopt;
}

SettingEntry CheckStandardSetting() {
  SettingEntry entry{"check-standard", "",      "on or off", "prompt for check standards",
                     kManagerLevel,    nullptr, nullptr};
  entry.get = [](const ConfigurationRecord& record) {
    return std::string(record.checkStandardFlag != 0 ? "on" : "off");
  };
  entry.set = [](ConfigurationRecord& record, const std::string& text) {
    const std::optional<bool> on = ParseOnOff(text);
    if (on) record.checkStandardFlag = *on ? 1 : 0;
    return on.has_value();
  };
  entry.copy = [](ConfigurationRecord& to, const ConfigurationRecord& from) {
    to.checkStandardFlag = from.checkStandardFlag;
  };
  return entry;
}

SettingEntry SaveCsvSetting() {
  SettingEntry entry{"save-csv",    "",      "on or off", "save each measurement as a csv file",
                     kManagerLevel, nullptr, nullptr,     nullptr};
  entry.get = [](const ConfigurationRecord& record) {
    return std::string(record.testRecord.csvFlag != 0 ? "on" : "off");
  };
  entry.set = [](ConfigurationRecord& record, const std::string& text) {
    const std::optional<bool> on = ParseOnOff(text);
    if (on) record.testRecord.csvFlag = *on ? 1 : 0;
    return on.has_value();
  };
  entry.copy = [](ConfigurationRecord& to, const ConfigurationRecord& from) {
    to.testRecord.csvFlag = from.testRecord.csvFlag;
  };
  return entry;
}

// The file name is added directly behind the location, so it has to end with a separator.
SettingEntry SaveLocationSetting() {
  SettingEntry entry{
      "save-location", "",     "a folder that exists", "folder of the csv files", kManagerLevel,
      nullptr,         nullptr};
  entry.get = [](const ConfigurationRecord& record) { return record.testRecord.saveLocation; };
  entry.set = [](ConfigurationRecord& record, const std::string& text) {
    std::error_code error;
    if (!IsPlainText(text) || !std::filesystem::is_directory(text, error)) return false;
    record.testRecord.saveLocation = text.back() == '/' ? text : text + '/';
    return true;
  };
  entry.copy = [](ConfigurationRecord& to, const ConfigurationRecord& from) {
    to.testRecord.saveLocation = from.testRecord.saveLocation;
  };
  return entry;
}

constexpr std::array<double, 11> kInjectionTemperatures = {25, 20,  15,  10,  5,  0,
                                                           -5, -10, -15, -20, -25};

SettingEntry InjectionTemperatureSetting() {
  SettingEntry entry{"injection-temperature",
                     "degC",
                     "25, 20, 15, 10, 5, 0, -5, -10, -15, -20 or -25",
                     "cell temperature at which the oil is injected",
                     kManagerLevel,
                     nullptr,
                     nullptr};
  entry.get = [](const ConfigurationRecord& record) {
    return FormatText("%.f", record.injectionTemperature);
  };
  entry.set = [](ConfigurationRecord& record, const std::string& text) {
    const std::optional<double> value = platform::ParseDouble(text);
    if (!value || std::find(kInjectionTemperatures.begin(), kInjectionTemperatures.end(), *value) ==
                      kInjectionTemperatures.end()) {
      return false;
    }
    record.injectionTemperature = *value;
    return true;
  };
  entry.copy = [](ConfigurationRecord& to, const ConfigurationRecord& from) {
    to.injectionTemperature = from.injectionTemperature;
  };
  return entry;
}

// Moves every reading of the cell, so it is the service's alone; models "1" and "2" have none.
SettingEntry OffsetSetting() {
  SettingEntry entry = DoubleSetting(
      "temperature-offset", "degC", 0.0, 1.0, 2,
      "added to the cell's temperature on models 3 and 4",
      [](ConfigurationRecord& record) -> double& { return record.temperatureOffset; });
  entry.level = kServiceLevel;
  entry.set = [set = entry.set](ConfigurationRecord& record, const std::string& text) {
    return UsesTemperatureOffset(record.modelCode) && set(record, text);
  };
  return entry;
}

SettingEntry ReadOnly(const char* key, const char* description,
                      std::string (*get)(const ConfigurationRecord&)) {
  return {key,     "",     "set by the instrument or the program", description, kNobodysLevel, get,
          nullptr, nullptr};
}

std::string SamplesSinceCheck(const ConfigurationRecord& record) {
  return record.samplesSinceCheck >= kNeverChecked ? "never"
                                                   : std::to_string(record.samplesSinceCheck);
}

#define RVX_FIELD(type, member) [](ConfigurationRecord& record) -> type& { return record.member; }

std::vector<SettingEntry> MakeTable() {
  const auto isName = [](const std::string& text) {
    return !text.empty() && text.find_first_of("\",") == std::string::npos;
  };
  const auto isAnyText = [](const std::string&) { return true; };
  std::vector<SettingEntry> table;
  table.push_back(TextSetting("instrument-id", "a text without quotes and commas",
                              "name of the instrument", RVX_FIELD(std::string, instrumentId),
                              isName));
  table.push_back(TextSetting("configuration-id", "a text without quotes and commas",
                              "name of this configuration", RVX_FIELD(std::string, configurationId),
                              isName));
  table.push_back(TextSetting("probe-id", "a text", "label of the temperature probe",
                              RVX_FIELD(std::string, probeId), isAnyText));
  table.push_back(
      DoubleSetting("probe-a0", "", 0.0, 2.0, 6, "probe constant a0", RVX_FIELD(double, a0)));
  // The search for a temperature's counts divides by it.
  table.push_back(
      DoubleSetting("probe-a1", "", 0.000001, 1.0, 6, "probe constant a1", RVX_FIELD(double, a1)));
  table.push_back(
      DoubleSetting("probe-a2", "", 0.0, 1.0, 9, "probe constant a2", RVX_FIELD(double, a2)));
  table.push_back(CheckStandardSetting());
  table.push_back(IntSetting("check-standard-interval", "", 0, 1000,
                             "samples between check standards",
                             RVX_FIELD(int32_t, checkStandardInterval)));
  table.push_back(IntSetting("precondition-time", "min", 0, 9, "motor preconditioning; 0 is off",
                             RVX_FIELD(int32_t, testRecord.preconditionTime)));
  table.push_back(IntSetting("precondition-speed", "rpm", 1, 980, "rotor speed of preconditioning",
                             RVX_FIELD(int32_t, testRecord.preconditionSpeed)));
  table.push_back(IntSetting("injection-time", "s", 0, 255, "sample oil injection time",
                             RVX_FIELD(int32_t, testRecord.injectionTime)));
  table.push_back(IntSetting("burst-time", "s", 0, 255, "injection burst",
                             RVX_FIELD(int32_t, testRecord.burstTime)));
  table.push_back(IntSetting("pause-time", "s", 0, 255, "injection pause",
                             RVX_FIELD(int32_t, testRecord.pauseTime)));
  table.push_back(IntSetting("purge-time", "s", 0, 255, "injection purge",
                             RVX_FIELD(int32_t, testRecord.purgeTime)));
  table.push_back(InjectionTemperatureSetting());
  table.push_back(IntSetting("cool-down-time", "s", 0, 255, "cell equilibration time",
                             RVX_FIELD(int32_t, testRecord.coolDownTime)));
  table.push_back(IntSetting("rotor-on-time", "s", 0, 255, "rotor ON time of a test",
                             RVX_FIELD(int32_t, testRecord.rotorOnTimes[0])));
  table.push_back(DoubleSetting("undershoot", "degC", 0.0, 5.0, 2,
                                "how far below the test temperature the cell goes first",
                                RVX_FIELD(double, testRecord.undershoot)));
  table.push_back(DoubleSetting("tolerance", "degC", 0.01, 5.0, 2,
                                "around the target within which the temperature counts as reached",
                                RVX_FIELD(double, testRecord.tolerance)));
  table.push_back(IntSetting("averaging-count", "s", 1, 20,
                             "seconds at the end of a run that are averaged",
                             RVX_FIELD(int32_t, testRecord.averagingCount)));
  table.push_back(SaveCsvSetting());
  table.push_back(SaveLocationSetting());
  table.push_back(OffsetSetting());
  table.push_back(IntSetting("response-timeout", "ms", 500, 60000,
                             "how long a run waits for a reply",
                             RVX_FIELD(int32_t, responseTimeout)));
  table.push_back(IntSetting("status-period", "ms", 100, 5000, "interval of the status polls",
                             RVX_FIELD(int32_t, statusPeriod)));
  table.push_back(ReadOnly(
      "tray-positions", "positions of the tray",
      [](const ConfigurationRecord& record) { return std::to_string(record.trayPositions); }));
  table.push_back(ReadOnly("samples-since-check", "samples run since the last check standard",
                           SamplesSinceCheck));
  table.push_back(ReadOnly("serial-number", "of the instrument",
                           [](const ConfigurationRecord& record) { return record.serialNumber; }));
  table.push_back(ReadOnly("firmware", "of the instrument", [](const ConfigurationRecord& record) {
    return record.firmwareVersion;
  }));
  return table;
}

#undef RVX_FIELD

}  // namespace

const std::vector<SettingEntry>& GetSettingsTable() {
  static const std::vector<SettingEntry> table = MakeTable();
  return table;
}

const SettingEntry* FindSetting(const std::string& key) {
  const std::vector<SettingEntry>& table = GetSettingsTable();
  const auto found = std::find_if(table.begin(), table.end(),
                                  [&](const SettingEntry& entry) { return entry.key == key; });
  return found != table.end() ? &*found : nullptr;
}

}  // namespace rvx
