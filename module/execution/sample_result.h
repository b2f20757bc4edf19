// The results made from the readings of a run: averages, viscosity, the record that is stored, the
// csv file. Plain functions, without locks; any thread.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "boundary/sample_constants.h"
#include "module/instrument/test_record.h"
#include "platform/date.h"

namespace rvx {

struct RunAverages {
  double speed = 0.0;                          // rpm/1000
  double temperature = 0.0;                    // degrees C
  int count = 0;                               // pairs of readings averaged; 0: too few readings
  std::array<double, kStoredSpeeds> speeds{};  // means of the pairs, latest first
};

// The averages of the last `averagingCount` pairs of readings, counted from the end of the arrays
// whether the run filled them or not. The two arrays have one size. With no more than twice
// `averagingCount` readings, or a count below 1, nothing is averaged. A count above 20 averages all
// its pairs and keeps the first 20.
RunAverages AverageRun(const std::vector<double>& speeds, const std::vector<double>& temperatures,
                       int averagingCount);

// mPa*s at a speed in rpm/1000, by the equation of the cell's calibration; 0.0 for a speed of 0.0.
double CalculateViscosity(double b0, double b1, double b2, double speed);

// "oil_-20.0C_820540800.csv": sample id, test temperature (degrees C), seconds since the beginning
// of 2000 by the same clock as `now`. Separators of folders and control characters in the sample id
// become "_": a typed sample id must not select another folder.
std::string GetCsvFileName(const std::string& sampleId, double temperature,
                           const platform::Date& now);

// The text of the file: a heading, then a row for each reading but the last.
std::string MakeCsvText(const std::vector<double>& speeds, const std::vector<double>& temperatures);

// Creates or replaces a file; a failure is not reported, since the result of the readings is in the
// archive anyway.
void WriteCsvFile(const std::string& path, const std::string& text);

// The time that the tests of a sample will take, in seconds, moves and settling included; used to
// show progress.
int EstimateRunSeconds(const TestRecord& test, int testCount);

}  // namespace rvx
