// The table of samples over an archive that is larger than what it keeps.
#include "host/desktop/samples_model.h"

#include <gtest/gtest.h>

#include "host/core/database.h"
#include "tests/host/desktop/desktop_bench.h"

namespace torvell {
namespace {

// Stores copies of one sample.
void Multiply(Host& host, int count) {
  rvx::Sample sample;
  sample.viscosity = 5000.0;
  host.samples().StoreSample(sample);
  std::string columns;
  for (const SampleColumn& column : SampleColumns()) {
    if (column.name != "ID") columns += ", \"" + column.name + "\"";
  }
  ExecuteSql(host.database(),
             "WITH RECURSIVE N(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM N WHERE i < " +
                 std::to_string(count - 1) + ") INSERT INTO SAMPLES (\"ID\"" + columns +
                 ") SELECT printf('%08x', i) || substr(\"ID\", 9)" + columns +
                 " FROM N, SAMPLES WHERE SAMPLES.rowid = 1");
}

TEST(SamplesModelTest, FetchesOnlyWhatIsLookedAt) {
  TempFolder folder;
  const std::unique_ptr<Host> host = OpenHost(folder);
  GuiThread gui;
  Worker worker(gui, "samples test");
  Multiply(*host, 100000);
  SamplesModel model(host->samples(), worker);
  model.sort(SamplesModel::Viscosity, Qt::AscendingOrder);
  EXPECT_EQ(model.query().order, SampleQuery::Order::Viscosity);
  ASSERT_TRUE(DesktopBench::Until([&] { return model.rowCount() == 100000; }));
  for (const int row : {0, 50000, 99999}) {
    const QModelIndex index = model.index(row, SamplesModel::Viscosity);
    EXPECT_TRUE(model.data(index, Qt::DisplayRole).toString().isEmpty()) << "not fetched yet";
    EXPECT_TRUE(DesktopBench::Until(
        [&] { return model.data(index, Qt::DisplayRole).toString() == "5000.0"; }));
  }
  RunAside(gui, "closing", [&worker] { worker.Finish(); });
}

}  // namespace
}  // namespace torvell
