#include "module/printing/constants_sheet.h"

#include <gmock/gmock.h>
#include <stdlib.h>

#include "tests/support/page_recorder.h"

namespace rvx {
namespace {

using testing::ElementsAre;

ConstantsSheet MakeSheet() {
  ConstantsSheet sheet;
  sheet.instrument.model = "RVX-D LX";
  sheet.instrument.serialNumber = "2041";
  sheet.instrumentId = "Cell 7";
  sheet.portAddress = "RVX 0h";
  sheet.user = "anna";
  sheet.printTime = platform::Date(2026, 2, 3, 4, 5, 6);
  for (const double temperature : {-5.0, -10.0, -15.0, -18.0, -20.0, -25.0, -30.0, -35.0, -40.0}) {
    sheet.constants.push_back({temperature, 0.0, 0.0, 0.0, platform::Date(1938, 1, 1), true});
  }
  sheet.constants[4] = {-20.0, 12345.6, -400.0, 2.0, platform::Date(2026, 1, 31, 16, 5, 6), false};
  return sheet;
}

PageRecorder Record(const ConstantsSheet& sheet, PageSize paper, double margin = 25.0) {
  return PageRecorder::Record(
      paper, [&](PrintPage& page) { DrawSheet(page, sheet); }, margin);
}

TEST(ConstantsSheetTest, EachTemperatureHasItsRow) {
  const ConstantsSheet sheet = MakeSheet();
  EXPECT_EQ(GetTitle(sheet), "Current Cell Calibration Constants (RVX 0h : Cell 7)");
  setenv("LC_ALL", "C", 1);
  const PageRecorder page = Record(sheet, PageRecorder::kA4);
  std::vector<std::string> texts = page.GetTexts(1);
  EXPECT_THAT(std::vector(texts.begin(), texts.begin() + 19),
              ElementsAre("HALDEN Cold-Cranking Simulator", "Current Cell Calibration Constants",
                          "Tue Feb  3 04:05:06 2026", "Instrument : ", "RVX 0h",
                          "Instrument ID : ", "Cell 7", "Instrument Model : ", "RVX-D LX",
                          "Instrument S/N : ", "2041", "Printed By : ", "anna", "Temperature",
                          "(C)", "B0", "B1", "B2", "Last Calibration Date"));
  const auto row = std::find(texts.begin(), texts.end(), "-20");
  ASSERT_TRUE(texts.end() - row > 6);
  EXPECT_THAT(std::vector(row, row + 6),
              ElementsAre("-20", "12346", "-400", "2", "Sat Jan 31 16:05:06 2026", "-25"));
  EXPECT_EQ(std::count(texts.begin(), texts.end(), "not calibrated"), 8);
  EXPECT_EQ(texts.back(), "Page 1 of 1");
}

TEST(ConstantsSheetTest, NothingIsCutOffOnAnyPaper) {
  ConstantsSheet sheet = MakeSheet();
  sheet.instrument.simulated = true;
  sheet.instrumentId = std::string(200, 'W');
  sheet.user = "Maximiliane-Friederike von und zu Obersteinhausen-Niederbruck, Nachtschicht";
  sheet.constants[4].b0 = -1.23e15;
  for (const PageSize paper : {PageRecorder::kA4, PageRecorder::kLetter, PageSize{583.0, 827.0}}) {
    for (const double margin : {0.0, 25.0, 60.0}) {
      const PageRecorder page = Record(sheet, paper, margin);
      page.ExpectLegible();
      EXPECT_EQ(page.GetPageCount(), 1);
      EXPECT_TRUE(page.Find("RVX-D LX (simulated)") != nullptr);
    }
  }
}

}  // namespace
}  // namespace rvx
