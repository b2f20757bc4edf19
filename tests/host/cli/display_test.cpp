// Tables, numbers and JSON as they are shown.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "host/cli/json_records.h"
#include "host/cli/table.h"
#include "host/tray/number_text.h"

namespace torvell {
namespace {

TEST(TableText, AlignsByCharactersAndShowsWhatIsMissing) {
  Table table({{"name"}, {"value (s)", Table::Align::Right}});
  table.AddRow({"\xC3\x96l", "12"});
  table.AddRow({"longer name"});
  EXPECT_EQ(table.Text(),
            "name         value (s)\n"
            "-----------  ---------\n"
            "\xC3\x96l                  12\n"
            "longer name          -\n");
}

TEST(TableText, NothingStoredCanSteerTheTerminal) {
  Table table({{"text"}});
  table.AddRow({"a\x1b[2Jb\nc"});
  EXPECT_EQ(table.Text().find('\x1b'), std::string::npos);
  EXPECT_NE(table.Text().find("a [2Jb c"), std::string::npos);
}

TEST(NumberText, IsExactFixedOrMissing) {
  EXPECT_EQ(ExactNumber(-20.0), "-20");
  EXPECT_EQ(ExactNumber(0.1), "0.1");
  EXPECT_EQ(ExactNumber(std::nan("")), "");
  EXPECT_EQ(FixedNumber(-0.04, 1), "0.0");
  EXPECT_EQ(FixedNumber(-0.06, 1), "-0.1");
  EXPECT_EQ(DurationText(59), "0:59");
  EXPECT_EQ(DurationText(3661), "1:01:01");
}

TEST(JsonRecords, ASampleHasEveryColumnAndItsNumbersRoundTrip) {
  StoredSample sample;
  sample.viscosity = 0.1 + 0.2;
  sample.averageTemperature = std::numeric_limits<double>::quiet_NaN();
  sample.sampleId = "bad byte \xFF";
  const Json parsed = Json::parse(JsonText(SampleJson(sample)));
  EXPECT_EQ(parsed.size(), SampleColumns().size() + 1);
  EXPECT_EQ(parsed["Simulated"], false);
  EXPECT_EQ(parsed["Viscosity"].get<double>(), 0.1 + 0.2);
  EXPECT_TRUE(parsed["Average Temperature"].is_null());
  EXPECT_EQ(parsed["Tray"], 1);
  EXPECT_EQ(parsed["Second Date"], "1938-01-01T00:00:00");
}

TEST(JsonRecords, ATargetThatIsOffIsNull) {
  rvx::InstrumentReadings readings;
  EXPECT_TRUE(ReadingsJson(readings)["targetTemperature"].is_null());
  readings.targetTemperature = -20.0;
  EXPECT_EQ(ReadingsJson(readings)["targetTemperature"], -20.0);
}

}  // namespace
}  // namespace torvell
