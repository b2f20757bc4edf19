// The sample archive: what is stored comes back, and a query finds what a plain loop finds.
#include "host/core/sample_store.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cmath>

#include "host/core/query_translator.h"
#include "tests/host/core/temp_folder.h"

namespace torvell {
namespace {

class TextFilter : public rvx::SampleArchiveFilter {
 public:
  explicit TextFilter(std::string text) : text_(std::move(text)) {}
  bool AcceptSample(rvx::Sample) override { return accept; }
  std::string GetQueryText() override { return text_; }
  bool accept = true;

 private:
  std::string text_;
};

rvx::Sample MakeSample(const std::string& sampleId, const platform::Date& time) {
  rvx::Sample sample;
  sample.sampleId = sampleId;
  sample.timestamp = time;
  sample.instrument = "RVX";
  sample.knownViscosity = -2.0;
  return sample;
}

template <class Samples>
std::vector<std::string> IdsOf(const Samples& samples) {
  std::vector<std::string> ids;
  for (const rvx::Sample& sample : samples) ids.push_back(sample.sampleId);
  return ids;
}

// Every double. Of the many not-a-number values only one, since all come back as one.
rc::Gen<double> AnyDouble() {
  return rc::gen::map(rc::gen::arbitrary<uint64_t>(),
                      [](uint64_t bits) { return std::bit_cast<double>(bits); });
}

rc::Gen<std::string> AnyBytes() {
  return rc::gen::container<std::string>(rc::gen::arbitrary<char>());
}

rc::Gen<platform::Date> AnyDate() {
  return rc::gen::map(rc::gen::inRange<int64_t>(-59000000000000, 253402300799999), [](int64_t at) {
    if (at % 17 == 0) return platform::Date();
    if (at % 17 == 1) return platform::Date::Invalid();
    return platform::Date::FromMilliseconds(at);
  });
}

rvx::Sample AnySample() {
  rvx::Sample s;
  s.sampleId = *AnyBytes();
  s.timestamp = *AnyDate();
  s.operatorName = *AnyBytes();
  s.typeName = *AnyBytes();
  s.instrument = *AnyBytes();
  s.probeId = *AnyBytes();
  s.tray = *rc::gen::arbitrary<uint16_t>();
  s.position = *rc::gen::arbitrary<uint16_t>();
  s.kind = *rc::gen::arbitrary<int32_t>();
  s.knownViscosity = *AnyDouble();
  s.speed = *AnyDouble();
  s.averageTemperature = *AnyDouble();
  s.reserved1 = *AnyDouble();
  s.reserved2 = *AnyDouble();
  s.viscosity = *AnyDouble();
  s.valid = *rc::gen::arbitrary<uint16_t>();
  for (double& constant : s.constants) constant = *AnyDouble();
  s.constants[7] = -0.0;
  s.constants[8] = INFINITY;
  s.constants[9] = 5e-324;
  s.secondDate = *AnyDate();
  s.idCopy = platform::CreateGuid();
  s.serialNumber = *AnyBytes();
  s.lastText = *AnyBytes();
  return s;
}

bool IsSame(double a, double b) {
  if (std::isnan(a)) return std::isnan(b);
  return std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b);
}

bool IsSame(const rvx::Sample& a, const rvx::Sample& b) {
  for (size_t i = 0; i < a.constants.size(); ++i) {
    if (!IsSame(a.constants[i], b.constants[i])) return false;
  }
  return a.id == b.id && a.idCopy == b.idCopy && a.sampleId == b.sampleId &&
         a.operatorName == b.operatorName && a.typeName == b.typeName &&
         a.instrument == b.instrument && a.probeId == b.probeId &&
         a.serialNumber == b.serialNumber && a.lastText == b.lastText &&
         a.timestamp == b.timestamp && a.secondDate == b.secondDate && a.tray == b.tray &&
         a.position == b.position && a.kind == b.kind && a.valid == b.valid &&
         IsSame(a.knownViscosity, b.knownViscosity) && IsSame(a.speed, b.speed) &&
         IsSame(a.averageTemperature, b.averageTemperature) && IsSame(a.reserved1, b.reserved1) &&
         IsSame(a.reserved2, b.reserved2) && IsSame(a.viscosity, b.viscosity);
}

// One folder for all cases of a property, since only the rows matter and opening an archive is
// slow.
TEST(SampleStore, EveryColumnComesBack) {
  TempFolder folder;
  rvx::Sample stored;
  {
    const auto host = OpenHost(folder);
    EXPECT_TRUE(rc::check("a sample comes back", [&] {
      ExecuteSql(host->database(), "DELETE FROM SAMPLES");
      stored = AnySample();
      host->samples().StoreSample(stored);
      const std::vector<StoredSample> all = host->samples().All();
      RC_ASSERT(all.size() == 1u);
      RC_ASSERT(IsSame(stored, all[0]));
    }));
  }
  const std::vector<StoredSample> all = OpenHost(folder)->samples().All();
  ASSERT_EQ(all.size(), 1u);
  EXPECT_TRUE(IsSame(stored, all[0])) << "behind a new start";
}

TEST(SampleStore, ColumnsAreNamedAndOrderedAsTheTableIs) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  platform::PlainGuard guard(host->database().lock());
  SQLite::Statement row(host->database().connection(), "SELECT * FROM SAMPLES");
  // The last column is the host's own and not part of the record.
  ASSERT_EQ(static_cast<size_t>(row.getColumnCount()), SampleColumns().size() + 1);
  ASSERT_EQ(SampleColumns().size(), 61u);
  for (int i = 0; i < 61; ++i) {
    EXPECT_EQ(SampleColumns()[static_cast<size_t>(i)].name, row.getColumnName(i));
  }
  EXPECT_STREQ(row.getColumnName(61), "Simulated");
  EXPECT_EQ(SampleValues(rvx::Sample()).size(), SampleColumns().size());
}

