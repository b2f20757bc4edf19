// The settings text of an instrument.
#include <algorithm>

#include "module/instrument/c_rvx_parts.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr char kTrayLine[] = "Tray 0";
constexpr size_t kMaxLines = 65;
// The line of the configuration's text, counted from 0.
constexpr size_t kConfigurationLine = 2;
constexpr size_t kFirstTrayLine = 3;
constexpr size_t kMinLines = 4;
// The number of positions comes from a stored text, which may be damaged.
constexpr int32_t kMaxPositions = 999;

// A line feed inside a field would cut the text in the wrong place.
std::string AsLine(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text + '\n';
}

}  // namespace

std::string C_RVX::GetArchiveKey() {
  const ConfigurationGuard guard(configuration_);
  ConfigurationFields& fields = configuration_.fields;
  return platform::FormatText("RVX%s:%d", fields.portName.c_str(), fields.address);
}

std::string C_RVX::SaveSettingsText() {
  std::string text = AsLine(GetTypeName()) + AsLine(GetInstrumentId());
  text += AsLine(configuration_.ToText());
  text += AsLine(kTrayLine);
  TrayGuard guard(parts_->tray);
  for (int32_t position = 0; position < parts_->tray.GetSize(); ++position) {
    Action& action = *parts_->tray.GetAt(position);
    text += AsLine(action.GetClassName()) + AsLine(action.GetStateText());
  }
  return text;
}

void C_RVX::LoadSettingsText(const std::string& text, int32_t flags) {
  const std::vector<std::string> lines = platform::SplitFields(text, '\n', kMaxLines);
  const bool accepted = lines.size() >= kMinLines && lines[0] == GetTypeName();
  parts_->settingsTaken = accepted && configuration_.FromText(lines[kConfigurationLine], flags);
  if (accepted && (flags & kLoadTray) != 0) {
    if (IsTrayRunning() != 0) StopTray(0);
    // If the user lets the samples go on, their actions must stay.
    if (IsTrayRunning() == 0) ReplaceTray(lines);
  }
  GetInstrumentManager()->NotifyInstrumentChanged();
}

void C_RVX::ReplaceTray(const std::vector<std::string>& lines) {
  // Made before the tray's lock is taken: making an action waits for the user-interface thread.
  std::vector<std::shared_ptr<Action>> actions = ActionsFromText(lines);
  std::vector<std::shared_ptr<Action>> removed;
  {
    TrayGuard guard(parts_->tray);
    removed = parts_->tray.ReplaceAll(std::move(actions));
  }
  for (const std::shared_ptr<Action>& action : removed) action->Stop();
}

std::vector<std::shared_ptr<Action>> C_RVX::ActionsFromText(const std::vector<std::string>& lines) {
  int32_t positions = 0;
  {
    const ConfigurationGuard guard(configuration_);
    positions = std::clamp(configuration_.fields.trayPositions, 0, kMaxPositions);
  }
  const auto trayLine = std::find(lines.begin() + kFirstTrayLine, lines.end(), kTrayLine);
  size_t next = static_cast<size_t>(trayLine - lines.begin()) + 1;
  std::vector<std::shared_ptr<Action>> actions;
  for (int32_t position = 0; position < positions; ++position, next += 2) {
    std::shared_ptr<Action> action;
    if (next < lines.size()) {
      try {
        action.reset(CreateActionFromText(lines[next]));
        if (next + 1 < lines.size()) action->SetStateText(lines[next + 1]);
      } catch (CViscoException* failure) {
        // A text of another version or a damaged one: this position stays empty, the others load.
        delete failure;
        action.reset();
      }
    }
    actions.push_back(action ? std::move(action) : MakeAction(kNullAction));
  }
  return actions;
}

bool C_RVX::LoadStoredSettings() {
  try {
    GetInstrumentArchive()->LoadInstrument(GetArchiveKey(), this, kLoadAll);
    if (parts_->settingsTaken) return true;
    ActionErrorRecord record = MakeErrorRecord();
    record.message =
        "The stored settings of the instrument are damaged and were not taken; the defaults are in "
        "force. Import a saved settings text, or enter the settings and constants anew.";
    record.kind = 1;
    ReportError(record);
  } catch (ArchiveException* failure) {
    delete failure;  // nothing is stored yet, or the host has said why it can't be read
  }
  // Reading the defaults back fills the tray with empty actions.
  LoadSettingsText(SaveSettingsText(), kLoadAll);
  return false;
}

void C_RVX::ReloadStandards() {
  if (!parts_->standards.Read()) throw new ArchiveException;
  // Builds anew what was built from the old list.
  LoadSettingsText(SaveSettingsText(), kLoadAll);
}

}  // namespace rvx
