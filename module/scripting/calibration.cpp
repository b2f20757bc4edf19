// Calibrations of an instrument by program: the fit, its storing, the choice of standards.
#include <algorithm>
#include <cmath>

#include "boundary/standards_text.h"
#include "module/calibration/calibration_cells.h"
#include "module/calibration/calibration_fit.h"
#include "module/calibration/calibration_query.h"
#include "module/calibration/calibration_report.h"
#include "module/calibration/standard_group_file.h"
#include "module/execution/calibration_tray.h"
#include "module/instrument/problems.h"
#include "module/instrument/save_cell_constants.h"
#include "module/scripting/scriptable_instrument.h"
#include "platform/text.h"

namespace rvx {
namespace {

// Accepts every sample: the query alone selects.
class CalibrationFilter : public SampleArchiveFilter {
 public:
  explicit CalibrationFilter(std::string query) : query_(std::move(query)) {}
  bool AcceptSample(Sample /*sample*/) override { return true; }
  std::string GetQueryText() override { return query_; }

 private:
  std::string query_;
};

CalibrationFit MakeFit(const CalibrationFitResult& fit) {
  const CalibrationTexts texts = FormatFit(fit);
  return {fit.b0,   fit.b1,   fit.b2,   fit.r,   fit.stdDev,
          texts.b0, texts.b1, texts.b2, texts.r, texts.stdDev};
}

void FillRun(CalibrationRun& run, const CellConstantValues* constants) {
  run.variationPercent = SpeedVariationPercent(run.sample);
  const CalibrationListCells cells = FormatListCells(run.sample, constants, IsoMomentFormat());
  run.speedText = cells.speed;
  run.variationText = cells.variation;
  run.knownText = cells.knownViscosity;
  run.viscosityText = cells.viscosity;
  run.recalculatedText = cells.recalculated;
  run.percentDiffText = cells.percentDiff;
  run.temperatureText = cells.temperature;
  run.timeText = cells.time;
  run.dateText = cells.date;
  if (constants == nullptr) return;
  const CalibrationPoint point = PointOf(run.sample);
  run.recalculated = RecalculateViscosity(constants->b0, constants->b1, constants->b2, point.speed);
  run.percentDiff = PercentDiff(*run.recalculated, point.knownViscosity);
}

// The temperature texts in use, with their degrees C.
struct NamedTemperature {
  std::string text;
  double degrees;
};
std::vector<NamedTemperature> TemperaturesInUse(int slots) {
  std::vector<NamedTemperature> temperatures;
  for (size_t i = 0; i < static_cast<size_t>(slots); ++i) {
    temperatures.push_back({kTemperatureTexts[i], kCalibrationTemperatures[i]});
  }
  return temperatures;
}

// Why a group has no standard at a temperature.
std::string ReasonForLack(const std::vector<StandardGroupRow>& groups,
                          const CStandardsMap& standards, const std::string& temperature,
                          const std::string& group) {
  std::string missing;
  std::string usable;
  for (const StandardGroupRow& row : groups) {
    if (row.temperature != temperature || row.group != group) continue;
    std::string& names = IsUsableAt(standards, row.name, row.temperature) ? usable : missing;
    names += (names.empty() ? "" : ", ") + row.name;
  }
  if (!usable.empty()) return usable + ": stands for group A already";
  if (!missing.empty()) return missing + ": not stored with a viscosity at this temperature";
  return "the group file names no standard";
}

std::string ListOf(const std::vector<CStandardPicker::Row>& rows) {
  std::string list;
  for (const CStandardPicker::Row& row : rows) list += (list.empty() ? "" : ", ") + row.text;
  return list.empty() ? "none" : list;
}

std::string ListOf(const std::vector<std::string>& texts) {
  std::string list;
  for (const std::string& text : texts) list += (list.empty() ? "" : ", ") + text;
  return list;
}

// Unmarks every standard that is not to be used.
ScriptingResult LeaveOnly(CStandardPicker& picker, const std::vector<std::string>& only) {
  const auto nameOf = [](const CStandardPicker::Row& row) {
    return ParseStandardRow(row.text).name;
  };
  for (const std::string& name : only) {
    const auto& rows = picker.standards();
    if (std::any_of(rows.begin(), rows.end(),
                    [&](const auto& row) { return nameOf(row) == name; })) {
      continue;
    }
    return BadValue(Code::NotAccepted, Field::Standards,
                    "\"" + name + "\" takes no part at these temperatures.", ListOf(rows),
                    kTrayNotChanged);
  }
  // A row can leave the list with a temperature, so the places are found anew each time.
  for (;;) {
    const auto& rows = picker.standards();
    const auto unwanted = std::find_if(rows.begin(), rows.end(), [&](const auto& row) {
      return row.checked && std::find(only.begin(), only.end(), nameOf(row)) == only.end();
    });
    if (unwanted == rows.end()) return std::nullopt;
    picker.UncheckStandard(static_cast<size_t>(unwanted - rows.begin()));
  }
}

// The index of a slot's temperature in the picker; the number of temperatures if it is not offered.
size_t FindTemperature(const CStandardPicker& picker, int slot) {
  const auto& rows = picker.temperatures();
  const auto found = std::find_if(rows.begin(), rows.end(), [&](const auto& row) {
    return row.text == kTemperatureTexts[slot];
  });
  return static_cast<size_t>(found - rows.begin());
}

// Makes the choice in the picker, or says why it does not conform.
ScriptingResult Choose(CStandardPicker& picker, const std::vector<int>& slots,
                       const std::vector<std::string>& only) {
  for (const int slot : slots) {
    const size_t row = FindTemperature(picker, slot);
    if (row < picker.temperatures().size()) {
      picker.CheckTemperature(row);
      continue;
    }
    return BadValue(
        Code::StandardsLacking, Field::Temperature,
        platform::FormatText("The stored standards do not conform to ASTM D5293 at %.f degC: there "
                             "is no usable one in group %s.",
                             kCalibrationTemperatures[static_cast<size_t>(slot)],
                             ListOf(picker.LackingGroups(kTemperatureTexts[slot])).c_str()),
        std::string(), kTrayNotChanged);
  }
  if (only.empty()) return std::nullopt;
  if (ScriptingResult problem = LeaveOnly(picker, only)) return problem;
  for (const int slot : slots) {
    if (picker.temperatures()[FindTemperature(picker, slot)].checked) continue;
    return BadValue(
        Code::ChoiceNotConforming, Field::Standards,
        platform::FormatText("The chosen standards do not conform to ASTM D5293 at %.f degC: one "
                             "of each of the groups A, B and C is needed.",
                             kCalibrationTemperatures[static_cast<size_t>(slot)]),
        std::string(), kTrayNotChanged);
  }
  return std::nullopt;
}

}  // namespace

ScriptingResult ScriptableInstrument::FitCalibration(const CalibrationQuestion& question,
                                                     CalibrationSummary& summary) {
  summary = {};
  std::optional<int> slot;
  if (ScriptingResult problem =
          question.temperature ? FindSlot(*question.temperature, slot.emplace())
                               : CheckLevel(kLevelService, "Calibrating for all temperatures")) {
    return problem;
  }
  if (question.hours < kMinCalibrationHours || question.hours > kMaxCalibrationHours) {
    return BadValue(
        Code::OutOfRange, Field::Hours,
        platform::FormatText("%d hours are out of range.", question.hours),
        platform::FormatText("%d to %d hours", kMinCalibrationHours, kMaxCalibrationHours));
  }
  ArrayOfSamples samples;
  CalibrationFilter filter(BuildCalibrationQuery(
      GetInstrumentId(), slot, configuration().GetSlotCount() == kCalibrationSlots, question.hours,
      platform::LocalNow()));
  try {
    GetSampleArchive()->QuerySamples(samples, &filter);
  } catch (ArchiveException* refused) {
    const std::string reason = refused->GetRecord().message;
    delete refused;
    return Unable(Code::NotRead, reason);
  }
  std::vector<CalibrationPoint> points;
  for (Sample& sample : samples) {
    CalibrationRun run;
    run.used = !question.takesPart || question.takesPart(sample);
    if (run.used) points.push_back(PointOf(sample));
    run.sample = std::move(sample);
    summary.runs.push_back(std::move(run));
  }
  summary.targetText = CalibrationTargetText(slot);
  summary.usedCount = static_cast<int32_t>(points.size());
  summary.hasTooFewSpeeds = CountDifferentSpeeds(points) < kMinSpeeds;
  if (slot) {
    ConfigurationGuard guard(configuration());
    const platform::Date& date =
        configuration().fields.calibrationDates[static_cast<size_t>(*slot)];
    if (date.IsValid() && !(date == NeverCalibrated())) summary.lastCalibration = date;
  }
  std::optional<CellConstantValues> constants;
  if (const std::optional<CalibrationFitResult> fit = FitCalibrationConstants(points)) {
    summary.fit = MakeFit(*fit);
    constants = ConstantsOf(FormatFit(*fit));
  }
  for (CalibrationRun& run : summary.runs) {
    FillRun(run, constants ? &*constants : nullptr);
    if (!run.used || !run.percentDiff || !std::isfinite(*run.percentDiff)) continue;
    if (!summary.largestPercentDiff ||
        std::fabs(*run.percentDiff) > std::fabs(*summary.largestPercentDiff)) {
      summary.largestPercentDiff = run.percentDiff;
    }
  }
  return std::nullopt;
}

ScriptingResult ScriptableInstrument::SaveCalibration(std::optional<double> temperature,
                                                      const std::string& b0Text,
                                                      const std::string& b1Text,
                                                      const std::string& b2Text) {
  // SaveCellConstants checks the right.
  std::optional<int> slot;
  if (temperature) {
    if (ScriptingResult problem = FindSlot(*temperature, slot.emplace())) return problem;
  }
  for (const std::string* text : {&b0Text, &b1Text, &b2Text}) {
    if (platform::ParseDouble(*text)) continue;
    return BadValue(Code::NotAccepted, Field::Constants, "\"" + *text + "\" is no constant.",
                    "a finite number", kNothingChanged);
  }
  if (IsTrayRunning() != 0) {
    return Unable(Code::TrayRunning, "Constants can't be saved while a tray is running.",
                  "Nothing was changed. Wait for its end.");
  }
  CalibrationTexts texts;
  texts.b0 = b0Text;
  texts.b1 = b1Text;
  texts.b2 = b2Text;
  // If the archive fails, one date is restored; for all temperatures it is that of the first one.
  const int dateSlot = slot.value_or(0);
  const SavedConstants saved =
      SaveCellConstants(*this, slot, dateSlot, texts, platform::LocalNow());
  if (saved.stored) return std::nullopt;
  if (!saved.refusal.empty()) return Unable(Code::LevelTooLow, saved.refusal);
  return NotStored(
      Code::ConstantsNotStored,
      saved.reason + platform::FormatText(
                         " The new constants are in force all the same, at %s degC with the old "
                         "date, and are stored when the instrument is closed if the archive works "
                         "by then.",
                         CalibrationTargetText(dateSlot).c_str()));
}

ScriptingResult ScriptableInstrument::MakePicker(std::optional<CStandardPicker>& picker,
                                                 std::vector<StandardGroupRow>& groups,
                                                 std::string* groupFile) {
  if (GetStandards() == nullptr) {
    return Unable(Code::NotRead, "The calibration standards could not be read from the archive.",
                  "Nothing was changed. Try again; if that does not help, look at the database.");
  }
  std::string folder;
  GetArchiveManager()->GetDefaultName(folder);
  const std::string path = StandardGroupPath(folder);
  if (groupFile != nullptr) *groupFile = path;
  groups = ReadStandardGroups(path);
  picker.emplace(
      groups, [this]() -> const CStandardsMap* { return GetStandards(); },
      configuration().GetSlotCount() == kCalibrationSlots);
  return std::nullopt;
}

ScriptingResult ScriptableInstrument::GetConformity(ConformityReport& report) {
  report = {};
  std::optional<CStandardPicker> picker;
  std::vector<StandardGroupRow> groups;
  if (ScriptingResult problem = MakePicker(picker, groups, &report.groupFile)) return problem;
  report.groupRows = static_cast<int32_t>(groups.size());
  const CStandardsMap& standards = *GetStandards();
  for (const auto& [text, degrees] : TemperaturesInUse(configuration().GetSlotCount())) {
    ConformityOfTemperature entry;
    entry.temperature = degrees;
    entry.conforms = picker->ConformsToD5293(text, false);
    for (const StandardGroupRow& row : groups) {
      const bool isNew = std::find(entry.standards.begin(), entry.standards.end(), row.name) ==
                         entry.standards.end();
      if (row.temperature == text && isNew && IsUsableAt(standards, row.name, text)) {
        entry.standards.push_back(row.name);
      }
    }
    for (const std::string& group : picker->LackingGroups(text)) {
      entry.lacks.push_back({group, ReasonForLack(groups, standards, text, group)});
    }
    report.temperatures.push_back(std::move(entry));
  }
  return std::nullopt;
}

ScriptingResult ScriptableInstrument::MakeCalibrationTray(const CalibrationTrayRequest& request) {
  if (ScriptingResult problem = CheckLevel(kLevelOperator, "Filling a tray")) return problem;
  // The instrument may not have reported anything yet, so IsIdle can't be used: no running tray is
  // enough.
  if (IsTrayRunning() != 0) {
    return Unable(Code::TrayRunning, "The tray can't be filled while it is running.",
                  "It was not changed. Wait for its end.");
  }
  std::optional<CStandardPicker> picker;
  std::vector<StandardGroupRow> groups;
  if (ScriptingResult problem = MakePicker(picker, groups, nullptr)) return problem;
  std::vector<int> slots;
  for (const double degrees : request.temperatures) {
    slots.push_back(0);
    if (ScriptingResult problem = FindSlot(degrees, slots.back())) return problem;
  }
  if (ScriptingResult problem = Choose(*picker, slots, request.only)) return problem;
  const CalibrationTrayPlan plan = picker->MakePlan();
  if (!plan.problem.empty()) {
    return BadValue(Code::NotAccepted, Field::Standards, plan.problem, std::string(),
                    kTrayNotChanged);
  }
  const TrayFilling filling = FillCalibrationTray(*this, plan);
  if (filling == TrayFilling::Done) return std::nullopt;
  if (filling == TrayFilling::NotAllowed) {
    // The user has logged out since the check above, and may even have logged in again.
    return Unable(Code::LevelTooLow, "Filling a tray needs level 10.",
                  "The tray was not changed. Log in as a user of that level.");
  }
  int32_t size = 0;
  {
    TrayGuard guard(*GetTray(0));
    size = GetTray(0)->GetSize();
  }
  return BadValue(Code::TooMany, Field::Standards,
                  platform::FormatText("%zu standards are chosen and the tray has %d positions.",
                                       plan.positions.size(), size),
                  std::string(),
                  "The tray was not changed. Choose fewer temperatures, or name the standards to "
                  "be used.");
}

}  // namespace rvx
