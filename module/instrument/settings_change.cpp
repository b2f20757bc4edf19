#include "module/instrument/settings_change.h"

#include "boundary/host.h"
#include "module/instrument/c_rvx.h"
#include "module/instrument/problems.h"
#include "module/instrument/settings_table.h"

namespace rvx {
namespace {

ScriptingProblem NotAccepted(const Setting& setting, const std::string& value) {
  const std::string unit = *setting.unit == '\0' ? std::string() : std::string(" ") + setting.unit;
  return BadValue(Code::NotAccepted, Field::Setting,
                  "\"" + value + "\" is not accepted for " + setting.key + ".",
                  AcceptedText(setting) + unit, kNothingChanged);
}

// Writes one setting into a working copy.
ScriptingResult Write(ConfigurationFields& trial, const std::string& key, const std::string& value,
                      Doubts doubts) {
  const Setting* setting = FindSetting(key);
  if (setting == nullptr) {
    return Unable(Code::UnknownSetting, "There is no setting \"" + key + "\".");
  }
  if (setting->level == kLevelUnreachable) {
    return Unable(Code::FixedSetting,
                  "\"" + key + "\" can't be changed here: it is " + AcceptedText(*setting) + ".",
                  kNothingChanged);
  }
  if (ScriptingResult problem = CheckLevel(setting->level, "Changing " + key)) return problem;
  const SettingAnswer answer = WriteSetting(*setting, trial, value);
  const bool isTaken = answer == SettingAnswer::Accepted ||
                       (answer == SettingAnswer::Doubtful && doubts == Doubts::Confirmed);
  if (!isTaken) return NotAccepted(*setting, value);
  return std::nullopt;
}

}  // namespace

ScriptingResult FindSettingsRefusal(C_RVX& instrument) {
  if (ScriptingResult problem = CheckLevel(kLevelManager, "Changing the settings")) return problem;
  if (instrument.IsTrayActive() == 0) return std::nullopt;
  return Unable(Code::TrayRunning, "The settings can't be changed while a tray is running.",
                "Nothing was changed. Pause the tray or wait for its end.");
}

ScriptingResult ChangeSettings(C_RVX& instrument,
                               const std::vector<std::pair<std::string, std::string>>& values,
                               Doubts doubts, WhenNotStored whenNotStored) {
  if (ScriptingResult problem = FindSettingsRefusal(instrument)) return problem;
  ConfigurationRecord& record = instrument.configuration();
  const ConfigurationFields before = record.Copy();
  ConfigurationFields trial = before;
  for (const auto& [key, value] : values) {
    if (ScriptingResult problem = Write(trial, key, value, doubts)) return OfSetting(*problem, key);
  }
  if (const Setting* folder = FindMissingFolder(trial, before)) {
    return OfSetting(NotAccepted(*folder, ReadSetting(*folder, trial)), folder->key);
  }
  // Field by field, since the instrument's threads keep values in the record too.
  const auto copyFrom = [&record, &values](const ConfigurationFields& source) {
    ConfigurationGuard guard(record);
    for (const auto& [key, value] : values) CopySetting(*FindSetting(key), record.fields, source);
  };
  copyFrom(trial);
  if (whenNotStored == WhenNotStored::StayInForce) return StoreSettings(instrument, nullptr);
  return StoreSettings(instrument, [&] { copyFrom(before); });
}

ScriptingResult StoreSettings(C_RVX& instrument, const std::function<void()>& undo) {
  GetInstrumentManager()->NotifyInstrumentChanged();
  try {
    GetInstrumentArchive()->StoreInstrument(instrument.GetArchiveKey(), &instrument);
    return std::nullopt;
  } catch (ArchiveException* failure) {
    const std::string reason = failure->GetRecord().message;
    delete failure;
    if (undo) {
      undo();
      GetInstrumentManager()->NotifyInstrumentChanged();
    }
    return NotStored(Code::NotStored, reason);
  }
}

}  // namespace rvx
