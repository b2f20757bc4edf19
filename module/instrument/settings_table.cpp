#include "module/instrument/settings_table.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <type_traits>

#include "module/protocol/identification.h"
#include "platform/text.h"

namespace rvx {
namespace {

using platform::FormatText;

// The limits of a screen's number field are themselves not accepted there, so such an end is open
// here.
constexpr SettingRange Closed(double least, double most) { return {least, most, false}; }
constexpr SettingRange Below(double least, double most) { return {least, most, true}; }

// The range of one byte in a command, in seconds.
constexpr SettingRange kSeconds = Closed(0, 255);

using Config = ConfigurationFields;
using Kind = SettingKind;
using Group = SettingGroup;

constexpr Setting kSettings[] = {
    {.key = "instrument-id",
     .label = "ID :",
     .unit = "",
     .description = "name of the instrument",
     .kind = Kind::Name,
     .group = Group::Instrument,
     .field = &Config::instrumentId,
     .isEmptyDoubtful = true},
    {.key = "configuration-id",
     .label = "",
     .unit = "",
     .description = "name of this configuration",
     .kind = Kind::Name,
     .group = Group::None,
     .field = &Config::configurationId},
    {.key = "probe-id",
     .label = "ID :",
     .unit = "",
     .description = "label of the temperature probe",
     .kind = Kind::Text,
     .group = Group::Probe,
     .field = &Config::probeId},
    {.key = "probe-a0",
     .label = "a0 :",
     .unit = "",
     .description = "probe constant a0",
     .kind = Kind::Decimal,
     .group = Group::Probe,
     .field = &Config::a0,
     .range = Below(0, 2),
     .decimals = 6,
     .integerDigits = 1,
     .isEmptyDoubtful = true},
    {.key = "probe-a1",
     .label = "a1 :",
     .unit = "",
     .description = "probe constant a1",
     .kind = Kind::Decimal,
     .group = Group::Probe,
     .field = &Config::a1,
     .range = Below(0, 1),
     .decimals = 6,
     .integerDigits = 1,
     .isEmptyDoubtful = true},
    {.key = "probe-a2",
     .label = "a2 :",
     .unit = "",
     .description = "probe constant a2",
     .kind = Kind::Decimal,
     .group = Group::Probe,
     .field = &Config::a2,
     .range = Below(0, 1),
     .decimals = 9,
     .integerDigits = 1,
     .isEmptyDoubtful = true},
    {.key = "check-standard",
     .label = "P&rompt for check standards every ",
     .unit = "",
     .description = "prompt for check standards",
     .kind = Kind::Switch,
     .group = Group::Instrument,
     .field = &Config::checkStandardFlag},
    {.key = "check-standard-interval",
     .label = "&samples",
     .unit = "",
     .description = "samples between check standards",
     .kind = Kind::Whole,
     .group = Group::Instrument,
     .field = &Config::checkStandardInterval,
     .range = Below(0, 1000),
     .integerDigits = 3},
    {.key = "precondition-time",
     .label = "Precondition Time (min) : ",
     .unit = "min",
     .description = "motor preconditioning; 0 is off",
     .kind = Kind::Whole,
     .group = Group::Tray,
     .field = &TestParameters::preconditionTime,
     .range = Closed(0, 9),
     .integerDigits = 1},
    {.key = "precondition-speed",
     .label = "",
     .unit = "rpm",
     .description = "rotor speed of preconditioning",
     .kind = Kind::Whole,
     .group = Group::None,
     .field = &TestParameters::preconditionSpeed,
     .range = Closed(1, 980)},
    {.key = "injection-time",
     .label = "Sample Oil Injection Time (s) : ",
     .unit = "s",
     .description = "sample oil injection time",
     .kind = Kind::Whole,
     .group = Group::Tray,
     .field = &TestParameters::injectionTime,
     .range = kSeconds,
     .integerDigits = 3},
    {.key = "burst-time",
     .label = "",
     .unit = "s",
     .description = "injection burst",
     .kind = Kind::Whole,
     .group = Group::None,
     .field = &TestParameters::burstTime,
     .range = kSeconds},
    {.key = "pause-time",
     .label = "",
     .unit = "s",
     .description = "injection pause",
     .kind = Kind::Whole,
     .group = Group::None,
     .field = &TestParameters::pauseTime,
     .range = kSeconds},
    {.key = "purge-time",
     .label = "",
     .unit = "s",
     .description = "injection purge",
     .kind = Kind::Whole,
     .group = Group::None,
     .field = &TestParameters::purgeTime,
     .range = kSeconds},
    {.key = "injection-temperature",
     .label = "Injection Temperature (C) :",
     .unit = "degC",
     .description = "cell temperature at which the oil is injected",
     .kind = Kind::Choice,
     .group = Group::Tray,
     .field = &Config::injectionTemperature},
    {.key = "cool-down-time",
     .label = "RVX Cell - Equilibration Time (s) : ",
     .unit = "s",
     .description = "cell equilibration time",
     .kind = Kind::Whole,
     .group = Group::Tray,
     .field = &TestParameters::coolDownTime,
     .range = kSeconds,
     .integerDigits = 3},
    {.key = "rotor-on-time",
     .label = "Rotor ON Time for Test (s) : ",
     .unit = "s",
     .description = "rotor ON time of a test",
     .kind = Kind::Whole,
     .group = Group::Tray,
     .field = &TestParameters::rotorOnTimes,
     .range = kSeconds,
     .integerDigits = 3},
    {.key = "undershoot",
     .label = "",
     .unit = "degC",
     .description = "how far below the test temperature the cell goes first",
     .kind = Kind::Decimal,
     .group = Group::None,
     .field = &TestParameters::undershoot,
     .range = Closed(0, 5),
     .decimals = 2},
    {.key = "tolerance",
     .label = "",
     .unit = "degC",
     .description = "around the target within which the temperature counts as reached",
     .kind = Kind::Decimal,
     .group = Group::None,
     .field = &TestParameters::tolerance,
     .range = Closed(0.01, 5),
     .decimals = 2},
    {.key = "averaging-count",
     .label = "",
     .unit = "s",
     .description = "seconds at the end of a run that are averaged",
     .kind = Kind::Whole,
     .group = Group::None,
     .field = &TestParameters::averagingCount,
     .range = Closed(1, 20)},
    {.key = "save-csv",
     .label = "Save each measurement as csv : ",
     .unit = "",
     .description = "save each measurement as a csv file",
     .kind = Kind::Switch,
     .group = Group::Tray,
     .field = &TestParameters::csvFlag},
    {.key = "save-location",
     .label = "Save Location :",
     .unit = "",
     .description = "folder of the csv files",
     .kind = Kind::Folder,
     .group = Group::Tray,
     .field = &TestParameters::saveLocation},
    // Changes every reading of the cell, so only the service may change it.
    {.key = "temperature-offset",
     .label = "Temperature Offset (C) :",
     .unit = "degC",
     .description = "added to the cell's temperature on models 3 and 4",
     .kind = Kind::Decimal,
     .group = Group::Tray,
     .field = &Config::temperatureOffset,
     .range = Below(0, 1),
     .decimals = 2,
     .integerDigits = 1,
     .level = kLevelService,
     .isOnModel = UsesTemperatureOffset},
    {.key = "response-timeout",
     .label = "",
     .unit = "ms",
     .description = "how long a run waits for a reply",
     .kind = Kind::Whole,
     .group = Group::None,
     .field = &Config::responseTimeout,
     .range = Closed(500, 60000)},
    {.key = "status-period",
     .label = "",
     .unit = "ms",
     .description = "interval of the status polls",
     .kind = Kind::Whole,
     .group = Group::None,
     .field = &Config::statusPeriod,
     .range = Closed(100, 5000)},
    {.key = "tray-positions",
     .label = "",
     .unit = "",
     .description = "positions of the tray",
     .kind = Kind::Whole,
     .group = Group::None,
     .field = &Config::trayPositions,
     .level = kLevelUnreachable},
    {.key = "samples-since-check",
     .label = "",
     .unit = "",
     .description = "samples run since the last check standard",
     .kind = Kind::Count,
     .group = Group::None,
     .field = &Config::samplesSinceCheck,
     .level = kLevelUnreachable},
    {.key = "serial-number",
     .label = "S/N :",
     .unit = "",
     .description = "of the instrument",
     .kind = Kind::Text,
     .group = Group::Instrument,
     .field = &Config::serialNumber,
     .level = kLevelUnreachable},
    {.key = "firmware",
     .label = "Firmware :",
     .unit = "",
     .description = "of the instrument",
     .kind = Kind::Text,
     .group = Group::Instrument,
     .field = &Config::firmwareVersion,
     .level = kLevelUnreachable},
};

template <class Record, class Value>
auto& FieldOf(Record& record, Value ConfigurationFields::*field) {
  return record.*field;
}
template <class Record, class Value>
auto& FieldOf(Record& record, Value TestParameters::*field) {
  return record.testRecord.*field;
}
template <class Record>
auto& FieldOf(Record& record, std::array<int32_t, kMaxTests> TestParameters::*field) {
  return (record.testRecord.*field)[0];
}

template <class Record>
double NumberOf(const SettingField& field, const Record& record) {
  return std::visit(
      [&](auto member) -> double {
        const auto& value = FieldOf(record, member);
        if constexpr (std::is_arithmetic_v<std::decay_t<decltype(value)>>) {
          return static_cast<double>(value);
        } else {
          return 0.0;
        }
      },
      field);
}

void StoreNumber(const SettingField& field, ConfigurationFields& record, double number) {
  std::visit(
      [&](auto member) {
        auto& value = FieldOf(record, member);
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_arithmetic_v<Value>) value = static_cast<Value>(number);
      },
      field);
}

std::string TextOf(const SettingField& field, const ConfigurationFields& record) {
  return std::visit(
      [&](auto member) -> std::string {
        const auto& value = FieldOf(record, member);
        if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::string>) {
          return value;
        } else {
          return {};
        }
      },
      field);
}

