// The calibration's query against the archive, compared with a plain loop over all samples.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>

#include "host/core/query_translator.h"
#include "module/calibration/calibration_query.h"
#include "module/calibration/calibration_temperatures.h"
#include "tests/host/core/temp_folder.h"

namespace torvell {
namespace {

constexpr int kRows = 100000;
const platform::Date kNow(2026, 1, 31, 12, 0, 0);

class QueryFilter : public rvx::SampleArchiveFilter {
 public:
  explicit QueryFilter(std::string text) : text_(std::move(text)) {}
  bool AcceptSample(rvx::Sample) override { return true; }
  std::string GetQueryText() override { return text_; }

 private:
  std::string text_;
};

// Instrument ids of the stored samples, which are also the ids that are asked for.
const std::vector<std::string> kIds = {"RVX 1", "rvx 1",   "RVX 2", "RVX%",      "RVX_1", "RVX*1",
                                       "RVX ?", "\"RVX\"", "[RVX]", "RVX [1-2]", "RVX #", ""};

std::string Quoted(const std::string& text) { return "'" + text + "'"; }

// CASE n % size WHEN 0 THEN ...: chooses one of the values for each row. Lists of different sizes
// give rows of different combinations.
std::string Choose(const std::string& n, const std::vector<std::string>& values) {
  std::string text = "CASE (" + n + ") % " + std::to_string(values.size());
  for (size_t i = 0; i < values.size(); ++i) {
    text += " WHEN " + std::to_string(i) + " THEN " + values[i];
  }
  return text + " END";
}

// Rows around every limit, all within some days of the cut-off.
void FillArchive(Host& host) {
  std::vector<std::string> temperatures;
  for (const double t : rvx::kCalibrationTemperatures) {
    for (const double off : {-0.0511, -0.051, -0.0509, 0.0, 0.0509, 0.051, 0.0511}) {
      temperatures.push_back(fmt::format("{:.4f}", t + off));
    }
  }
  temperatures.insert(temperatures.end(), {"-22.5", "0.0", "NULL", "-4.949", "-4.95"});
  std::vector<std::string> ids;
  for (const std::string& id : kIds) ids.push_back(Quoted(id));
  const std::map<std::string, std::string> special = {
      {"ID", "printf('00000000-0000-4000-8000-%012x', n)"},
      {"Sample ID", "printf('%d', n)"},
      // Some have thousandths of a second, and some are exactly at a cut-off.
      {"Timestamp",
       "strftime('%Y-%m-%dT%H:%M:%S', '2026-01-29 04:29:00', (n * 2) || ' seconds') || " +
           Choose("n / 7", {"''", "'.001'", "''"})},
      {"Instrument", Choose("n / 3", ids)},
      {"Average Temperature", Choose("n", temperatures)},
      {"Known Viscosity", Choose("n / 5", {"-2.0", "-2.0", "-2.0", "0.0"})},
      {"Constant 5", Choose("n / 11", {"5000.0", "4000.0", "0.0", "-0.0", "-1.0"})},
      {"Valid", Choose("n / 13", {"1", "1", "2", "0"})},
      {"Second Date", "''"},
      {"ID Copy", "'00000000-0000-4000-8000-000000000000'"}};
  std::string columns, values;
  for (const SampleColumn& column : SampleColumns()) {
    const auto found = special.find(column.name);
    std::string value = column.type == ColumnType::Text      ? "''"
                        : column.type == ColumnType::Integer ? "1"
                                                             : "1.5";
    if (found != special.end()) value = found->second;
    columns += (columns.empty() ? "\"" : ", \"") + column.name + "\"";
    values += (values.empty() ? "" : ", ") + value;
  }
  ExecuteSql(host.database(),
             fmt::format("WITH RECURSIVE numbers(n) AS (VALUES (1) UNION ALL SELECT n + 1 FROM "
                         "numbers WHERE n < {}) INSERT INTO SAMPLES ({}) SELECT {} FROM numbers",
                         kRows, columns, values));
}

// The operator LIKE by a regular expression. An id also fits itself, whichever special characters
// it has.
bool FitsLike(const std::string& pattern, const std::string& text) {
  std::string expression;
  bool inSet = false;
  for (const char c : pattern) {
    if (inSet || c == '[') {
      expression += c;
      inSet = c != ']';
    } else if (c == '*' || c == '%') {
      expression += ".*";
    } else if (c == '?' || c == '_') {
      expression += '.';
    } else if (c == '#') {
      expression += "[0-9#]";
    } else {
      expression += c;
    }
  }
  const std::regex like(expression, std::regex::icase);
  const std::regex itself(std::regex_replace(pattern, std::regex(R"([\[\]*?.#%_])"), R"(\$&)"),
                          std::regex::icase);
  return std::regex_match(text, like) || std::regex_match(text, itself);
}

struct Question {
  std::string id;
  std::optional<int> slot;
  bool lowTemperature = true;
  int hours = 4;
};

bool TakesPart(const Question& question, const rvx::Sample& sample) {
  const double coldest = question.slot ? rvx::kCalibrationTemperatures[size_t(*question.slot)]
                         : question.lowTemperature ? -40.0
                                                   : -35.0;
  const double warmest =
      question.slot ? rvx::kCalibrationTemperatures[size_t(*question.slot)] : -5.0;
  // The limits as the query writes them.
  const auto limit = [](double value) { return std::stod(fmt::format("{:.3f}", value)); };
  return sample.knownViscosity == -2.0 && sample.constants[4] != 0.0 && sample.valid != 0 &&
         sample.averageTemperature > limit(coldest - 0.051) &&
         sample.averageTemperature < limit(warmest + 0.051) &&
         kNow.PlusMilliseconds(question.hours * int64_t{-3600000}) < sample.timestamp &&
         FitsLike(question.id, sample.instrument);
}

TEST(CalibrationArchive, AQueryFindsWhatALoopOver100000SamplesFinds) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  FillArchive(*host);
  rvx::ArrayOfSamples all;
  host->samples().ForEach([&](const rvx::Sample& sample) {
    // The archive holds older samples too, but no question of this test reaches back that far.
    if (kNow.PlusDays(-2.0) < sample.timestamp) all.push_back(sample);
    return true;
  });
  ASSERT_EQ(host->samples().Count(), kRows);
  std::vector<Question> questions;
  for (const std::string& id : kIds) questions.push_back({id, 4, true, 6});
  for (int slot = 0; slot < rvx::kCalibrationSlots; ++slot) {
    questions.push_back({"RVX 1", slot, slot % 2 == 0, 8});
  }
  for (const bool option : {false, true}) questions.push_back({"RVX [1-2]", {}, option, 2});
  questions.push_back({"RVX 1", 4, true, 24});
  size_t findings = 0;
  for (const Question& question : questions) {
    std::vector<std::string> expected, found;
    for (const rvx::Sample& sample : all) {
      if (TakesPart(question, sample)) expected.push_back(sample.sampleId);
    }
    QueryFilter filter(rvx::BuildCalibrationQuery(question.id, question.slot,
                                                  question.lowTemperature, question.hours, kNow));
    rvx::ArrayOfSamples samples;
    host->samples().QuerySamples(samples, &filter);
    for (const rvx::Sample& sample : samples) found.push_back(sample.sampleId);
    EXPECT_EQ(found, expected) << filter.GetQueryText();
    findings += found.size();
  }
  EXPECT_GT(findings, 500u) << "the archive was made without what is looked for";
}

TEST(CalibrationArchive, IsAskedThroughAnIndex) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  TranslatedQuery query;
  std::string problem;
  ASSERT_TRUE(TranslateQuery(rvx::BuildCalibrationQuery("RVX", 4, true, 4, kNow), query, problem));
  const std::string plan = PlanOf(host->database(), SamplePageText(query, false));
  EXPECT_NE(plan.find("SEARCH SAMPLES USING INDEX SAMPLES_BY_TIME"), std::string::npos) << plan;
  EXPECT_EQ(plan.find("TEMP B-TREE"), std::string::npos) << plan;
}

