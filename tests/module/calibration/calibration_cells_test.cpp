#include "module/calibration/calibration_cells.h"

#include <gtest/gtest.h>

#include <cmath>

#include "boundary/exceptions.h"
#include "boundary/sample_constants.h"
#include "module/calibration/calibration_report.h"

namespace rvx {
namespace {

Sample MakeRun() {
  Sample sample;
  sample.timestamp = platform::Date(2026, 1, 31, 16, 5, 6);
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
  const CalibrationListCells list = FormatListCells(MakeRun(), &constants, IsoMomentFormat());
  EXPECT_EQ(list.speed, "0.5000");
  EXPECT_EQ(list.variation, "0.00");
  EXPECT_EQ(list.knownViscosity, "2000");
  EXPECT_EQ(list.viscosity, "2000");
  EXPECT_EQ(list.recalculated, "2002");
  EXPECT_EQ(list.percentDiff, "+0.10");
  EXPECT_EQ(list.temperature, "-20.049");
  EXPECT_EQ(list.time, "16:05:06");
  EXPECT_EQ(list.date, "2026-01-31");
  EXPECT_EQ(list.origin, "");
  const CalibrationListCells report = FormatReportCells(MakeRun(), constants, IsoMomentFormat());
  EXPECT_EQ(report.speed, "0.500");
  EXPECT_EQ(report.temperature, "-20.05");
  EXPECT_EQ(report.sampleId, "a sample id of more t");
  EXPECT_EQ(report.percentDiff, "+0.10");
}

TEST(CalibrationCells, WithoutConstantsTheirColumnsAreEmpty) {
  const CalibrationListCells cells = FormatListCells(MakeRun(), nullptr, IsoMomentFormat());
  EXPECT_EQ(cells.recalculated + cells.percentDiff, "");
}

TEST(CalibrationCells, AReportCutsNoCharacterInTwo) {
  Sample sample = MakeRun();
  sample.sampleId.clear();
  for (int i = 0; i < 30; ++i) sample.sampleId += "\xC3\xB6";
  EXPECT_EQ(FormatReportCells(sample, {}, IsoMomentFormat()).sampleId.size(), 42u);
}

TEST(CalibrationCells, WhatIsMissingOrNoNumberIsSaidSo) {
  Sample sample = MakeRun();
  sample.timestamp = platform::Date();
  sample.viscosity = 0.0;
  sample.speed = -NAN;
  const CellConstantValues constants{1200.0, -400.0, 4.0};
  const CalibrationListCells cells = FormatListCells(sample, &constants, IsoMomentFormat());
  EXPECT_EQ(cells.time + cells.date, "");
  EXPECT_EQ(cells.viscosity, "0");
  for (const std::string& text :
       {cells.speed, cells.variation, cells.recalculated, cells.percentDiff}) {
    EXPECT_EQ(text, "nan");
  }
  sample.timestamp = platform::Date::Invalid();
  sample.serialNumber = kSimulatorSerialNumber;
  const CalibrationListCells report = FormatReportCells(sample, constants, IsoMomentFormat());
  EXPECT_EQ(report.time, "Invalid DateTime");
  EXPECT_EQ(report.date, "Invalid DateTime");
  EXPECT_EQ(report.origin, "simulated");
  EXPECT_EQ(report.speed, "nan");
}

TEST(CalibrationReport, TextsOfTheFirstPage) {
  EXPECT_EQ(CalibrationTargetText(0), "-5");
  EXPECT_EQ(CalibrationTargetText(8), "-40");
  EXPECT_EQ(CalibrationTargetText({}), "All Temperatures");
  try {
    CalibrationTargetText(9);
    ADD_FAILURE();
  } catch (InvalidException* refused) {
    delete refused;
  }
  const ProbeTexts probe = FormatProbeConstants(-1.5, 0.1234567, 1.2345e-6);
  EXPECT_EQ(probe.a0, "-1.500000");
  EXPECT_EQ(probe.a1, "0.123457");
  EXPECT_EQ(probe.a2, "0.000001234");
}

// A page of 1100 with 25 above its printable area, lines 20 apart: 48 of them fit.
TEST(CalibrationReport, APageIsFullBehindItsLines) {
  EXPECT_EQ(ReportLinesOfPage(1100, 25, 20), 48);
  EXPECT_FALSE(IsReportPageFull(-48 * 20 - 19, 20, 48));
  EXPECT_TRUE(IsReportPageFull(-49 * 20, 20, 48));
  EXPECT_FALSE(IsReportPageFull(0, 0, 48));
  EXPECT_EQ(ReportPageText(1, 2), "Page 1 of 2");
}

TEST(CalibrationReport, Pages) {
  EXPECT_EQ(ReportPageCount(1, 50), 1);
  EXPECT_EQ(ReportPageCount(21, 50), 1);
  EXPECT_EQ(ReportPageCount(22, 50), 2);
  EXPECT_EQ(ReportPageCount(5, 0), 34);  // a page without room for a line must not crash
  EXPECT_EQ(ReportModelText('4'), "RVX-D TX");
  EXPECT_EQ(ReportModelText('7'), "");
}

}  // namespace
}  // namespace rvx