void StoreText(const SettingField& field, ConfigurationFields& record, const std::string& text) {
  std::visit(
      [&](auto member) {
        auto& value = FieldOf(record, member);
        if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::string>) value = text;
      },
      field);
}

bool AcceptsNumber(const Setting& setting, double value) {
  if (setting.kind == SettingKind::Choice) {
    return std::find(kInjectionTemperatures.begin(), kInjectionTemperatures.end(), value) !=
           kInjectionTemperatures.end();
  }
  const SettingRange& range = setting.range;
  // Written so that NaN is in no range.
  const bool isAbove = value >= range.least;
  const bool isBelow = range.isMostOpen ? value < range.most : value <= range.most;
  if (!isAbove || !isBelow) return false;
  return setting.group == SettingGroup::None ||
         platform::ParseDouble(FormatText("%.*f", setting.decimals, value)) == value;
}

SettingAnswer WriteText(const Setting& setting, ConfigurationFields& record,
                        const std::string& text) {
  // Control characters are the separators of the stored text.
  const bool isPlain = std::none_of(text.begin(), text.end(),
                                    [](char c) { return static_cast<unsigned char>(c) < 0x20; });
  const bool isEmptyName = text.empty() && setting.isEmptyDoubtful;
  const bool isName =
      isEmptyName || (!text.empty() && text.find_first_of("\",") == std::string::npos);
  if (!isPlain || (setting.kind == SettingKind::Name && !isName)) return SettingAnswer::Refused;
  StoreText(setting.field, record, text);
  return isEmptyName ? SettingAnswer::Doubtful : SettingAnswer::Accepted;
}

