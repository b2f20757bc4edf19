// What a screen finds in the sample archive, and in which order.
#include <gtest/gtest.h>

#include <functional>

#include "tests/host/core/temp_folder.h"

namespace torvell {
namespace {

class SampleSearch : public testing::Test {
 protected:
  void Store(const std::string& sampleId, const std::function<void(rvx::Sample&)>& change) {
    rvx::Sample sample;
    sample.sampleId = sampleId;
    sample.timestamp = platform::Date(2026, 1, 31, 12, 0, 0);
    change(sample);
    host_->samples().StoreSample(sample);
  }
  void Store(const std::string& sampleId) {
    Store(sampleId, [](rvx::Sample&) {});
  }

  // The sample ids found, each followed by a blank.
  std::string Find(const SampleQuery& wanted) {
    std::string ids;
    for (const rvx::Sample& sample : host_->samples().ReadRows(host_->samples().FindRows(wanted))) {
      ids += sample.sampleId + " ";
    }
    return ids;
  }

  TempFolder folder_;
  std::unique_ptr<Host> host_ = OpenHost(folder_);
};

// Two samples that differ in one column, the greater one stored first. Upper and lower case are
// equal.
TEST_F(SampleSearch, EachOrderGoesByItsOwnColumn) {
  using enum SampleQuery::Order;
  using Sample = rvx::Sample;
  struct Case {
    SampleQuery::Order order;
    std::function<void(Sample&, bool greater)> make;
  };
  const Case cases[] = {
      {Time, [](Sample& s, bool g) { s.timestamp = platform::Date(2026, g ? 2 : 1, 3); }},
      {Instrument, [](Sample& s, bool g) { s.instrument = g ? "B" : "a"; }},
      {Position, [](Sample& s, bool g) { s.position = g ? 10 : 9; }},
      {SampleId, [](Sample& s, bool g) { s.sampleId = g ? "HIGH" : "gow"; }},
      {Temperature, [](Sample& s, bool g) { s.constants[5] = g ? -5 : -10; }},
      {Average, [](Sample& s, bool g) { s.averageTemperature = g ? -5 : -10; }},
      {Speed, [](Sample& s, bool g) { s.speed = g ? 0.5 : 0.05; }},
      {Viscosity, [](Sample& s, bool g) { s.viscosity = g ? 10000 : 9000; }},
      {Known, [](Sample& s, bool g) { s.constants[4] = g ? 10000 : 9000; }},
      {Operator, [](Sample& s, bool g) { s.operatorName = g ? "Otto" : "anna"; }},
      {Origin, [&](Sample&, bool g) { host_->samples().SetSimulated(g); }},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(static_cast<int>(each.order));
    ExecuteSql(host_->database(), "DELETE FROM SAMPLES");
    for (const bool greater : {true, false}) {
      Store(greater ? "high" : "low", [&](Sample& sample) { each.make(sample, greater); });
    }
    SampleQuery wanted;
    wanted.order = each.order;
    const bool byId = each.order == SampleId;
    EXPECT_EQ(Find(wanted), byId ? "HIGH gow " : "high low ");
    wanted.descending = false;
    EXPECT_EQ(Find(wanted), byId ? "gow HIGH " : "low high ");
  }
}

TEST_F(SampleSearch, WhatIsTypedIsTakenLetterByLetter) {
  const char* const texts[] = {"100%", "1000", "a_b", "axb", "c\\d", "cd", "O'Hara"};
  for (const char* text : texts) Store(text, [&](rvx::Sample& s) { s.instrument = text; });
  const std::pair<const char*, const char*> cases[] = {
      {"", "100% 1000 a_b axb c\\d cd O'Hara "},
      {"00", "100% 1000 "},
      {"%", "100% "},
      {"_", "a_b "},
      {"A_B", "a_b "},
      {"\\", "c\\d "},
      {"'", "O'Hara "},
      {"hARA", "O'Hara "},
      {"' OR 1 --", ""},
  };
  for (const auto& [typed, expected] : cases) {
    SampleQuery bySample, byInstrument;
    bySample.descending = byInstrument.descending = false;
    bySample.sampleId = typed;
    byInstrument.instrument = typed;
    EXPECT_EQ(Find(bySample), expected) << typed;
    EXPECT_EQ(Find(byInstrument), expected) << typed;
    EXPECT_EQ(bySample.IsFiltered(), typed[0] != '\0');
    EXPECT_EQ(byInstrument.IsFiltered(), typed[0] != '\0');
  }
}

TEST_F(SampleSearch, DaysCountWholeAndVerifiedOilsApart) {
  const platform::Date day(2026, 1, 31);
  auto store = [&](const char* id, const platform::Date& time, double known) {
    Store(id, [&](rvx::Sample& sample) {
      sample.timestamp = time;
      sample.constants[4] = known;
    });
  };
  store("undated", platform::Date(), 0.0);
  store("invalid", platform::Date::Invalid(), 0.0);
  store("before", day.PlusMilliseconds(-1), 5000.0);
  store("first", day, 0.0);
  store("last", day.PlusDays(1).PlusMilliseconds(-1), 5000.0);
  store("behind", day.PlusDays(1), -0.0);
  struct Case {
    const char* from;
    const char* to;
    std::optional<bool> verified;
    const char* expected;
  };
  for (const Case& each :
       std::initializer_list<Case>{{"2026-01-31", "", {}, "first last behind "},
                                   {"", "2026-01-31", {}, "before first last "},
                                   {"2026-01-31", "2026-01-31", {}, "first last "},
                                   {"2026-02-02", "", {}, ""},
                                   {"", "", true, "before last "},
                                   {"", "", false, "undated invalid first behind "},
                                   {"2026-01-31", "2026-01-31", true, "last "}}) {
    SampleQuery wanted;
    wanted.descending = false;
    wanted.fromDay = each.from;
    wanted.toDay = each.to;
    wanted.verified = each.verified;
    EXPECT_EQ(Find(wanted), each.expected) << each.from << " to " << each.to;
    EXPECT_TRUE(wanted.IsFiltered());
  }
}

TEST_F(SampleSearch, ATextTooLongForTheDatabaseIsRefused) {
  SampleQuery wanted;
  wanted.sampleId.assign(1000, '%');
  EXPECT_EQ(Find(wanted), "");
  wanted.sampleId += '%';
  EXPECT_EQ(KindRaisedBy([&] { Find(wanted); }), HostErrorKind::BadInput);
}

TEST_F(SampleSearch, RowsAreReadAsTheyAreAskedForAndMissingOnesLeftOut) {
  for (int i = 0; i < 3; ++i) Store(std::to_string(i));
  std::string ids;
  for (const rvx::Sample& sample : host_->samples().ReadRows({3, 4711, 1, 1}))
    ids += sample.sampleId;
  EXPECT_EQ(ids, "200");
}

}  // namespace
}  // namespace torvell