TEST(CalibrationArchive, ASimulatedSampleStaysMarked) {
  TempFolder folder;
  rvx::Sample sample;
  sample.timestamp = kNow;
  rvx::Sample measured = sample;
  measured.id = platform::CreateGuid();
  {
    const auto host = OpenHost(folder);
    host->samples().StoreSample(measured);
    host->samples().SetSimulated(true);
    host->samples().StoreSample(sample);
  }
  const auto host = OpenHost(folder);
  EXPECT_TRUE(host->samples().IsSimulated(sample.id));
  EXPECT_FALSE(host->samples().IsSimulated(measured.id));
  int marked = 0;
  for (const StoredSample& each : host->samples().All()) marked += each.simulated ? 1 : 0;
  EXPECT_EQ(marked, 1);
}

// In an archive of the first version, simulated samples are recognised by the serial number.
TEST(CalibrationArchive, SamplesOfAnOlderArchiveAreMarkedToo) {
  TempFolder folder;
  rvx::Sample sample;
  sample.serialNumber = "Simulator";
  rvx::Sample measured;
  measured.serialNumber = "1234";
  {
    const auto host = OpenHost(folder);
    host->samples().StoreSample(sample);
    host->samples().StoreSample(measured);
    ExecuteSql(host->database(),
               "ALTER TABLE SAMPLES DROP COLUMN \"Simulated\"; "
               "INSERT INTO ERRORS (\"Time\") VALUES ('2026-01-05 08:00:00'); "
               "ALTER TABLE ERRORS DROP COLUMN \"Code\"; "
               "ALTER TABLE ERRORS DROP COLUMN \"Acknowledged\"; PRAGMA user_version = 1");
  }
  const auto host = OpenHost(folder);
  EXPECT_TRUE(host->samples().IsSimulated(sample.id));
  EXPECT_FALSE(host->samples().IsSimulated(measured.id));
  const ErrorReport message = host->errors().Last(1).at(0);
  EXPECT_TRUE(message.acknowledged);
  EXPECT_EQ(message.code, rvx::MessageCode::None);
}

}  // namespace
}  // namespace torvell