// The name of a csv file is added directly after the location, so that has to end with a separator.
SettingAnswer WriteFolder(const Setting& setting, ConfigurationFields& record,
                          const std::string& text) {
  const bool needsSeparator = !text.empty() && text.back() != '/';
  return WriteText(setting, record, needsSeparator ? text + '/' : text);
}

SettingAnswer WriteNumber(const Setting& setting, ConfigurationFields& record,
                          const std::string& text) {
  std::optional<double> value;
  if (setting.kind == SettingKind::Whole) {
    value = platform::ParseInt(text);
  } else {
    value = platform::ParseDouble(text);
  }
  if (!value || !AcceptsNumber(setting, *value)) return SettingAnswer::Refused;
  StoreNumber(setting.field, record, *value);
  return setting.isEmptyDoubtful && *value == 0.0 ? SettingAnswer::Doubtful
                                                  : SettingAnswer::Accepted;
}

SettingAnswer WriteSwitch(const Setting& setting, ConfigurationFields& record,
                          const std::string& text) {
  const bool on = text == "on" || text == "1";
  if (!on && text != "off" && text != "0") return SettingAnswer::Refused;
  StoreNumber(setting.field, record, on ? 1 : 0);
  return SettingAnswer::Accepted;
}

}  // namespace

std::span<const Setting> GetSettingsTable() { return kSettings; }

