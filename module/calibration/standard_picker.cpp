#include "module/calibration/standard_picker.h"

#include <algorithm>
#include <utility>

#include "boundary/exceptions.h"
#include "boundary/standards_text.h"
#include "module/calibration/calibration_temperatures.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr char kGroupA[] = "A";
constexpr char kGroupB[] = "B";
constexpr char kGroupC[] = "C";

bool BeginsWithNoCase(const std::string& text, const std::string& start) {
  return text.size() >= start.size() &&
         platform::CompareNoCase(std::string_view(text).substr(0, start.size()), start) == 0;
}

}  // namespace

bool IsUsableAt(const CStandardsMap& standards, const std::string& name,
                const std::string& temperature) {
  return standards.HasUsableRecord(name) && standards.FindUsableTemperature(name, temperature) >= 0;
}

CStandardPicker::CStandardPicker(std::vector<StandardGroupRow> groups, StandardsSource standards,
                                 bool lowTemperatureOption)
    : groups_(std::move(groups)), source_(std::move(standards)), working_(lowTemperatureOption) {
  for (int i = 0; i < CalibrationSlotCount(lowTemperatureOption); ++i) {
    const std::string temperature = kTemperatureTexts[i];
    if (ConformsToD5293(temperature, false)) temperatures_.push_back({temperature, false});
  }
}

bool CStandardPicker::Qualifies(const std::string& name, const std::string& temperature,
                                bool onlyChecked) const {
  if (!onlyChecked) {
    const CStandardsMap* standards = source_();
    return standards != nullptr && IsUsableAt(*standards, name, temperature);
  }
  return std::any_of(standards_.begin(), standards_.end(), [&](const Row& row) {
    return row.checked && ParseStandardRow(row.text).name == name;
  });
}

CStandardPicker::Groups CStandardPicker::FindGroups(const std::string& temperature,
                                                    bool onlyChecked) const {
  Groups found;
  std::string nameOfA;
  for (const StandardGroupRow& row : groups_) {
    if (row.temperature != temperature || !Qualifies(row.name, temperature, onlyChecked)) continue;
    if (row.group == kGroupA) {
      found.a = true;
      nameOfA = row.name;
    } else if (row.group == kGroupB) {
      // One oil can't stand for both.
      if (row.name != nameOfA) found.b = true;
    } else if (row.group == kGroupC) {
      found.c = true;
    }
  }
  return found;
}

bool CStandardPicker::ConformsToD5293(const std::string& temperature, bool onlyChecked) const {
  if (source_() == nullptr) return false;
  const Groups found = FindGroups(temperature, onlyChecked);
  return found.a && found.b && found.c;
}

std::vector<std::string> CStandardPicker::LackingGroups(const std::string& temperature) const {
  std::vector<std::string> lacking;
  if (source_() == nullptr) return lacking;
  const Groups found = FindGroups(temperature, false);
  if (!found.a) lacking.emplace_back(kGroupA);
  if (!found.b) lacking.emplace_back(kGroupB);
  if (!found.c) lacking.emplace_back(kGroupC);
  return lacking;
}

bool CStandardPicker::IsInGroupTable(const std::string& name) const {
  return std::any_of(groups_.begin(), groups_.end(),
                     [&](const StandardGroupRow& row) { return row.name == name; });
}

CStandardPicker::Row* CStandardPicker::FindStandard(const std::string& name) {
  const auto found = std::find_if(standards_.begin(), standards_.end(), [&](const Row& row) {
    return ParseStandardRow(row.text).name == name;
  });
  return found != standards_.end() ? &*found : nullptr;
}

void CStandardPicker::AddPiece(const std::string& name, const std::string& temperature) {
  const std::string piece = MakePiece(groups_, name, temperature);
  if (Row* row = FindStandard(name)) {
    StandardRowText parts = ParseStandardRow(row->text);
    parts.pieces.push_back(piece);
    *row = {FormatStandardRow(std::move(parts)), true};
    return;
  }
  const auto place = std::find_if(standards_.begin(), standards_.end(), [&](const Row& row) {
    return ParseStandardRow(row.text).name > name;
  });
  standards_.insert(place, {FormatStandardRow({name, {piece}}), true});
}

bool CStandardPicker::CheckTemperature(size_t index) {
  Row& tagged = temperatures_.at(index);
  if (tagged.checked) return true;
  tagged.checked = true;
  const CStandardsMap* standards = source_();
  if (standards == nullptr) return false;
  for (const std::string& name : standards->GetStandardNames()) {
    const int32_t record = standards->FindUsableTemperature(name, tagged.text);
    if (record < 0 || !IsInGroupTable(name)) continue;
    working_.AddStandardRecord(name, standards->GetStandardRecord(name, record));
    AddPiece(name, tagged.text);
  }
  return true;
}

