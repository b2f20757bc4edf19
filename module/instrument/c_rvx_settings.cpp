// The settings text of an instrument, and its standards.
#include <algorithm>

#include "boundary/standards_text.h"
#include "module/calibration/standards_map.h"
#include "module/instrument/c_rvx.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr char kTrayLine[] = "Tray 0";
constexpr size_t kMostLines = 65;
// The configuration's text stands on this line, counted from 0.
constexpr size_t kConfigurationLine = 2;
constexpr size_t kFirstTrayLine = 3;
constexpr size_t kFewestLines = 4;
// The number of positions comes from a stored text, which nobody has checked.
constexpr int32_t kMostPositions = 999;

// A line feed inside a field would cut the text in the wrong place.
std::string AsLine(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text + '\n';
}

}  // namespace

std::string C_RVX::GetArchiveKey() {
  ConfigurationGuard guard(configuration_);
  return platform::FormatText("RVX%s:%d", configuration_.portName.c_str(), configuration_.address);
}

std::string C_RVX::SaveSettingsText() {
  std::string text = AsLine(GetTypeName()) + AsLine(GetInstrumentId());
  text += AsLine(configuration_.ToText());
  text += AsLine(kTrayLine);
  TrayGuard guard(tray_);
  for (int32_t position = 0; position < tray_.GetSize(); ++position) {
    Action& action = *tray_.GetAt(position);
    text += AsLine(action.GetClassName()) + AsLine(action.GetStateText());
  }
  return text;
}

void C_RVX::LoadSettingsText(const std::string& text, int32_t flags) {
  const std::vector<std::string> lines = platform::SplitFields(text, '\n', kMostLines);
  const bool accepted = lines.size() >= kFewestLines && lines[0] == GetTypeName();
  settingsTaken_ = accepted && configuration_.FromText(lines[kConfigurationLine], flags);
  if (accepted && (flags & kLoadTray) != 0) {
    if (IsTrayRunning() != 0) StopTray(0);
    // A person who wants the samples to go on does not want their actions replaced either.
    if (IsTrayRunning() == 0) ReplaceTray(lines);
  }
  GetInstrumentManager()->NotifyInstrumentChanged();
}

void C_RVX::ReplaceTray(const std::vector<std::string>& lines) {
  // Made before the tray's lock is taken: making an action waits for the user-interface thread.
  std::vector<std::shared_ptr<Action>> actions = ActionsFromText(lines);
  std::vector<std::shared_ptr<Action>> removed;
  {
    TrayGuard guard(tray_);
    removed = tray_.ReplaceAll(std::move(actions));
  }
  for (const std::shared_ptr<Action>& action : removed) action->Stop();
}

std::vector<std::shared_ptr<Action>> C_RVX::ActionsFromText(const std::vector<std::string>& lines) {
  int32_t positions = 0;
  {
    ConfigurationGuard guard(configuration_);
    positions = std::clamp(configuration_.trayPositions, 0, kMostPositions);
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
    if (settingsTaken_) return true;
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

CStandardsMap* C_RVX::GetStandards() {
  {
    platform::PlainGuard guard(standardsLock_);
    if (standards_ != nullptr) return standards_;
  }
  LoadStandards();
  platform::PlainGuard guard(standardsLock_);
  return standards_;
}

void C_RVX::ReloadStandards() {
  if (!LoadStandards()) throw new ArchiveException;
  // Whatever was built on the old list is built anew.
  LoadSettingsText(SaveSettingsText(), kLoadAll);
}

bool C_RVX::LoadStandards() {
  uint64_t read = 0;
  {
    platform::PlainGuard guard(standardsLock_);
    read = ++standardsReads_;
  }
  bool lowTemperature = false;
  {
    ConfigurationGuard guard(configuration_);
    lowTemperature = configuration_.GetSlotCount() == kCalibrationSlots;
  }
  std::unique_ptr<CStandardsMap> list;
  try {
    std::string text;
    GetAnalysisArchive()->ReadAnalysisText(kStandardsArchiveName, kStandardsSection, text);
    list = std::make_unique<CStandardsMap>(lowTemperature);
    list->LoadFromText(text);
  } catch (ArchiveException* failure) {
    delete failure;
  }
  const bool isRead = list != nullptr;
  platform::PlainGuard guard(standardsLock_);
  if (read < standardsRead_) return isRead;
  standardsRead_ = read;
  standards_ = list.get();
  if (isRead) standardLists_.push_back(std::move(list));
  return isRead;
}

}  // namespace rvx
