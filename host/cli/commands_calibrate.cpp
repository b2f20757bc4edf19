// calibrate: fits the cell's constants to stored runs of oils of known viscosity.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <set>

#include "host/cli/arguments.h"
#include "host/cli/commands.h"
#include "host/cli/failure.h"
#include "host/cli/json_records.h"
#include "host/cli/session.h"
#include "host/cli/table.h"
#include "host/core/audit.h"
#include "host/core/users.h"
#include "host/tray/number_text.h"
#include "host/tray/sample_text.h"
#include "platform/text.h"

namespace torvell {

namespace {

constexpr size_t kShortId = 8;  // what the table shows of an id
constexpr size_t kFewestIdCharacters = 4;

struct CalibrateArguments {
  std::optional<double> temperature;
  bool all = false;
  int32_t hours = 4;
  std::vector<std::string> excluded;
  bool save = false;
};

// Which runs are left out, by what was typed.
class Exclusion {
 public:
  explicit Exclusion(const std::vector<std::string>& typed) : typed_(typed) {}

  bool TakesPart(const rvx::Sample& sample) {
    const std::string id = platform::FormatGuid(sample.id);
    bool takesPart = true;
    for (const std::string& text : typed_) {
      const bool byId = text.size() >= kFewestIdCharacters && text.size() <= id.size() &&
                        platform::CompareNoCase(text, id.substr(0, text.size())) == 0;
      if (!byId && text != sample.sampleId) continue;
      matched_.insert(text);
      takesPart = false;
    }
    return takesPart;
  }

  // A name that fits nothing is a slip of the pen, and the fit would not be the one that was meant.
  void RequireAllMatched() const {
    for (const std::string& text : typed_) {
      if (matched_.count(text) != 0) continue;
      throw CommandFailure(
          ExitCode::BadUse,
          fmt::format("--exclude {}: no run that was found has this id. Accepted: a sample id, or "
                      "the id of a run or its first {} characters or more, of the runs that the "
                      "command lists without --exclude. Nothing was done.",
                      text, kFewestIdCharacters));
    }
  }

