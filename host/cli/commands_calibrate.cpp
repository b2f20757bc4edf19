// calibrate: fits the cell's constants to stored runs of oils of known viscosity.
#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

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

constexpr size_t kShortId = 8;  // characters of an id that the table shows
constexpr size_t kMinIdCharacters = 4;

struct CalibrateArguments {
  std::optional<double> temperature;
  bool all = false;
  int32_t hours = rvx::kUsualCalibrationHours;
  std::vector<std::string> excluded;
  bool save = false;
};

// The runs that are left out, selected by the texts that were typed.
class Exclusion {
 public:
  explicit Exclusion(const std::vector<std::string>& typed) {
    for (const std::string& text : typed) matches_[text];
  }

  bool TakesPart(const rvx::Sample& sample) {
    const std::string id = platform::FormatGuid(sample.id);
    bool takesPart = true;
    for (auto& [text, match] : matches_) {
      const bool byId = text.size() >= kMinIdCharacters && text.size() <= id.size() &&
                        platform::CompareNoCase(text, id.substr(0, text.size())) == 0;
      const bool bySampleId = text == sample.sampleId;
      if (byId) match.byId.insert(id);
      if (bySampleId) match.bySampleId.insert(id);
      takesPart = takesPart && !byId && !bySampleId;
    }
    return takesPart;
  }

  // A text that matches no run, or more runs than it can be meant for, is a mistake: the fit would
  // use other runs than intended.
  void RequireClear() const {
    for (const auto& [text, match] : matches_) {
      if (match.byId.empty() && match.bySampleId.empty()) {
        throw CommandFailure(
            ExitCode::BadUse,
            fmt::format("--exclude {}: no run that was found has this id. Accepted: a sample id, "
                        "or the id of a run or its first {} characters or more, of the runs that "
                        "the command lists without --exclude. Nothing was done.",
                        text, kMinIdCharacters));
      }
      const bool isBoth =
          !match.byId.empty() &&
          std::any_of(match.bySampleId.begin(), match.bySampleId.end(),
                      [&byId = match.byId](const auto& id) { return byId.count(id) == 0; });
      if (match.byId.size() <= 1 && !isBoth) continue;
      throw CommandFailure(
          ExitCode::BadUse,
          fmt::format("--exclude {}: {}. Nothing was done. Give more characters of the id of each "
                      "run that is meant; --json shows them whole.",
                      text,
                      isBoth
                          ? "it begins the id of one run and is the sample id of another"
                          : fmt::format("{} runs have an id that begins so", match.byId.size())));
    }
  }

