// The table of samples over an archive that is larger than what it keeps.
#include "host/desktop/samples_model.h"

#include <gtest/gtest.h>

#include "host/core/database.h"
#include "tests/host/desktop/desktop_bench.h"

namespace torvell {
namespace {

class SamplesModelTest : public testing::Test {
 protected:
  SamplesModelTest() : host_(OpenHost(folder_)), worker_(gui_, "samples test") {}
  ~SamplesModelTest() override {
    RunAside(gui_, "closing", [this] { worker_.Finish(); });
  }

  void Store(const char* sampleId, const char* time, double viscosity, double known = 0.0) {
    rvx::Sample sample;
    sample.sampleId = sampleId;
    sample.instrument = "RVX one";
    sample.timestamp = platform::ParseDate(time);
    sample.viscosity = viscosity;
    sample.constants[4] = known;
    host_->samples().StoreSample(sample);
  }
  // One stored sample again and again, each a second later than the one before.
  void Multiply(int count) {
    Store("S", "2026-01-01T08:00:00", 5000.0);
    std::string columns;
    for (const SampleColumn& column : SampleColumns()) {
      if (column.name == "ID" || column.name == "Timestamp") continue;
      columns += ", \"" + column.name + "\"";
    }
    ExecuteSql(host_->database(),
               "WITH RECURSIVE N(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM N WHERE i < " +
                   std::to_string(count - 1) + ") INSERT INTO SAMPLES (\"ID\", \"Timestamp\"" +
                   columns +
                   ") SELECT printf('%08x', i) || substr(\"ID\", 9), strftime('%Y-%m-%dT%H:%M:%S', "
                   "'2026-01-01 08:00:00', i "
                   "|| ' seconds')" +
                   columns + " FROM N, SAMPLES WHERE SAMPLES.rowid = 1");
  }

  void Search(SamplesModel& model, const SampleQuery& query) {
    model.SetQuery(query);
    ASSERT_TRUE(DesktopBench::Until([&] { return !model.IsSearching(); }));
  }
  std::vector<QString> Column(SamplesModel& model, int column) {
    std::vector<QString> texts;
    for (int row = 0; row < model.rowCount(); ++row) {
      const QModelIndex index = model.index(row, column);
      model.data(index, Qt::DisplayRole);
      DesktopBench::Until([&] { return !model.data(index, Qt::DisplayRole).toString().isEmpty(); });
      texts.push_back(model.data(index, Qt::DisplayRole).toString());
    }
    return texts;
  }

  TempFolder folder_;
  std::unique_ptr<Host> host_;
  GuiThread gui_;
  Worker worker_;
};

TEST_F(SamplesModelTest, FiltersAndOrdersAsAsked) {
  Store("OIL-A", "2026-01-05T23:59:59", 5000.0);
  Store("oil-b", "2026-01-06T00:00:00", 4000.0, 3950.0);
  Store("100%", "2026-01-07T12:00:00", 6000.0);
  SamplesModel model(host_->samples(), worker_);
  using Texts = std::vector<QString>;

  SampleQuery query;
  Search(model, query);
  EXPECT_EQ(Column(model, SamplesModel::SampleId), (Texts{"100%", "oil-b", "OIL-A"}));
  query.sampleId = "OIL";
  Search(model, query);
  EXPECT_EQ(model.rowCount(), 2);
  query.sampleId = "0%";
  Search(model, query);
  EXPECT_EQ(Column(model, SamplesModel::SampleId), (Texts{"100%"})) << "% is a letter here";
  query = {};
  query.toDay = "2026-01-05";
  Search(model, query);
  EXPECT_EQ(Column(model, SamplesModel::SampleId), (Texts{"OIL-A"}));
  query = {};
  query.fromDay = "2026-01-06";
  query.verified = true;
  Search(model, query);
  EXPECT_EQ(Column(model, SamplesModel::SampleId), (Texts{"oil-b"}));
  query = {};
  query.order = SampleQuery::Order::Viscosity;
  query.descending = false;
  Search(model, query);
  EXPECT_EQ(Column(model, SamplesModel::SampleId), (Texts{"oil-b", "OIL-A", "100%"}));
}

TEST_F(SamplesModelTest, EachHeadingOrdersByItsOwnColumn) {
  // Each column in an order of its own, so that none is taken for another.
  struct Row {
    const char *sampleId, *instrument, *operatorName;
    int position;
    double temperature, average, speed, viscosity, known;
  };
  const Row rows[] = {{"1", "c", "e", 2, -20, -21, 0.1, 4000, 9000},
                      {"2", "a", "f", 3, -30, -19, 0.3, 3000, 8000},
                      {"3", "b", "d", 1, -25, -20, 0.2, 2000, 7500}};
  for (const Row& row : rows) {
    rvx::Sample sample;
    sample.sampleId = row.sampleId;
    sample.instrument = row.instrument;
    sample.operatorName = row.operatorName;
    sample.position = row.position;
    sample.constants[5] = row.temperature;
    sample.averageTemperature = row.average;
    sample.speed = row.speed;
    sample.viscosity = row.viscosity;
    sample.constants[4] = row.known;
    sample.timestamp = platform::Date(2026, 1, 5, 8, 0, 0);
    // One of them is no measurement.
    host_->samples().SetSimulated(row.position == 2);
    host_->samples().StoreSample(sample);
  }
  const std::pair<int, const char*> expected[] = {
      {SamplesModel::Time, "123"},        {SamplesModel::Instrument, "231"},
      {SamplesModel::Position, "312"},    {SamplesModel::SampleId, "123"},
      {SamplesModel::Temperature, "231"}, {SamplesModel::Average, "132"},
      {SamplesModel::Speed, "132"},       {SamplesModel::Viscosity, "321"},
      {SamplesModel::Known, "321"},       {SamplesModel::Operator, "312"},
      {SamplesModel::Origin, "231"}};
  SamplesModel model(host_->samples(), worker_);
  for (const auto& [column, order] : expected) {
    model.sort(column, Qt::AscendingOrder);
    ASSERT_TRUE(DesktopBench::Until([&] { return !model.IsSearching(); }));
    QString found;
    for (const QString& id : Column(model, SamplesModel::SampleId)) found += id;
    EXPECT_EQ(found, order) << SampleHeading(column).toStdString();
  }
}

TEST_F(SamplesModelTest, FetchesOnlyWhatIsLookedAt) {
  Multiply(100000);
  SamplesModel model(host_->samples(), worker_);
  SampleQuery query;
  query.descending = false;
  Search(model, query);
  ASSERT_EQ(model.rowCount(), 100000);
  for (const int row : {0, 50000, 99999}) {
    const QModelIndex index = model.index(row, SamplesModel::Viscosity);
    EXPECT_TRUE(model.data(index, Qt::DisplayRole).toString().isEmpty()) << "not fetched yet";
    EXPECT_TRUE(DesktopBench::Until(
        [&] { return model.data(index, Qt::DisplayRole).toString() == "5000.0"; }));
  }
  EXPECT_TRUE(worker_.IsIdle()) << "nothing else was fetched";
}

}  // namespace
}  // namespace torvell
