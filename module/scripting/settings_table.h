// The settings of an instrument by readable keys: what each accepts, and who may change it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "boundary/instrument_scripting.h"
#include "module/instrument/configuration_record.h"

namespace rvx {

// A field that only the instrument or the program itself writes.
inline constexpr int32_t kNobodysLevel = 1000;
inline constexpr int32_t kOperatorLevel = 10;
inline constexpr int32_t kManagerLevel = 50;
inline constexpr int32_t kServiceLevel = 100;

struct SettingEntry {
  std::string key;
  std::string unit;
  std::string accepts;
  std::string description;
  int32_t level = kManagerLevel;
  // Between Lock and Unlock of the record, or on a working copy.
  std::function<std::string(const ConfigurationRecord&)> get;
  // False if the text is not accepted; then nothing is written. Null where nobody may write.
  std::function<bool(ConfigurationRecord&, const std::string&)> set;
  // Copies the exact value from one record to another. Null where nobody may write.
  std::function<void(ConfigurationRecord& to, const ConfigurationRecord& from)> copy = nullptr;
};

// In the order in which people see them.
const std::vector<SettingEntry>& GetSettingsTable();

// Null for an unknown key.
const SettingEntry* FindSetting(const std::string& key);

}  // namespace rvx
