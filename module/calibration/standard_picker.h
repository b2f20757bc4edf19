// Chooses the standards of a calibration: at which temperatures, with which oils, and whether the
// choice conforms to ASTM D5293. The logic behind the screen of that name and behind the command.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "module/calibration/standard_group_file.h"
#include "module/calibration/standard_row.h"
#include "module/calibration/standards_map.h"

namespace rvx {

// One test of a chosen standard.
struct CalibrationTrayPoint {
  std::string temperature;  // a temperature text
  std::string viscosity;    // decimal text, mPa*s
};

// What one position of a calibration tray is to hold.
struct CalibrationTrayPosition {
  std::string sampleId;                      // name, blank, lot
  std::vector<CalibrationTrayPoint> points;  // the warmest first
};

struct CalibrationTrayPlan {
  std::vector<CalibrationTrayPosition> positions;  // from the tray's first position on
  std::string problem;  // why no tray can be made of the choice, for people; empty: it can
};

// Whether a standard has a usable record at a temperature text; false for an unknown name.
bool IsUsableAt(const CStandardsMap& standards, const std::string& name,
                const std::string& temperature);

// It has no lock: only the thread on which the standards may be read calls it.
class CStandardPicker {
 public:
  struct Row {
    std::string text;
    bool checked = false;
  };
  // Returns the instrument's standards, null if they can't be read. Each operation calls it anew,
  // since they may be loaded again meanwhile.
  using StandardsSource = std::function<const CStandardsMap*()>;

  CStandardPicker(std::vector<StandardGroupRow> groups, StandardsSource standards,
                  bool lowTemperatureOption);

  // The temperatures at which the stored standards make up a conforming set, in table order, none
  // of them checked at first.
  const std::vector<Row>& temperatures() const { return temperatures_; }
  // The standards of the checked temperatures (standard_row.h), in the order of their bytes.
  const std::vector<Row>& standards() const { return standards_; }

  // Whether each of the groups A, B and C has a standard at a temperature text, where that of group
  // B must not be the last one found for group A. Counts either the standards with a usable record,
  // or only the checked rows of standards().
  bool ConformsToD5293(const std::string& temperature, bool onlyChecked) const;
  // The letters of the groups that the standards with a usable record lack for a conforming set.
  // Empty if the temperature conforms or no standards can be read.
  std::vector<std::string> LackingGroups(const std::string& temperature) const;

  // Check marks, by indexes of the lists above; setting one that is set already does nothing.
  // Checking a temperature adds its standards, checked; returns false, and adds none, if they can't
  // be read. Unchecking a standard also unchecks each temperature that does not conform any more.
  bool CheckTemperature(size_t index);
  void UncheckTemperature(size_t index);
  void CheckStandard(size_t index);
  void UncheckStandard(size_t index);

  // The tray of the present choice. Changes nothing.
  CalibrationTrayPlan MakePlan() const;

 private:
  struct Groups {
    bool a = false, b = false, c = false;
  };
  Groups FindGroups(const std::string& temperature, bool onlyChecked) const;
  bool Qualifies(const std::string& name, const std::string& temperature, bool onlyChecked) const;
  bool IsInGroupTable(const std::string& name) const;
  Row* FindStandard(const std::string& name);
  void AddPiece(const std::string& name, const std::string& temperature);
  void TakeFromWorkingSet(const std::string& name, const std::string& temperature);
  std::set<size_t> ChosenRows() const;
  CalibrationTrayPosition MakePosition(const StandardRowText& row) const;

  const std::vector<StandardGroupRow> groups_;
  const StandardsSource source_;
  std::vector<Row> temperatures_;
  std::vector<Row> standards_;
  CStandardsMap working_;  // the chosen records, copies of the instrument's
};

}  // namespace rvx
