#include "calibration/calibration_cells.h"

#include <gtest/gtest.h>

#include "instrument/host/sample_constants.h"

namespace rvx {
namespace {

Sample MakeRun() {
  Sample sample;
  sample.sampleId = "a sample id of more than thirty characters";
  sample.speed = 0.5;
  sample.viscosity = 1999.6;
  sample.averageTemperature = -20.0486;
  sample.constants[kConstantKnownViscosity] = 2000.0;
  sample.constants[kConstantAveragingCount] = 1.0;
  sample.constants[kConstantFirstSpeed] = 0.5;
  return sample;
}

TEST(CalibrationCells, ListAndReportShowTheSameRunWithTheirOwnDecimals) {
  const CellConstantValues constants{1200.0, -400.0, 4.0};
  const CalibrationListCells list = FormatListCells(MakeRun(), &constants);
  EXPECT_EQ(list.speed, "0.5000");
  EXPECT_EQ(list.variation, "0.00");
  EXPECT_EQ(list.knownViscosity, "2000");
  EXPECT_EQ(list.viscosity, "2000");
  EXPECT_EQ(list.recalculated, "2002");
  EXPECT_EQ(list.percentDiff, "+0.10");
  EXPECT_EQ(list.temperature, "-20.049");
  const CalibrationListCells report = FormatReportCells(MakeRun(), constants);
  EXPECT_EQ(report.speed, "0.500");
  EXPECT_EQ(report.temperature, "-20.05");
  EXPECT_EQ(report.sampleId, "a sample id of more t");
  EXPECT_EQ(report.percentDiff, "+0.10");
}

TEST(CalibrationCells, WithoutConstantsTheirColumnsAreEmpty) {
  const CalibrationListCells cells = FormatListCells(MakeRun(), nullptr);
  EXPECT_EQ(cells.recalculated + cells.percentDiff, "");
}

TEST(CalibrationCells, AReportCutsNoCharacterInTwo) {
  Sample sample = MakeRun();
  sample.sampleId.clear();
  for (int i = 0; i < 30; ++i) sample.sampleId += "\xC3\xB6";
  EXPECT_EQ(FormatReportCells(sample, {}).sampleId.size(), 42u);
}

TEST(CalibrationCells, PagesOfAReport) {
  EXPECT_EQ(ReportPageCount(1, 50), 1);
  EXPECT_EQ(ReportPageCount(21, 50), 1);
  EXPECT_EQ(ReportPageCount(22, 50), 2);
  EXPECT_EQ(ReportPageCount(5, 0), 34);  // a page without room for a line is no reason to crash
  EXPECT_EQ(ReportModelText('4'), "RVX-D TX");
  EXPECT_EQ(ReportModelText('7'), "");
}

}  // namespace
}  // namespace rvx