void CStandardPicker::TakeFromWorkingSet(const std::string& name, const std::string& temperature) {
  try {
    working_.RemoveStandardRecord(name, temperature);
  } catch (InvalidException* unknown) {
    delete unknown;  // a row that is not checked has no records there
  }
}

void CStandardPicker::UncheckTemperature(size_t index) {
  Row& tagged = temperatures_.at(index);
  if (!tagged.checked) return;
  tagged.checked = false;
  for (size_t i = standards_.size(); i-- > 0;) {
    StandardRowText parts = ParseStandardRow(standards_[i].text);
    const size_t before = parts.pieces.size();
    parts.pieces.erase(std::remove_if(parts.pieces.begin(), parts.pieces.end(),
                                      [&](const std::string& piece) {
                                        return PieceTemperature(piece) == tagged.text;
                                      }),
                       parts.pieces.end());
    if (parts.pieces.size() == before) continue;
    TakeFromWorkingSet(parts.name, tagged.text);
    if (parts.pieces.empty()) {
      standards_.erase(standards_.begin() + static_cast<std::ptrdiff_t>(i));
    } else {
      standards_[i].text = FormatStandardRow(std::move(parts));
    }
  }
}

void CStandardPicker::CheckStandard(size_t index) {
  Row& row = standards_.at(index);
  if (row.checked) return;
  row.checked = true;
  const CStandardsMap* standards = source_();
  if (standards == nullptr) return;
  const StandardRowText parts = ParseStandardRow(row.text);
  for (const std::string& piece : parts.pieces) {
    try {
      const int32_t record =
          standards->FindStandardTemperature(parts.name, PieceTemperature(piece));
      if (record < 0) continue;
      working_.AddStandardRecord(parts.name, standards->GetStandardRecord(parts.name, record));
    } catch (InvalidException* unknown) {
      delete unknown;  // the store has been edited since the row was made
      return;
    }
  }
}

void CStandardPicker::UncheckStandard(size_t index) {
  Row& row = standards_.at(index);
  if (!row.checked) return;
  row.checked = false;
  const StandardRowText parts = ParseStandardRow(row.text);
  for (const std::string& piece : parts.pieces) {
    TakeFromWorkingSet(parts.name, PieceTemperature(piece));
  }
  for (size_t i = 0; i < temperatures_.size(); ++i) {
    if (temperatures_[i].checked && !ConformsToD5293(temperatures_[i].text, true)) {
      UncheckTemperature(i);
    }
  }
}

// For each chosen name the first row that begins with it: the tray follows the order of the list.
std::set<size_t> CStandardPicker::ChosenRows() const {
  std::set<size_t> rows;
  for (const std::string& name : working_.GetStandardNames()) {
    const auto found = std::find_if(standards_.begin(), standards_.end(), [&](const Row& row) {
      return BeginsWithNoCase(row.text, name);
    });
    if (found != standards_.end()) rows.insert(static_cast<size_t>(found - standards_.begin()));
  }
  return rows;
}

CalibrationTrayPosition CStandardPicker::MakePosition(const StandardRowText& row) const {
  const std::string& name = row.name;
  CalibrationTrayPosition position;
  const std::string first = PieceTemperature(row.pieces.front());
  position.sampleId =
      name + " " + working_.GetStandardLot(name, working_.FindStandardTemperature(name, first));
  // The table's order is that of the tests: the warmest first.
  for (const char* temperature : kTemperatureTexts) {
    const int32_t record = working_.FindStandardTemperature(name, temperature);
    if (record < 0 || working_.GetStandardViscosity(name, record) == 0.0) continue;
    position.points.push_back({temperature, working_.GetStandardViscosityText(name, record)});
  }
  return position;
}

CalibrationTrayPlan CStandardPicker::MakePlan() const {
  CalibrationTrayPlan plan;
  const std::set<size_t> rows = ChosenRows();
  try {
    for (const size_t row : rows) {
      plan.positions.push_back(MakePosition(ParseStandardRow(standards_[row].text)));
    }
  } catch (InvalidException* unknown) {
    delete unknown;
    plan.positions.clear();
  }
  // Names that begin alike but for upper and lower case, or that contain a parenthesis, would bring
  // another oil into the tray than the one that was chosen.
  if (plan.positions.size() != working_.GetStandardNames().size()) {
    plan.positions.clear();
    plan.problem =
        "Some of the chosen standards can't be told apart by their names: one begins like another "
        "but for upper and lower case, or a name holds a parenthesis. Rename one of them.";
  }
  return plan;
}

}  // namespace rvx
