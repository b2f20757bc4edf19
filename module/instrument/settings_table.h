// The settings of an instrument, each declared once: its names, what it accepts, who may change it,
// and where it is kept. Screens, command line, import and printout take everything from here.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>

#include "boundary/access_levels.h"
#include "module/instrument/configuration_record.h"

namespace rvx {

enum class SettingKind {
  Whole,    // a whole number in a range
  Decimal,  // a number in a range
  Choice,   // one of kInjectionTemperatures
  Switch,   // on or off
  Name,     // a name: not empty, without quotes and commas
  Text,     // any text
  Folder,   // a folder, kept with its trailing separator; FindMissingFolder says if it must exist
  Count     // a whole number that only the program counts; kNeverChecked and more is "never"
};

// The section of a screen or a sheet that shows a setting.
enum class SettingGroup {
  Instrument,  // instrument settings: identification and check standards
  Probe,       // instrument settings: the temperature probe
  Tray,        // tray settings
  None         // on no screen: for programs and the service
};

// The range of a number. An open end is itself not accepted.
struct SettingRange {
  double least = 0.0;
  double most = 0.0;
  bool isMostOpen = false;
};

// What the table says to a value.
enum class SettingAnswer {
  Accepted,
  Doubtful,  // may be stored after the user has been asked; refused where nobody can be asked
  Refused
};

// Where a setting is kept: a field of the configuration or of its test record; of an array it means
// the first element.
using SettingField =
    std::variant<int32_t ConfigurationFields::*, double ConfigurationFields::*,
                 std::string ConfigurationFields::*, uint8_t ConfigurationFields::*,
                 int32_t TestParameters::*, double TestParameters::*, std::string TestParameters::*,
                 std::array<int32_t, kMaxTests> TestParameters::*>;

// One row. The texts live as long as the program.
struct Setting {
  const char* key;          // "injection-time"
  const char* label;        // beside its field on the screen, unit included; "" on no screen
  const char* unit;         // "s", "degC", ""
  const char* description;  // one line
  SettingKind kind;
  SettingGroup group;
  SettingField field;
  SettingRange range = {};
  int decimals = 0;       // of a number as it is shown, and the most that can be typed on a screen
  int integerDigits = 0;  // the most that can be typed on a screen; 0 on no screen
  int32_t level = kLevelManager;  // needed for a change
  // Whether a model has the setting; null: all have it.
  bool (*isOnModel)(char modelCode) = nullptr;
  // Whether 0, or the empty text, is doubtful: it is what an emptied field holds, and with it every
  // temperature is wrong, or the instrument's samples can't be told from those of others.
  bool isEmptyDoubtful = false;
};

// The injection temperatures, degrees C, in the order in which people choose from them.
inline constexpr std::array<double, 11> kInjectionTemperatures = {25, 20,  15,  10,  5,  0,
                                                                  -5, -10, -15, -20, -25};

// All settings, in the order in which people see them.
std::span<const Setting> GetSettingsTable();
// Null for an unknown key.
const Setting* FindSetting(const std::string& key);

// What may be written without a question, for messages: "0 to 255". The ends are numbers that are
// accepted.
std::string AcceptedText(const Setting& setting);

// The next three work on a working copy, or on the fields of a record between Lock and Unlock.

// The value as text, with a point as decimal sign.
std::string ReadSetting(const Setting& setting, const ConfigurationFields& record);
// Writes an accepted or a doubtful text, so whoever refuses a doubtful one works on a copy. Refuses
// and writes nothing if the text is not accepted, the record's model has no such setting or nobody
// may write it. For a setting on a screen, numbers with more decimals than can be typed there are
// refused. The caller checks the level, and the folder after the last setting.
SettingAnswer WriteSetting(const Setting& setting, ConfigurationFields& record,
                           const std::string& text);
// The setting of the folder for csv files, if files are to be written from now on to a folder that
// does not exist; null if all is well. A folder that nothing is written to may be missing, so this
// is checked after all changes, and only if they have changed the folder or its switch. Asks the
// file system.
const Setting* FindMissingFolder(const ConfigurationFields& changed,
                                 const ConfigurationFields& before);
// Copies the exact value, digits that are not shown included.
void CopySetting(const Setting& setting, ConfigurationFields& to, const ConfigurationFields& from);

// A configuration of this model with every default. Asks the archive manager for the default
// folder. On models with a temperature offset one of exactly 0 becomes kUsualTemperatureOffset when
// the instrument is opened.
ConfigurationFields MakeDefaultConfiguration(char modelCode);

}  // namespace rvx