 private:
  const std::vector<std::string>& typed_;
  std::set<std::string> matched_;
};

Json OptionalNumber(const std::optional<double>& value) {
  return value ? NumberOrNull(*value) : Json(nullptr);
}

Json RunJson(const rvx::CalibrationRun& run, bool simulated) {
  StoredSample sample{run.sample, simulated};
  Json object = SampleJson(sample);
  object["used"] = run.used;
  object["recalculated"] = OptionalNumber(run.recalculated);
  object["percentDiff"] = OptionalNumber(run.percentDiff);
  object["variationPercent"] = NumberOrNull(run.variationPercent);
  return object;
}

Json FitJson(const std::optional<rvx::CalibrationFit>& fit) {
  if (!fit) return nullptr;
  return {{"B0", NumberOrNull(fit->b0)},
          {"B1", NumberOrNull(fit->b1)},
          {"B2", NumberOrNull(fit->b2)},
          {"R", NumberOrNull(fit->r)},
          {"stdDev", NumberOrNull(fit->stdDev)},
          {"shown",
           {{"B0", fit->b0Text},
            {"B1", fit->b1Text},
            {"B2", fit->b2Text},
            {"R", fit->rText},
            {"stdDev", fit->stdDevText}}}};
}

std::string RunsTable(const rvx::CalibrationSummary& summary, const std::vector<bool>& simulated) {
  Table table({{"id"},
               {"SampleID"},
               {"Time"},
               {"Speed (rpm/1000)", Table::Align::Right},
               {"%Var (%)", Table::Align::Right},
               {"Known Visc (mPa*s)", Table::Align::Right},
               {"Calc Visc (mPa*s)", Table::Align::Right},
               {"Recalc Visc (mPa*s)", Table::Align::Right},
               {"% Diff (%)", Table::Align::Right},
               {"Temp (degC)", Table::Align::Right},
               {"Date"},
               {"used"},
               {"origin"}});
  for (size_t i = 0; i < summary.runs.size(); ++i) {
    const rvx::CalibrationRun& run = summary.runs[i];
    const std::string time = TimeText(run.sample.timestamp);
    const size_t split = time.find('T');
    const bool whole = split != std::string::npos;
    // A run that was made without constants has no viscosity of its own.
    table.AddRow({platform::FormatGuid(run.sample.id).substr(0, kShortId), run.sample.sampleId,
                  whole ? time.substr(split + 1) : "", run.speedText, run.variationText,
                  run.knownText, run.sample.viscosity == 0.0 ? "" : run.viscosityText,
                  run.recalculatedText, run.percentDiffText, run.temperatureText,
                  whole ? time.substr(0, split) : "", run.used ? "yes" : "no",
                  OriginText(simulated[i])});
  }
  return table.Text();
}

std::string FitText(const rvx::CalibrationSummary& summary) {
  const rvx::CalibrationFit& fit = *summary.fit;
  std::string text = fmt::format(
      "\nfit of {} of {} runs: viscosity = B0 / speed + B1 + B2 * speed\n"
      "  B0 {}   B1 {}   B2 {}\n"
      "  R {}   Std Dev(Visc * Speed) {}\n",
      summary.usedCount, summary.runs.size(), fit.b0Text, fit.b1Text, fit.b2Text, fit.rText,
      fit.stdDevText);
  if (summary.largestPercentDiff) {
    text += platform::FormatText("  largest difference of the runs used %+.2f %%\n",
                                 *summary.largestPercentDiff);
  }
  return text;
}

std::string WhyNoFit(const rvx::CalibrationSummary& summary) {
  constexpr int kFewestRuns = 3;
  if (summary.usedCount < kFewestRuns) {
    return fmt::format(
        "there is nothing to fit: {} runs were found and {} take part; at least {} of different "
        "speeds are needed. Nothing was changed. Look further back with --hours, exclude fewer "
        "runs, or measure more standards (torvell standards tray).",
        summary.runs.size(), summary.usedCount, kFewestRuns);
  }
  return fmt::format(
      "there is nothing to fit: the {} runs that take part do not have three different speeds, so "
      "no constants are better than others. Nothing was changed. Measure standards of other "
      "viscosities.",
      summary.usedCount);
}

std::string TargetText(const CalibrateArguments& arguments) {
  return arguments.all ? "all temperatures" : ExactNumber(*arguments.temperature) + " degC";
}

std::string LastCalibrationText(const CalibrateArguments& arguments,
                                const rvx::CalibrationSummary& summary) {
  if (arguments.all) return "";
  return fmt::format("\nlast calibration of {}: {}\n", TargetText(arguments),
                     summary.lastCalibration ? TimeText(*summary.lastCalibration) : "-");
}

// The constants that the calibration replaces, one text for the trail.
std::string ConstantsText(const FoundInstrument& found, const CalibrateArguments& arguments) {
  std::string text;
  for (const rvx::CellConstants& slot : found.scripting->GetCellConstants()) {
    if (!arguments.all && slot.temperature != *arguments.temperature) continue;
    text += fmt::format("{}{} degC: B0 {} B1 {} B2 {} ({})", text.empty() ? "" : "; ",
                        ExactNumber(slot.temperature), ExactNumber(slot.b0), ExactNumber(slot.b1),
                        ExactNumber(slot.b2), slot.empty ? "none" : TimeText(slot.date));
  }
  return text;
}

void Save(Session& session, const FoundInstrument& found, const CalibrateArguments& arguments,
          const rvx::CalibrationSummary& summary, bool anySimulated) {
  const std::string before = ConstantsText(found, arguments);
  const rvx::CalibrationFit& fit = *summary.fit;
  ThrowIfRefused(
      found.scripting->SaveCalibration(arguments.temperature, fit.b0Text, fit.b1Text, fit.b2Text));
  session.host().audit().Add(
      fmt::format("calibration of {}, {}", found.identity.archiveKey, TargetText(arguments)),
      before,
      fmt::format("{}; fit of {} of {}runs, R {}, Std Dev {}", ConstantsText(found, arguments),
                  summary.usedCount, anySimulated ? "simulated " : "", fit.rText, fit.stdDevText));
  session.output().Progress(fmt::format("the constants of {} are saved", TargetText(arguments)));
}

int Calibrate(Session& session, const CalibrateArguments& arguments) {
  if (arguments.all) session.RequireLevel(kLevelService, "calibrate for all temperatures");
  if (arguments.save) session.RequireLevel(kLevelManager, "save a calibration");
  const FoundInstrument& found = session.OneInstrument();
  Exclusion exclusion(arguments.excluded);
  rvx::CalibrationQuestion question;
  question.temperature = arguments.temperature;
  question.hours = arguments.hours;
  question.takesPart = [&](const rvx::Sample& sample) { return exclusion.TakesPart(sample); };
  rvx::CalibrationSummary summary;
  ThrowIfRefused(found.scripting->FitCalibration(question, summary));
  exclusion.RequireAllMatched();

  std::vector<bool> simulated;
  bool anySimulated = false;
  Json runs = Json::array();
  for (const rvx::CalibrationRun& run : summary.runs) {
    simulated.push_back(session.host().samples().IsSimulated(run.sample.id));
    anySimulated = anySimulated || (simulated.back() && run.used);
    runs.push_back(RunJson(run, simulated.back()));
  }
  const bool saves = arguments.save && summary.fit;
  session.output().Result(
      {{"runs", runs},
       {"fit", FitJson(summary.fit)},
       {"largestPercentDiff", OptionalNumber(summary.largestPercentDiff)},
       {"lastCalibration",
        summary.lastCalibration ? Json(TimeText(*summary.lastCalibration)) : Json(nullptr)}},
      RunsTable(summary, simulated) + LastCalibrationText(arguments, summary) +
          (summary.fit ? FitText(summary) : ""));
  if (anySimulated) {
    session.output().Notice("note: runs of the simulator take part in this fit");
  }
  if (!summary.fit) throw CommandFailure(ExitCode::RunFailed, WhyNoFit(summary));
  if (saves) Save(session, found, arguments, summary, anySimulated);
  return static_cast<int>(ExitCode::Good);
}

}  // namespace

void AddCalibrateCommand(CLI::App& app, Invocation& invocation) {
  const auto arguments = std::make_shared<CalibrateArguments>();
  CLI::App* calibrate = app.add_subcommand(
      "calibrate", "fit the cell's constants to stored runs of oils of known viscosity");
  CLI::Option_group* which = calibrate->add_option_group("which runs");
  which->add_option("--temperature", arguments->temperature, "those of this temperature")
      ->type_name("DEGC")
      ->check(DecimalNumber());
  which->add_flag("--all", arguments->all,
                  "those of all temperatures, for all of them (level 100)");
  which->require_option(1);
  calibrate->add_option("--hours", arguments->hours, "no older than this, 1 to 366; 4 by default")
      ->type_name("N")
      ->check(WholeNumber(1, 366));
  calibrate
      ->add_option("--exclude", arguments->excluded,
                   "leave out runs: their ids, the first characters of them, or sample ids")
      ->type_name("ID");
  calibrate->add_flag("--save", arguments->save, "put the constants into force (level 50)");
  calibrate->callback([&invocation, arguments] {
    invocation.command = [arguments](Session& session) { return Calibrate(session, *arguments); };
  });
}

}  // namespace torvell
