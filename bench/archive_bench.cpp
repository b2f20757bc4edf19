// What it costs to store a sample durably, compared with an append of as many bytes to a file on
// the same disk; and to read the newest page of an archive of 100,000 samples. Usage: archive_bench
// FOLDER [STORES]
#include <fcntl.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "host/core/database.h"
#include "host/core/file_handle.h"
#include "host/core/host.h"
#include "host/core/sample_columns.h"
#include "module/calibration/calibration_query.h"

namespace {

constexpr size_t kAppendBytes = 600;
constexpr int64_t kManySamples = 100'000;
constexpr int kPage = 50;

// A sample as a run stores it.
rvx::Sample MakeSample(int number) {
  rvx::Sample sample;
  sample.sampleId = "10W-30 batch " + std::to_string(number);
  sample.operatorName = "local person";
  sample.typeName = "RVX";
  sample.instrument = "RVX";
  sample.position = static_cast<uint16_t>(1 + number % 30);
  sample.knownViscosity = -2.0;
  sample.speed = 0.2387;
  sample.averageTemperature = -20.0004;
  sample.viscosity = 4183.3333;
  for (size_t i = 0; i < sample.constants.size(); ++i) sample.constants[i] = 0.1 * i;
  sample.serialNumber = "BENCH-1";
  return sample;
}

double StoreOne(torvell::SampleStore& samples, int number) {
  const rvx::Sample sample = MakeSample(number);
  const double start = bench::Now();
  samples.StoreSample(sample);
  return bench::Now() - start;
}

double AppendOne(int file, const std::string& bytes) {
  const double start = bench::Now();
  if (write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()) ||
      fdatasync(file) != 0) {
    bench::Fail("the file takes nothing");
  }
  return bench::Now() - start;
}

void MeasureStores(torvell::Host& host, const std::string& folder, int count,
                   bench::Report& report) {
  torvell::FileHandle file(
      open((folder + "/appended").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
  if (!file.IsOpen()) bench::Fail("no file can be made");
  const std::string bytes(kAppendBytes, 'x');
  std::vector<double> stores, appends;
  for (int i = 0; i < count; ++i) {
    appends.push_back(AppendOne(file.get(), bytes));
    stores.push_back(StoreOne(host.samples(), i));
  }
  if (host.samples().Count() != count) bench::Fail("samples are missing");
  report.Add("append_us", bench::Median(appends) * 1e6);
  report.Add("store_us", bench::Median(stores) * 1e6);
  report.Add("store_to_append", bench::Median(stores) / bench::Median(appends));
  report.Add("store_p99_us", bench::Quantile(stores, 0.99) * 1e6);
}

// The values of one stored sample with another identity and time, for each number up to `count`.
void Multiply(torvell::Database& database, int64_t count) {
  std::string columns;
  for (const torvell::SampleColumn& column : torvell::SampleColumns()) {
    columns += columns.empty() ? "" : ", ";
    if (column.type == torvell::ColumnType::Guid) {
      columns += "printf('00000000-0000-4000-8000-%012x', n)";
    } else if (column.name == "Timestamp") {
      columns += "strftime('%Y-%m-%dT%H:%M:%S', '2020-01-01', (n * 37) || ' seconds')";
    } else {
      columns += "\"" + column.name + "\"";
    }
  }
  platform::PlainGuard guard(database.lock());
  database.connection().exec(
      "WITH RECURSIVE numbers(n) AS (VALUES (1) UNION ALL SELECT n + 1 FROM numbers WHERE n < " +
      std::to_string(count) + ") INSERT INTO SAMPLES SELECT " + columns + ", 0" +
      " FROM numbers, (SELECT * FROM SAMPLES LIMIT 1)");
}

// Ends the program unless the statement walks an index from its end and sorts nothing.
void CheckPlan(torvell::Database& database) {
  platform::PlainGuard guard(database.lock());
  SQLite::Statement plan(database.connection(),
                         "EXPLAIN QUERY PLAN " + torvell::NewestSamplesText());
  std::string text;
  while (plan.executeStep()) text += plan.getColumn(3).getString() + "; ";
  if (text.find("USING INDEX") == std::string::npos || text.find("B-TREE") != std::string::npos) {
    bench::Fail("the newest samples are not read through an index: " + text);
  }
}

void MeasureNewestPage(torvell::Host& host, bench::Report& report) {
  Multiply(host.database(), kManySamples - host.samples().Count());
  if (host.samples().Count() != kManySamples) bench::Fail("the archive was not filled");
  CheckPlan(host.database());
  std::vector<double> pages;
  for (int i = 0; i < 200; ++i) {
    const double start = bench::Now();
    if (host.samples().Last(kPage).size() != kPage) bench::Fail("the page is not full");
    pages.push_back(bench::Now() - start);
  }
  report.Add("newest_page_us", bench::Median(pages) * 1e6);
}

class QueryFilter : public rvx::SampleArchiveFilter {
 public:
  explicit QueryFilter(std::string text) : text_(std::move(text)) {}
  bool AcceptSample(rvx::Sample) override { return true; }
  std::string GetQueryText() override { return text_; }

 private:
  std::string text_;
};

// The runs of a calibration out of all samples, with the longest look back that there is.
void MeasureCalibrationQuery(torvell::Host& host, bench::Report& report) {
  // A sample each ten minutes, every second one of known viscosity, at four temperatures in turns.
  {
    platform::PlainGuard guard(host.database().lock());
    host.database().connection().exec(
        "UPDATE SAMPLES SET \"Timestamp\" = strftime('%Y-%m-%dT%H:%M:%S', '2020-01-01', "
        "(rowid * 600) || ' seconds'), \"Known Viscosity\" = -2.0, \"Valid\" = 1, "
        "\"Constant 5\" = CASE rowid % 2 WHEN 0 THEN 5000.0 ELSE 0.0 END, "
        "\"Average Temperature\" = -15.0 - 5.0 * ((rowid / 2) % 4), \"Instrument\" = 'RVX'");
  }
  constexpr int kHours = 366;
  const platform::Date end =
      platform::Date(2020, 1, 1).PlusMilliseconds(int64_t{kManySamples} * 600000);
  QueryFilter filter(rvx::BuildCalibrationQuery("RVX", 4, true, kHours, end));
  std::vector<double> queries;
  size_t found = 0;
  for (int i = 0; i < 50; ++i) {
    rvx::ArrayOfSamples samples;
    const double start = bench::Now();
    host.samples().QuerySamples(samples, &filter);
    queries.push_back(bench::Now() - start);
    found = samples.size();
  }
  // 366 hours hold 2195 samples, of which an eighth is asked for.
  if (found < 270 || found > 280) bench::Fail("the query found other runs than there are");
  report.Add("calibration_query_us", bench::Median(queries) * 1e6);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) bench::Fail("usage: archive_bench FOLDER [STORES]");
  const int stores = argc > 2 ? std::stoi(argv[2]) : 2000;
  const bench::WorkFolder folder(argv[1]);
  bench::Report report;
  const int code = platform::RunUnderTimeBase({}, [&] {
    torvell::HostOptions options;
    options.dataFolder = folder.path() + "/data";
    const std::unique_ptr<torvell::Host> host = torvell::Host::Open(options);
    MeasureStores(*host, folder.path(), stores, report);
    MeasureNewestPage(*host, report);
    MeasureCalibrationQuery(*host, report);
    return 0;
  });
  report.Print();
  return code;
}