TEST(SampleStore, ASampleIsStoredOnce) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  rvx::Sample sample = MakeSample("oil", platform::Date(2026, 1, 31));
  host->samples().StoreSample(sample);
  sample.viscosity = 1.0;
  EXPECT_NE(ArchiveMessageOf([&] { host->samples().StoreSample(sample); }), "");
  ASSERT_EQ(host->samples().Count(), 1);
  EXPECT_EQ(host->samples().All()[0].viscosity, 0.0) << "what was stored has changed";
  EXPECT_FALSE(std::filesystem::exists(folder / "samples.spool"));
}

TEST(SampleStore, LastGivesTheLatestOldestFirst) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  const platform::Date day(2026, 1, 31, 12, 0, 0);
  host->samples().StoreSample(MakeSample("c", day.PlusMilliseconds(2)));
  host->samples().StoreSample(MakeSample("a", day));
  host->samples().StoreSample(MakeSample("b", day));
  host->samples().StoreSample(MakeSample("none", platform::Date()));
  EXPECT_EQ(IdsOf(host->samples().Last(2)), (std::vector<std::string>{"b", "c"}));
  EXPECT_EQ(IdsOf(host->samples().All()), (std::vector<std::string>{"none", "a", "b", "c"}));
}

TEST(SampleStore, PagesMeetWithoutLossOrRepetition) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  std::vector<std::string> expected;
  {
    // Written directly into the table: two pages and a rest, with three samples at each moment.
    platform::PlainGuard guard(host->database().lock());
    Transaction transaction(host->database(), Transaction::Durability::Process);
    for (int i = 0; i < 1203; ++i) {
      const std::string id = fmt::format("{:05}", i);
      host->database().connection().exec(fmt::format(
          "INSERT INTO SAMPLES (\"ID\", \"Sample ID\", \"Timestamp\", \"Operator\", \"Type\", "
          "\"Instrument\", \"Probe ID\", \"Tray\", \"Position\", \"Kind\", \"Known Viscosity\", "
          "\"Valid\", \"Second Date\", \"ID Copy\", \"Serial Number\", \"Last Text\") VALUES "
          "('{:032x}', '{}', '2026-01-31T10:{:02}:{:02}', '', '', '', '', 1, 1, 1, -2.0, 1, '', "
          "'{:032x}', '', '')",
          i, id, i / 180, i / 3 % 60, i));
      expected.push_back(id);
    }
    transaction.Commit();
  }
  EXPECT_EQ(IdsOf(host->samples().All()), expected);
  int seen = 0;
  host->samples().ForEach([&](const rvx::Sample&) { return ++seen < 600; });
  EXPECT_EQ(seen, 600);
}

