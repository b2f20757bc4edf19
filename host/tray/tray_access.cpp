#include "host/tray/tray_access.h"

#include <fmt/format.h>

#include "boundary/action_keys.h"
#include "host/tray/number_text.h"
#include "platform/text.h"

namespace torvell {

namespace {

using Field = rvx::ScriptingProblem::Field;

std::shared_ptr<rvx::Action> NewAction(const InstrumentEntry& entry, int32_t index) {
  return std::shared_ptr<rvx::Action>(entry.instrument->CreateActionByIndex(index));
}

// The column of the file that a problem of the instrument is about.
std::optional<TrayColumn> ColumnOf(Field field) {
  switch (field) {
    case Field::Temperature:
      return TrayColumn::Temperature;
    case Field::RotorOnTime:
      return TrayColumn::RotorOnTime;
    case Field::KnownViscosity:
      return TrayColumn::KnownViscosity;
    case Field::InjectionTime:
      return TrayColumn::InjectionTime;
    case Field::CoolDownTime:
      return TrayColumn::CoolDownTime;
    default:
      return std::nullopt;
  }
}

std::string FoundText(const TrayFilePosition& position, const TrayFileTest& test,
                      TrayColumn column) {
  const auto text = [](const auto& value) {
    return value ? "\"" + ExactNumber(static_cast<double>(*value)) + "\""
                 : std::string("an empty cell");
  };
  switch (column) {
    case TrayColumn::Temperature:
      return text(test.temperature);
    case TrayColumn::RotorOnTime:
      return text(test.rotorOnTime);
    case TrayColumn::KnownViscosity:
      return text(test.knownViscosity);
    case TrayColumn::InjectionTime:
      return text(position.injectionTime);
    case TrayColumn::CoolDownTime:
      return text(position.coolDownTime);
    case TrayColumn::Position:
    case TrayColumn::Action:
    case TrayColumn::SampleId:
      break;
  }
  return "\"" + position.sampleId + "\"";
}

// Describes what the instrument refuses in terms of the file.
FileProblem ProblemOf(const rvx::ScriptingProblem& problem, const TrayFilePosition& position) {
  const bool ofTest = problem.test >= 0 && problem.test < static_cast<int>(position.tests.size());
  const TrayFileTest& test = position.tests[ofTest ? static_cast<size_t>(problem.test) : 0];
  FileProblem result;
  result.line = test.line;
  const std::optional<TrayColumn> column = ColumnOf(problem.field);
  if (column) {
    result.column = static_cast<int>(*column);
    result.columnName = TrayColumnName(*column);
    result.found = FoundText(position, test, *column);
  } else {
    result.found = fmt::format("position {}", position.position);
  }
  if (problem.accepted.empty()) {
    result.accepted = problem.Sentences();
    return result;
  }
  result.found += fmt::format(" ({})", problem.found);
  result.accepted = problem.accepted;
  return result;
}

// The temperatures that Measure Viscosity may use, for messages.
std::string CalibratedTemperatures(const InstrumentEntry& entry) {
  std::string list;
  for (const rvx::CellConstants& slot : entry.scripting->GetCellConstants()) {
    if (!slot.empty) list += (list.empty() ? "" : ", ") + ExactNumber(slot.temperature);
  }
  return list.empty() ? "none, since the instrument has no cell constants yet" : list;
}

class TrayBuilder {
 public:
  TrayBuilder(const InstrumentEntry& entry, std::vector<FileProblem>& problems)
      : entry_(entry), problems_(problems) {}

  std::shared_ptr<rvx::Action> Build(const TrayFilePosition& position) {
    auto action =
        NewAction(entry_, position.verify ? rvx::kCheckViscAction : rvx::kMeasureViscAction);
    action->SetSampleId(position.sampleId);
    const std::optional<rvx::SampleTests> defaults = entry_.scripting->GetSampleTests(*action);
    rvx::SampleTests tests;
    tests.injectionTime = position.injectionTime;
    tests.coolDownTime = position.coolDownTime;
    for (const TrayFileTest& given : position.tests) {
      rvx::SampleTest test;
      if (defaults && !defaults->tests.empty()) {
        test.temperature = defaults->tests.front().temperature;
      }
      if (given.temperature) test.temperature = *given.temperature;
      test.rotorOnTime = given.rotorOnTime;
      test.knownViscosity = given.knownViscosity;
      tests.tests.push_back(test);
    }
    if (const rvx::ScriptingResult refused = entry_.scripting->SetSampleTests(*action, tests)) {
      Refuse(*refused, position);
    }
    return action;
  }

