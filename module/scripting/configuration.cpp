// Constants and settings of an instrument by program.
#include <algorithm>
#include <cmath>

#include "module/calibration/calibration_fit.h"
#include "module/instrument/problems.h"
#include "module/instrument/save_cell_constants.h"
#include "module/instrument/settings_change.h"
#include "module/instrument/settings_table.h"
#include "module/protocol/identification.h"
#include "module/scripting/scriptable_instrument.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr size_t kConfigurationLine = 2;

// Describes a value of a settings text that no screen could have written; empty if there is none.
std::string FindDamage(const ConfigurationFields& record) {
  constexpr int32_t kMaxTrayPositions = 30;
  if (record.trayPositions < 1 || record.trayPositions > kMaxTrayPositions) {
    return platform::FormatText("has %d tray positions; accepted: 1 to %d", record.trayPositions,
                                kMaxTrayPositions);
  }
  if (record.testRecord.testCount < 1 || record.testRecord.testCount > kMaxTests) {
    return platform::FormatText("has %d tests; accepted: 1 to %d", record.testRecord.testCount,
                                kMaxTests);
  }
  if (record.samplesSinceCheck < 0) return "has a negative number of samples since the last check";
  const auto areFinite = [](const auto& values) {
    return std::all_of(std::begin(values), std::end(values),
                       [](double value) { return std::isfinite(value); });
  };
  const double probe[] = {record.a0, record.a1, record.a2};
  if (!areFinite(record.b0) || !areFinite(record.b1) || !areFinite(record.b2) ||
      !areFinite(probe) || !areFinite(record.testRecord.testTemperatures)) {
    return "has a constant or a temperature that is no finite number";
  }
  return std::string();
}

// Reads the configuration in a settings text of an instrument of this type, or says why the text
// can't be taken as a whole.
ScriptingResult ReadText(const std::string& text, const std::string& typeName,
                         ConfigurationFields& trial) {
  const auto damaged = [](const std::string& found) {
    return BadValue(Code::DamagedText, Field::SettingsText, found, std::string(), kNothingChanged);
  };
  const std::vector<std::string> lines = platform::SplitFields(text, '\n');
  constexpr size_t kMinLines = 4;
  if (lines.size() < kMinLines || lines.front() != typeName) {
    return damaged(platform::FormatText(
        "This is no settings text of an %s: it has %zu lines and begins with \"%.40s\"; it should "
        "have at least %zu and begin with \"%s\".",
        typeName.c_str(), lines.size(), lines.empty() ? "" : lines.front().c_str(), kMinLines,
        typeName.c_str()));
  }
  constexpr size_t kMinFields = 44;
  const size_t fields = platform::SplitFields(lines[kConfigurationLine], '\x0B').size();
  if (fields < kMinFields) {
    return damaged(
        platform::FormatText("Line 3 of the settings text has %zu fields; at least %zu are needed.",
                             fields, kMinFields));
  }
  trial.FromText(lines[kConfigurationLine], kLoadAll);
  const std::string wrong = FindDamage(trial);
  if (wrong.empty()) return std::nullopt;
  return damaged("The settings text " + wrong + ".");
}

ScriptingProblem NotAccepted(const Setting& setting, const std::string& value) {
  return OfSetting(BadValue(Code::NotAccepted, Field::Setting,
                            "The settings text has \"" + value + "\" for " + setting.key + ".",
                            AcceptedText(setting), kNothingChanged),
                   setting.key);
}

// The values of a text were never checked, so those that it changes are checked like typed ones.
ScriptingResult CheckChanges(const ConfigurationFields& trial, const ConfigurationFields& present) {
  for (const Setting& setting : GetSettingsTable()) {
    if (setting.level == kLevelUnreachable) continue;
    const std::string value = ReadSetting(setting, trial);
    if (value == ReadSetting(setting, present)) continue;
    ConfigurationFields probe = trial;
    if (WriteSetting(setting, probe, value) != SettingAnswer::Accepted) {
      return NotAccepted(setting, value);
    }
    if (ScriptingResult problem =
            CheckLevel(setting.level, std::string("Changing ") + setting.key)) {
      return OfSetting(*problem, setting.key);
    }
  }
  const Setting* folder = FindMissingFolder(trial, present);
  if (folder != nullptr) return NotAccepted(*folder, ReadSetting(*folder, trial));
  return std::nullopt;
}

}  // namespace

