// samples, messages: what has been measured and what went wrong. Works without an instrument.
#include <fmt/format.h>

#include "host/cli/commands.h"
#include "host/cli/failure.h"
#include "host/cli/json_records.h"
#include "host/cli/sample_table.h"
#include "host/cli/session.h"
#include "host/tray/number_text.h"
#include "host/tray/sample_csv.h"

namespace torvell {

namespace {

struct SamplesArguments {
  int64_t last = 0;  // 0: all
  std::string csvFile;
};

// Calls `visit` with the samples that are asked for, oldest first.
void VisitSamples(Session& session, int64_t last,
                  const std::function<bool(const StoredSample&)>& visit) {
  SampleStore& samples = session.host().samples();
  if (last == 0) {
    samples.ForEach(visit);
    return;
  }
  for (const StoredSample& sample : samples.Last(last)) {
    if (!visit(sample)) return;
  }
}

void WriteSamplesCsv(Session& session, const SamplesArguments& arguments) {
  std::string text = SampleCsvHeading();
  int64_t count = 0;
  VisitSamples(session, arguments.last, [&](const StoredSample& sample) {
    text += SampleCsvLine(sample);
    ++count;
    return true;
  });
  WriteWholeFile(arguments.csvFile, text);
  session.output().Progress(fmt::format("{}: {} samples written", arguments.csvFile, count));
}

// One array, written sample by sample: an archive may hold more than fits into memory.
void PrintSamplesJson(Session& session, int64_t last) {
  Output& output = session.output();
  bool first = true;
  output.Text("[");
  VisitSamples(session, last, [&](const StoredSample& sample) {
    output.Text(first ? "\n" : ",\n");
    first = false;
    output.Text(JsonText(SampleJson(sample)));
    return !output.OutputLost();
  });
  output.Text(first ? "]\n" : "\n]\n");
}

int Samples(Session& session, const SamplesArguments& arguments) {
  if (!arguments.csvFile.empty()) WriteSamplesCsv(session, arguments);
  if (session.output().json()) {
    PrintSamplesJson(session, arguments.last);
  } else if (arguments.csvFile.empty()) {
    SampleTable table;
    VisitSamples(session, arguments.last, [&](const StoredSample& sample) {
      table.Add(sample);
      return true;
    });
    session.output().Text(table.Text());
  }
  return static_cast<int>(ExitCode::Good);
}

int Messages(Session& session, int64_t last) {
  Json list = Json::array();
  Table table({{"time"}, {"kind"}, {"source"}, {"text"}});
  for (const ErrorReport& report : session.host().errors().Last(last)) {
    list.push_back(ReportJson(report));
    table.AddRow({TimeText(report.time), report.kind == 0 ? "message" : "failure", report.source,
                  report.message});
  }
  session.output().Result(list, table.Text());
  return static_cast<int>(ExitCode::Good);
}

}  // namespace

void AddArchiveCommands(const Command& program) {
  const auto arguments = std::make_shared<SamplesArguments>();
  const Command samples = program.AddCommand("samples", "the stored samples", Samples, arguments);
  samples.Add("--last", arguments->last, "only the latest N").Named("N").Whole(1);
  samples.Add("--csv", arguments->csvFile, "write every column to this file").Named("FILE");

  const auto last = std::make_shared<int64_t>(0);
  program.AddCommand("messages", "the failures and notices that were reported", Messages, last)
      .Add("--last", *last, "only the latest N")
      .Named("N")
      .Whole(1);
}

}  // namespace torvell