// The pattern's recursive definition, with which the archive's matching is compared.
bool FitsPlainly(std::string_view pattern, std::string_view text) {
  if (pattern.empty()) return text.empty();
  if (pattern[0] == '*') {
    return FitsPlainly(pattern.substr(1), text) ||
           (!text.empty() && FitsPlainly(pattern, text.substr(1)));
  }
  if (text.empty()) return false;
  const bool fits = pattern[0] == '?' || std::tolower(pattern[0]) == std::tolower(text[0]);
  return fits && FitsPlainly(pattern.substr(1), text.substr(1));
}

void CompareWithALoop(Host& host) {
  ExecuteSql(host.database(), "DELETE FROM SAMPLES");
  const platform::Date cutOff(2026, 1, 31, 12, 0, 0);
  const auto idGen = rc::gen::container<std::string>(
      rc::gen::element('a', 'A', '*', '?', '"', ';', '\\', '-', '('));
  rvx::ArrayOfSamples samples;
  const int count = *rc::gen::inRange(0, 12);
  for (int i = 0; i < count; ++i) {
    rvx::Sample s = MakeSample(
        fmt::format("{}", i),
        cutOff.PlusMilliseconds(*rc::gen::element<int64_t>(-1000, -1, 0, 1, 1000, 86400000)));
    s.instrument = *idGen;
    s.knownViscosity = *rc::gen::element(-2.0, 0.0);
    s.constants[4] = *rc::gen::element(0.0, 5000.0);
    s.valid = *rc::gen::element<uint16_t>(0, 1);
    s.averageTemperature = *rc::gen::element(-20.051, -20.05, -20.0, -19.949);
    samples.push_back(s);
    host.samples().StoreSample(s);
  }
  const std::string pattern = *idGen;
  TextFilter filter(fmt::format(
      "SELECT * FROM SAMPLES WHERE ([Known Viscosity] = -2) AND ([Instrument] Like '{}') AND "
      "([Constant 5] <> 0) AND ([Valid] <> 0) AND ([Average Temperature] > -20.051) AND "
      "([Average Temperature] < -19.949) AND ([Timestamp] > #01/31/2026 12:00:00#) "
      "ORDER BY SAMPLES.Timestamp;",
      pattern));
  rvx::ArrayOfSamples found;
  host.samples().QuerySamples(found, &filter);

  std::stable_sort(samples.begin(), samples.end(),
                   [](const auto& a, const auto& b) { return a.timestamp < b.timestamp; });
  std::vector<std::string> expected;
  for (const rvx::Sample& s : samples) {
    const bool fits = s.knownViscosity == -2.0 &&
                      (FitsPlainly(pattern, s.instrument) || pattern == s.instrument) &&
                      s.constants[4] != 0.0 && s.valid != 0 && s.averageTemperature > -20.051 &&
                      s.averageTemperature < -19.949 && cutOff < s.timestamp;
    if (fits) expected.push_back(s.sampleId);
  }
  RC_ASSERT(IdsOf(found) == expected);
}

TEST(SampleStore, AQueryFindsWhatALoopFinds) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  EXPECT_TRUE(rc::check("a query finds what a loop finds", [&] { CompareWithALoop(*host); }));
}