 private:
  struct Match {
    std::set<std::string> byId, bySampleId;  // ids of runs
  };
  std::map<std::string, Match> matches_;  // by the typed text
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
    table.AddRow({platform::FormatGuid(run.sample.id).substr(0, kShortId), run.sample.sampleId,
                  run.timeText, run.speedText, run.variationText, run.knownText, run.viscosityText,
                  run.recalculatedText, run.percentDiffText, run.temperatureText, run.dateText,
                  run.used ? "yes" : "no", OriginText(simulated[i])});
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

constexpr char kMeasureOthers[] =
    "Nothing was changed. Measure standards of other viscosities, or exclude fewer runs.";

std::string WhyNoFit(const rvx::CalibrationSummary& summary) {
  constexpr int kMinRuns = 3;
  if (summary.usedCount < kMinRuns) {
    return fmt::format(
        "there is nothing to fit: {} runs were found and {} take part; at least {} of different "
        "speeds are needed. Nothing was changed. Look further back with --hours, exclude fewer "
        "runs, or measure more standards (torvell standards tray).",
        summary.runs.size(), summary.usedCount, kMinRuns);
  }
  return fmt::format(
      "there is nothing to fit: the {} runs that take part do not have three different speeds, so "
      "no constants are better than others. {}",
      summary.usedCount, kMeasureOthers);
}

// Returns the reason why the constants must not be saved; nothing if they may be.
std::optional<CommandFailure> FindObstacle(const rvx::CalibrationSummary& summary,
                                           int simulatedCount, const FoundInstrument& found) {
  if (summary.hasTooFewSpeeds) {
    return CommandFailure(
        ExitCode::RunFailed,
        fmt::format("the constants were not saved: the {} runs that take part do not have three "
                    "different speeds, so other constants would do as well. {}",
                    summary.usedCount, kMeasureOthers));
  }
  if (simulatedCount > 0 && !found.identity.simulated) {
    return CommandFailure(
        ExitCode::BadUse,
        fmt::format("the constants were not saved: {} of the runs that take part were made on the "
                    "simulator, and {} is an instrument. Nothing was changed. Leave them out with "
                    "--exclude.",
                    simulatedCount, found.identity.archiveKey));
  }
  return std::nullopt;
}

// Returns what the constants are for, with its unit.
std::string TargetText(const CalibrateArguments& arguments,
                       const rvx::CalibrationSummary& summary) {
  return arguments.all ? summary.targetText : summary.targetText + " degC";
}

std::string LastCalibrationText(const CalibrateArguments& arguments,
                                const rvx::CalibrationSummary& summary) {
  // The temperatures can have different dates until all are saved at once.
  if (arguments.all && !summary.lastCalibration) return "";
  return fmt::format("\nlast calibration of {}: {}\n", TargetText(arguments, summary),
                     summary.lastCalibration ? TimeText(*summary.lastCalibration) : "-");
}

// Returns the constants that the calibration replaces, as one text for the audit trail.
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

// Stores the constants and puts their date into the summary, or returns why that failed.
rvx::ScriptingResult Save(Session& session, const FoundInstrument& found,
                          const CalibrateArguments& arguments, rvx::CalibrationSummary& summary,
                          bool anySimulated) {
  const std::string before = ConstantsText(found, arguments);
  const rvx::CalibrationFit& fit = *summary.fit;
  if (rvx::ScriptingResult problem = found.scripting->SaveCalibration(
          arguments.temperature, fit.b0Text, fit.b1Text, fit.b2Text)) {
    return problem;
  }
  session.host().audit().Add(
      fmt::format("calibration of {}, {}", found.identity.archiveKey,
                  TargetText(arguments, summary)),
      before,
      fmt::format("{}; fit of {} {}runs, R {}, Std Dev {}", ConstantsText(found, arguments),
                  summary.usedCount, anySimulated ? "simulated " : "", fit.rText, fit.stdDevText));
  summary.lastCalibration.reset();
  for (const rvx::CellConstants& slot : found.scripting->GetCellConstants()) {
    if (!arguments.all && slot.temperature != *arguments.temperature) continue;
    if (!slot.empty) summary.lastCalibration = slot.date;
  }
  return std::nullopt;
}

void Show(Session& session, const CalibrateArguments& arguments,
          const rvx::CalibrationSummary& summary, const std::vector<bool>& simulated, bool saved) {
  Json runs = Json::array();
  for (size_t i = 0; i < summary.runs.size(); ++i) {
    runs.push_back(RunJson(summary.runs[i], simulated[i]));
  }
  session.output().Result(
      {{"runs", runs},
       {"fit", FitJson(summary.fit)},
       {"largestPercentDiff", OptionalNumber(summary.largestPercentDiff)},
       {"lastCalibration",
        summary.lastCalibration ? Json(TimeText(*summary.lastCalibration)) : Json(nullptr)},
       {"saved", saved}},
      RunsTable(summary, simulated) + LastCalibrationText(arguments, summary) +
          (summary.fit ? FitText(summary) : ""));
}

int Calibrate(Session& session, const CalibrateArguments& arguments) {
  if (arguments.all) session.RequireLevel(kLevelService, "calibrate for all temperatures");
  if (arguments.save) session.RequireLevel(kLevelOperator, "save a calibration");
  const FoundInstrument& found = session.OneInstrument();
  Exclusion exclusion(arguments.excluded);
  rvx::CalibrationQuestion question;
  question.temperature = arguments.temperature;
  question.hours = arguments.hours;
  question.takesPart = [&](const rvx::Sample& sample) { return exclusion.TakesPart(sample); };
  rvx::CalibrationSummary summary;
  ThrowIfRefused(found.scripting->FitCalibration(question, summary));
  exclusion.RequireClear();

  std::vector<bool> simulated;
  int simulatedCount = 0;
  for (const rvx::CalibrationRun& run : summary.runs) {
    simulated.push_back(session.host().samples().IsSimulated(run.sample.id));
    if (simulated.back() && run.used) ++simulatedCount;
  }
  const std::optional<CommandFailure> obstacle = FindObstacle(summary, simulatedCount, found);
  const bool saves = arguments.save && summary.fit && !obstacle;
  rvx::ScriptingResult problem;
  if (saves) problem = Save(session, found, arguments, summary, simulatedCount > 0);
  const bool saved = saves && !problem;
  Show(session, arguments, summary, simulated, saved);
  if (simulatedCount > 0) {
    session.output().Notice("note: runs of the simulator take part in this fit");
  }
  if (!summary.fit) throw CommandFailure(ExitCode::RunFailed, WhyNoFit(summary));
  if (obstacle && arguments.save) throw *obstacle;
  if (summary.hasTooFewSpeeds) {
    session.output().Notice(
        "note: the runs that take part do not have three different speeds: these constants mean "
        "nothing and can't be saved. Measure standards of other viscosities");
  }
  ThrowIfRefused(problem);
  if (saved) {
    session.output().Progress(
        fmt::format("the constants of {} are saved", TargetText(arguments, summary)));
  }
  return static_cast<int>(ExitCode::Good);
}

}  // namespace

void AddCalibrateCommand(const Command& program) {
  const auto arguments = std::make_shared<CalibrateArguments>();
  const Command calibrate = program.AddCommand(
      "calibrate", "fit the cell's constants to stored runs of oils of known viscosity", Calibrate,
      arguments);
  const Command which = calibrate.AddExactlyOne("which runs");
  which.Add("--temperature", arguments->temperature, "those of this temperature")
      .Named("DEGC")
      .Decimal();
  which.AddFlag("--all", arguments->all, "those of all temperatures, for all of them (level 100)");
  calibrate
      .Add("--hours", arguments->hours,
           fmt::format("no older than this, {} to {}; {} by default", rvx::kMinCalibrationHours,
                       rvx::kMaxCalibrationHours, rvx::kUsualCalibrationHours))
      .Named("N")
      .Whole(rvx::kMinCalibrationHours, rvx::kMaxCalibrationHours);
  calibrate
      .Add("--exclude", arguments->excluded,
           "leave out runs: their ids, the first characters of them, or sample ids")
      .Named("ID");
  calibrate.AddFlag("--save", arguments->save, "put the constants into force (level 10)");
}

}  // namespace torvell