 private:
  void Refuse(const rvx::ScriptingProblem& refused, const TrayFilePosition& position) {
    if (refused.kind() == rvx::ScriptingProblem::Kind::NotAllowed) {
      throw HostError(HostErrorKind::NotAllowed,
                      fmt::format("position {}: {}\nNothing of the file was taken over.",
                                  position.position, refused.Sentences()));
    }
    FileProblem problem = ProblemOf(refused, position);
    if (!position.verify && problem.column == static_cast<int>(TrayColumn::Temperature)) {
      problem.accepted = fmt::format("{} (temperatures with cell constants: {})", problem.accepted,
                                     CalibratedTemperatures(entry_));
    }
    problems_.push_back(problem);
  }

  const InstrumentEntry& entry_;
  std::vector<FileProblem>& problems_;
};

const char* StateText(PositionState state) {
  switch (state) {
    case PositionState::NotRun:
      return "not measured";
    case PositionState::PartlyMeasured:
      return "measured in part";
    case PositionState::Measured:
      return "measured";
  }
  return "";
}

}  // namespace

int TraySize(const InstrumentEntry& entry) {
  rvx::TrayOfSampleActions& tray = *entry.instrument->GetTray(0);
  const rvx::TrayGuard guard(tray);
  return tray.GetSize();
}

TrayActions HoldTray(const InstrumentEntry& entry) {
  TrayActions actions;
  rvx::TrayOfSampleActions& tray = *entry.instrument->GetTray(0);
  const rvx::TrayGuard guard(tray);
  for (int i = 0; i < tray.GetSize(); ++i) actions.push_back(tray.Hold(i));
  return actions;
}

std::vector<TrayPosition> ReadTray(const InstrumentEntry& entry) {
  const TrayActions actions = HoldTray(entry);
  std::vector<TrayPosition> positions;
  for (size_t i = 0; i < actions.size(); ++i) {
    rvx::Action& action = *actions[i];
    if (action.GetClassName() == rvx::kNullActionClassKey) continue;
    TrayPosition position;
    position.position = static_cast<int>(i);
    position.label = action.GetLabel();
    position.classKey = action.GetClassName();
    position.sampleId = action.GetSampleId();
    position.tests = entry.scripting->GetSampleTests(action);
    position.estimatedSeconds = entry.scripting->EstimateSeconds(action);
    positions.push_back(std::move(position));
  }
  return positions;
}

std::vector<TrayFilePosition> TrayFileOf(const std::vector<TrayPosition>& tray) {
  std::vector<TrayFilePosition> file;
  for (const TrayPosition& position : tray) {
    if (!position.tests) continue;
    TrayFilePosition entry;
    entry.position = position.position + 1;
    entry.verify = position.classKey == rvx::kActionClassKeys[rvx::kCheckViscAction];
    entry.sampleId = position.sampleId;
    entry.injectionTime = position.tests->injectionTime;
    entry.coolDownTime = position.tests->coolDownTime;
    for (const rvx::SampleTest& test : position.tests->tests) {
      TrayFileTest line;
      line.temperature = test.temperature;
      line.rotorOnTime = test.rotorOnTime;
      if (entry.verify) line.knownViscosity = test.knownViscosity;
      entry.tests.push_back(line);
    }
    file.push_back(std::move(entry));
  }
  return file;
}

TrayActions BuildTray(const InstrumentEntry& entry, const std::string& path) {
  TrayActions actions = EmptyTray(entry);
  std::vector<FileProblem> problems;
  const std::vector<TrayFilePosition> positions =
      ParseTrayFile(ReadWholeFile(path), static_cast<int>(actions.size()), problems);
  if (problems.empty()) {
    TrayBuilder builder(entry, problems);
    for (const TrayFilePosition& position : positions) {
      actions[static_cast<size_t>(position.position) - 1] = builder.Build(position);
    }
  }
  if (!problems.empty()) throw HostError(HostErrorKind::BadInput, FormatProblems(path, problems));
  return actions;
}

TrayActions EmptyTray(const InstrumentEntry& entry) {
  TrayActions actions;
  const int size = TraySize(entry);
  for (int i = 0; i < size; ++i) actions.push_back(NewAction(entry, rvx::kNullAction));
  return actions;
}

void StoreTray(Host& host, const InstrumentEntry& entry) {
  try {
    host.instrumentTexts().StoreInstrument(entry.identity.archiveKey, entry.instrument);
  } catch (rvx::CViscoException* raised) {
    const std::unique_ptr<rvx::CViscoException> error(raised);
    throw HostError(HostErrorKind::Database,
                    "The tray could not be stored: " + error->GetRecord().message);
  }
}

TrayPut PutIntoTray(Host& host, const InstrumentEntry& entry, TrayPut put) {
  host.users().Require(kLevelOperator, "change the tray");
  if (entry.instrument->IsTrayRunning() != 0) {
    throw HostError(HostErrorKind::Tray,
                    "The tray is running, so it was not changed. Wait for its end, or abort it.");
  }
  rvx::TrayOfSampleActions& tray = *entry.instrument->GetTray(0);
  const auto exchange = [&tray](TrayPut in) {
    TrayPut out;
    const rvx::TrayGuard guard(tray);
    for (auto& [position, action] : in) {
      if (position < 0 || position >= tray.GetSize()) continue;
      out[position] = tray.Replace(position, std::move(action));
    }
    return out;
  };
  TrayPut removed = exchange(std::move(put));
  try {
    StoreTray(host, entry);
  } catch (const HostError& error) {
    for (const auto& [position, action] : exchange(std::move(removed))) action->Stop();
    throw HostError(HostErrorKind::Database,
                    fmt::format("{} The tray is as it was.", error.what()));
  }
  for (const auto& [position, action] : removed) action->Stop();
  host.instruments().NotifyInstrumentChanged();
  return removed;
}

void ReplaceTray(Host& host, const InstrumentEntry& entry, TrayActions actions) {
  TrayPut put;
  for (size_t i = 0; i < actions.size(); ++i) put[static_cast<int>(i)] = std::move(actions[i]);
  PutIntoTray(host, entry, std::move(put));
}

std::vector<std::string> KeepWhatIsNotMeasured(Host& host, const InstrumentEntry& entry,
                                               const InterruptedTray& interrupted) {
  std::vector<std::string> notices;
  TrayActions actions = HoldTray(entry);
  for (const InterruptedPosition& position : interrupted.positions) {
    const size_t index = static_cast<size_t>(position.position);
    // The position may hold something else by now, if the tray was changed since.
    if (position.stored == 0 || index >= actions.size() ||
        actions[index]->GetClassName() != position.classKey ||
        actions[index]->GetSampleId() != position.sampleId) {
      continue;
    }
    std::optional<rvx::SampleTests> tests = entry.scripting->GetSampleTests(*actions[index]);
    if (!tests || position.state == PositionState::Measured) {
      actions[index] = NewAction(entry, rvx::kNullAction);
      continue;
    }
    // The tests were already removed by an earlier attempt that did not come as far as the start of
    // a run. Removing them again would lose tests that were never measured.
    if (static_cast<int>(tests->tests.size()) != position.tests) continue;
    tests->tests.erase(tests->tests.begin(), tests->tests.begin() + position.stored);
    std::shared_ptr<rvx::Action> rest(entry.instrument->CreateActionFromText(position.classKey));
    rest->SetSampleId(position.sampleId);
    if (const auto refused = entry.scripting->SetSampleTests(*rest, *tests)) {
      notices.push_back(fmt::format("note: position {} runs as a whole once more: {}",
                                    position.position + 1, refused->Sentences()));
      continue;
    }
    actions[index] = rest;
  }
  notices.push_back(DescribeInterrupted(interrupted) +
                    "What was measured is in the archive and is not run again.");
  ReplaceTray(host, entry, std::move(actions));
  return notices;
}

std::string DescribeInterrupted(const InterruptedTray& interrupted) {
  std::string text = fmt::format("the tray that was started at {} was interrupted:\n",
                                 TimeText(interrupted.started));
  for (const InterruptedPosition& position : interrupted.positions) {
    text +=
        fmt::format("  position {} ({}): {}, {} of {} tests\n", position.position + 1,
                    position.sampleId, StateText(position.state), position.stored, position.tests);
  }
  return text;
}

void CloseInterrupted(Host& host, const InstrumentEntry& entry) {
  TrayJournal& journal = host.journal();
  if (const auto interrupted = journal.InterruptedOf(entry.identity.archiveKey)) {
    journal.Close(interrupted->run);
  }
}

}  // namespace torvell