std::vector<CellConstants> ScriptableInstrument::GetCellConstants() {
  std::vector<CellConstants> all;
  const ConfigurationRecord& record = configuration();
  ConfigurationGuard guard(record);
  for (int slot = 0; slot < record.GetSlotCount(); ++slot) {
    const size_t i = static_cast<size_t>(slot);
    const ConfigurationFields& fields = record.fields;
    CellConstants constants{kCalibrationTemperatures[i], fields.b0[i], fields.b1[i], fields.b2[i],
                            fields.calibrationDates[i],  false};
    constants.empty = constants.b0 == 0.0 && constants.b1 == 0.0 && constants.b2 == 0.0;
    all.push_back(constants);
  }
  return all;
}

ScriptingResult ScriptableInstrument::FindSlot(double temperature, int& slot) {
  const auto inUse = kCalibrationTemperatures.begin() + configuration().GetSlotCount();
  const auto found = std::find(kCalibrationTemperatures.begin(), inUse, temperature);
  slot = static_cast<int>(found - kCalibrationTemperatures.begin());
  if (found != inUse) return std::nullopt;
  std::string accepted;
  for (auto t = kCalibrationTemperatures.begin(); t != inUse; ++t) {
    accepted += platform::FormatText(accepted.empty() ? "%.f" : ", %.f", *t);
  }
  return BadValue(
      Code::NotAccepted, Field::Temperature,
      platform::FormatText("%g is no calibration temperature of this instrument.", temperature),
      accepted + " degC", kNothingChanged);
}

ScriptingResult ScriptableInstrument::SetCellConstants(double temperature, double b0, double b1,
                                                       double b2) {
  if (ScriptingResult problem = FindSettingsRefusal(*this)) return problem;
  int found = 0;
  if (ScriptingResult problem = FindSlot(temperature, found)) return problem;
  if (!std::isfinite(b0) || !std::isfinite(b1) || !std::isfinite(b2)) {
    return BadValue(Code::NotAccepted, Field::Constants, "A constant is not a finite number.",
                    std::string(), kNothingChanged);
  }
  const auto slot = static_cast<size_t>(found);
  const CellConstants before = GetCellConstants()[slot];
  // Whole numbers, as a fit shows them.
  const CalibrationTexts texts = FormatFit({b0, b1, b2, 0.0, 0.0});
  const SavedConstants saved = SaveCellConstants(*this, found, found, texts, platform::LocalNow());
  if (saved.stored) return std::nullopt;
  if (!saved.refusal.empty()) return Unable(Code::LevelTooLow, saved.refusal);
  // The date has been restored already; the constants are too, since a failed command changes
  // nothing.
  ConfigurationRecord& record = configuration();
  ConfigurationGuard guard(record);
  record.fields.b0[slot] = before.b0;
  record.fields.b1[slot] = before.b1;
  record.fields.b2[slot] = before.b2;
  return NotStored(Code::NotStored, saved.reason);
}

std::vector<InstrumentSetting> ScriptableInstrument::GetSettings() {
  std::vector<InstrumentSetting> settings;
  const ConfigurationRecord& record = configuration();
  ConfigurationGuard guard(record);
  for (const Setting& setting : GetSettingsTable()) {
    settings.push_back({setting.key, ReadSetting(setting, record.fields), setting.unit,
                        AcceptedText(setting), setting.description, setting.level});
  }
  return settings;
}

ScriptingResult ScriptableInstrument::SetSettings(
    const std::vector<std::pair<std::string, std::string>>& values) {
  return ChangeSettings(*this, values, Doubts::Refuse, WhenNotStored::PutBack);
}

ScriptingResult ScriptableInstrument::ImportSettings(const std::string& text) {
  if (ScriptingResult problem = FindSettingsRefusal(*this)) return problem;
  const ConfigurationFields present = configuration().Copy();
  ConfigurationFields trial = present;
  if (ScriptingResult problem = ReadText(text, GetTypeName(), trial)) return problem;
  if (ScriptingResult problem = CheckChanges(trial, present)) return problem;
  const std::string old = SaveSettingsText();
  LoadSettingsText(text, kLoadAll);
  {
    // The text of another instrument must not change what this instrument has reported about
    // itself.
    ConfigurationGuard guard(configuration());
    configuration().fields.serialNumber = present.serialNumber;
  }
  return StoreSettings(*this, [this, &old] { LoadSettingsText(old, kLoadAll); });
}

}  // namespace rvx