TEST(SampleStore, AnApostropheFailsAndNothingElseHappens) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  host->samples().StoreSample(MakeSample("oil", platform::Date(2026, 1, 31)));
  rvx::ArrayOfSamples out = {MakeSample("untouched", platform::Date())};
  TextFilter filter(
      "SELECT * FROM SAMPLES WHERE ([Instrument] Like 'O'Hara') "
      "ORDER BY SAMPLES.Timestamp;");
  const std::string message = ArchiveMessageOf([&] { host->samples().QuerySamples(out, &filter); });
  EXPECT_NE(message.find("apostrophe"), std::string::npos) << message;
  EXPECT_EQ(IdsOf(out), std::vector<std::string>{"untouched"});
  EXPECT_EQ(host->samples().Count(), 1);
}

TEST(SampleStore, TheFilterHasTheLastWord) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  host->samples().StoreSample(MakeSample("oil", platform::Date(2026, 1, 31)));
  TextFilter filter("SELECT * FROM SAMPLES;");
  rvx::ArrayOfSamples out;
  host->samples().QuerySamples(out, &filter);
  EXPECT_EQ(out.size(), 1u);
  filter.accept = false;
  host->samples().QuerySamples(out, &filter);
  EXPECT_TRUE(out.empty());
}

// Upper and lower case are equal, and an invalid date is not earlier than any other.
TEST(SampleStore, EachConditionKeepsWhatItSays) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  const platform::Date noon(2026, 1, 31, 12, 0, 0);
  host->samples().StoreSample(MakeSample("none", platform::Date()));
  host->samples().StoreSample(MakeSample("invalid", platform::Date::Invalid()));
  host->samples().StoreSample(MakeSample("Oil", noon.PlusMilliseconds(-1)));
  host->samples().StoreSample(MakeSample("last", noon));
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"[Sample ID] = 'oIL'", {"Oil"}},
      {"[Sample ID] <> 'oil'", {"none", "invalid", "last"}},
      {"[Sample ID] > 'none'", {"Oil"}},
      {"[Timestamp] < #01/31/2026 12:00:00#", {"Oil"}},
      {"[Timestamp] = #01/31/2026 12:00:00#", {"last"}},
      {"[Timestamp] > #01/31/2026 11:59:59#", {"Oil", "last"}},
      {"[Valid] = 1 AND [Tray] < 1", {}},
  };
  for (const auto& [condition, expected] : cases) {
    TextFilter filter(fmt::format("SELECT * FROM SAMPLES WHERE {}", condition));
    rvx::ArrayOfSamples out;
    host->samples().QuerySamples(out, &filter);
    EXPECT_EQ(IdsOf(out), expected) << condition;
  }
  rvx::ArrayOfSamples all;
  host->samples().QuerySamples(all, nullptr);
  EXPECT_EQ(all.size(), 4u);
  EXPECT_FALSE(host->samples().IsSimulated(platform::CreateGuid())) << "it is not there";
  EXPECT_EQ(SampleValues(all[0])[2], ColumnValue()) << "for people a date that is none is nothing";
}

TEST(SampleStore, PagesAreReadThroughTheIndex) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  TranslatedQuery query;
  std::string problem;
  ASSERT_TRUE(
      TranslateQuery("SELECT * FROM SAMPLES WHERE ([Instrument] Like 'RVX') AND "
                     "([Timestamp] > #01/31/2026 12:00:00#) ORDER BY SAMPLES.Timestamp;",
                     query, problem));
  for (const std::string& sql :
       {NewestSamplesText(), SamplePageText({"1", {}}, false), SamplePageText({"1", {}}, true),
        SamplePageText(query, false), SamplePageText(query, true)}) {
    const std::string plan = PlanOf(host->database(), sql);
    EXPECT_NE(plan.find("SAMPLES_BY_TIME"), std::string::npos) << sql << "\n" << plan;
    EXPECT_EQ(plan.find("TEMP B-TREE"), std::string::npos) << sql << "\n" << plan;
  }
  const std::string behind = PlanOf(host->database(), SamplePageText({"1", {}}, true));
  EXPECT_NE(behind.find("SEARCH"), std::string::npos) << "a page is looked for from the start";
}

}  // namespace
}  // namespace torvell