const Setting* FindSetting(const std::string& key) {
  const auto* const found =
      std::find_if(std::begin(kSettings), std::end(kSettings),
                   [&key](const Setting& setting) { return setting.key == key; });
  return found != std::end(kSettings) ? found : nullptr;
}

std::string AcceptedText(const Setting& setting) {
  if (setting.level == kLevelUnreachable) return "set by the instrument or the program";
  switch (setting.kind) {
    case SettingKind::Whole:
    case SettingKind::Decimal: {
      const double step = std::pow(10.0, -setting.decimals);
      const SettingRange& range = setting.range;
      return FormatText("%.*f to %.*f", setting.decimals,
                        setting.isEmptyDoubtful ? range.least + step : range.least,
                        setting.decimals, range.isMostOpen ? range.most - step : range.most);
    }
    case SettingKind::Choice: {
      std::string all;
      for (const double degrees : kInjectionTemperatures) {
        const bool isLast = degrees == kInjectionTemperatures.back();
        all += (all.empty() ? "" : isLast ? " or " : ", ") + FormatText("%.f", degrees);
      }
      return all;
    }
    case SettingKind::Switch:
      return "on or off";
    case SettingKind::Name:
      return "a text without quotes and commas";
    case SettingKind::Folder:
      return "a folder that exists";
    case SettingKind::Text:
    case SettingKind::Count:
      break;
  }
  return "a text";
}

std::string ReadSetting(const Setting& setting, const ConfigurationFields& record) {
  const double number = NumberOf(setting.field, record);
  switch (setting.kind) {
    case SettingKind::Whole:
    case SettingKind::Decimal:
    case SettingKind::Choice:
      return FormatText("%.*f", setting.decimals, number);
    case SettingKind::Switch:
      return number != 0.0 ? "on" : "off";
    case SettingKind::Count:
      return number >= kNeverChecked ? "never" : FormatText("%.f", number);
    case SettingKind::Name:
    case SettingKind::Text:
    case SettingKind::Folder:
      break;
  }
  return TextOf(setting.field, record);
}

SettingAnswer WriteSetting(const Setting& setting, ConfigurationFields& record,
                           const std::string& text) {
  if (setting.level == kLevelUnreachable) return SettingAnswer::Refused;
  if (setting.isOnModel != nullptr && !setting.isOnModel(record.modelCode)) {
    return SettingAnswer::Refused;
  }
  switch (setting.kind) {
    case SettingKind::Whole:
    case SettingKind::Decimal:
    case SettingKind::Choice:
      return WriteNumber(setting, record, text);
    case SettingKind::Switch:
      return WriteSwitch(setting, record, text);
    case SettingKind::Name:
    case SettingKind::Text:
      return WriteText(setting, record, platform::Trim(text));
    case SettingKind::Folder:
      return WriteFolder(setting, record, text);
    case SettingKind::Count:
      break;
  }
  return SettingAnswer::Refused;
}

const Setting* FindMissingFolder(const ConfigurationFields& changed,
                                 const ConfigurationFields& before) {
  const TestRecord& now = changed.testRecord;
  const TestRecord& old = before.testRecord;
  if (now.csvFlag == 0) return nullptr;
  if (old.csvFlag != 0 && now.saveLocation == old.saveLocation) return nullptr;
  std::error_code error;
  if (std::filesystem::is_directory(now.saveLocation, error)) return nullptr;
  return FindSetting("save-location");
}

void CopySetting(const Setting& setting, ConfigurationFields& to, const ConfigurationFields& from) {
  std::visit([&](auto member) { FieldOf(to, member) = FieldOf(from, member); }, setting.field);
}

ConfigurationFields MakeDefaultConfiguration(char modelCode) {
  ConfigurationFields record;
  record.modelCode = modelCode;
  record.SetDefaults(TestRecord());
  return record;
}

}  // namespace rvx
