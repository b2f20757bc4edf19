// The cell constants that are in force.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "module/screens/calibration/cell_constants_rows.h"
#include "module/screens/common/screen_view.h"

namespace Ui {
class CurrentCellCals;
}

namespace rvx {

// A list that can be read and copied; it is updated after every change of the instrument. GUI
// thread.
class CCellCalsVw final : public CScreenView {
 public:
  explicit CCellCalsVw(const ScreenRequest& request);
  ~CCellCalsVw() override;
  std::string GetHelpTopic() const override { return "RVX.chm::/RVX/Instrument_Settings.htm"; }

 private:
  void PrepareList();
  // Reads the constants anew. Rows that have not changed are not touched, so that the user's
  // selection stays.
  void Load();
  // The selected rows, or all, with the headings, as lines with TABs.
  void Copy();
  void FitColumns();

  const std::unique_ptr<Ui::CurrentCellCals> form_;
  std::vector<CellConstantsRow> rows_;
};

}  // namespace rvx
