#include "host/tray/tray_file.h"

#include <fmt/format.h>

#include <cmath>
#include <map>

#include "host/tray/number_text.h"
#include "platform/text.h"

namespace torvell {

namespace {

constexpr int kMinRotorTime = 30;
constexpr int kMaxTime = 255;

bool HasControlCharacter(const std::string& text) {
  for (const char c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) return true;
  }
  return false;
}

// Reads one line's cells and notes what is wrong with them.
class LineReader {
 public:
  LineReader(const CsvRow& row, std::vector<FileProblem>& problems)
      : row_(row), problems_(problems) {}

  std::string Text(TrayColumn column) const {
    return platform::Trim(row_.cells[static_cast<size_t>(column) - 1]);
  }

  void Refuse(TrayColumn column, const std::string& accepted) {
    const std::string text = Text(column);
    problems_.push_back({row_.line, static_cast<int>(column), TrayColumnName(column),
                         text.empty() ? "an empty cell" : "\"" + text + "\"", accepted});
  }

  std::optional<int> WholeNumber(TrayColumn column, int least, int most, const char* unit) {
    const std::string text = Text(column);
    if (text.empty()) return std::nullopt;
    const std::optional<int> value = platform::ParseInt(text);
    if (value && *value >= least && *value <= most) return value;
    Refuse(column, fmt::format("a whole number from {} to {}{}, or nothing for the instrument's "
                               "default",
                               least, most, unit));
    return std::nullopt;
  }

  std::optional<double> Number(TrayColumn column, double least, double most, const char* unit) {
    const std::string text = Text(column);
    if (text.empty()) return std::nullopt;
    const std::optional<double> value = platform::ParseDouble(text);
    if (value && std::isfinite(*value) && *value >= least && *value <= most) return value;
    Refuse(column, fmt::format("a number from {} to {} {} with a point as decimal sign, or nothing "
                               "for the instrument's default",
                               ExactNumber(least), ExactNumber(most), unit));
    return std::nullopt;
  }

  int line() const { return row_.line; }

 private:
  const CsvRow& row_;
  std::vector<FileProblem>& problems_;
};

// A value that the first line of a position sets and a later one may only repeat.
template <class Value>
void Agree(LineReader& reader, TrayColumn column, const Value& first, const Value& again,
           bool given, int firstLine) {
  if (given && !(first == again)) {
    reader.Refuse(column,
                  fmt::format("nothing, or what line {} says for this position", firstLine));
  }
}

class TrayReader {
 public:
  TrayReader(int trayPositions, std::vector<FileProblem>& problems)
      : trayPositions_(trayPositions), problems_(problems) {}

  void Take(const CsvRow& row) {
    LineReader reader(row, problems_);
    const std::optional<int> position = platform::ParseInt(reader.Text(TrayColumn::Position));
    if (!position || *position < 1 || *position > trayPositions_) {
      reader.Refuse(TrayColumn::Position, fmt::format("a position from 1 to {}", trayPositions_));
      return;
    }
    const auto [entry, isNew] = positions_.try_emplace(*position);
    TrayFilePosition& target = entry->second;
    if (isNew) {
      target.line = row.line;
      target.position = *position;
    }
    TakeSample(reader, target, isNew);
    TakeTest(reader, target);
  }

  std::vector<TrayFilePosition> Finish() {
    std::vector<TrayFilePosition> all;
    for (auto& [number, position] : positions_) all.push_back(std::move(position));
    return all;
  }

 private:
  void TakeSample(LineReader& reader, TrayFilePosition& target, bool isNew) {
    const std::string action = reader.Text(TrayColumn::Action);
    const bool verify = platform::CompareNoCase(action, "verify") == 0;
    const bool measure = platform::CompareNoCase(action, "measure") == 0;
    if (!verify && !measure && (isNew || !action.empty())) {
      reader.Refuse(TrayColumn::Action, "measure, verify");
    } else if (isNew) {
      target.verify = verify;
    } else {
      Agree(reader, TrayColumn::Action, target.verify, verify, !action.empty(), target.line);
    }

    const std::string sampleId = reader.Text(TrayColumn::SampleId);
    if (HasControlCharacter(sampleId)) {
      reader.Refuse(TrayColumn::SampleId, "a text in one line, without control characters");
    }
    const auto injection = reader.WholeNumber(TrayColumn::InjectionTime, 0, kMaxTime, " seconds");
    const auto coolDown = reader.WholeNumber(TrayColumn::CoolDownTime, 0, kMaxTime, " seconds");
    if (isNew) {
      target.sampleId = sampleId;
      target.injectionTime = injection;
      target.coolDownTime = coolDown;
      return;
    }
    Agree(reader, TrayColumn::SampleId, target.sampleId, sampleId, !sampleId.empty(), target.line);
    Agree(reader, TrayColumn::InjectionTime, target.injectionTime, injection, injection.has_value(),
          target.line);
    Agree(reader, TrayColumn::CoolDownTime, target.coolDownTime, coolDown, coolDown.has_value(),
          target.line);
  }

  void TakeTest(LineReader& reader, TrayFilePosition& target) {
    TrayFileTest test;
    test.line = reader.line();
    test.temperature = reader.Number(TrayColumn::Temperature, -60.0, 40.0, "degrees C");
    test.rotorOnTime =
        reader.WholeNumber(TrayColumn::RotorOnTime, kMinRotorTime, kMaxTime, " seconds");
    test.knownViscosity = reader.Number(TrayColumn::KnownViscosity, 0.0, 1e9, "mPa*s");
    if (test.knownViscosity && !target.verify) {
      reader.Refuse(TrayColumn::KnownViscosity, "nothing, since the action is measure");
    }
    if (target.tests.size() == kMaxTestsOfSample) {
      problems_.push_back(
          {reader.line(), 0, "",
           fmt::format("test number {} of position {}", kMaxTestsOfSample + 1, target.position),
           fmt::format("at most {} tests in one position", kMaxTestsOfSample)});
    }
    target.tests.push_back(test);
  }

  const int trayPositions_;
  std::vector<FileProblem>& problems_;
  std::map<int, TrayFilePosition> positions_;
};

template <class Value>
std::string OptionalText(const std::optional<Value>& value) {
  return value ? ExactNumber(static_cast<double>(*value)) : "";
}

}  // namespace

const std::vector<std::string>& TrayFileHeading() {
  static const std::vector<std::string> kHeading = {
      "position",      "action",          "sample id",      "temperature",
      "rotor on time", "known viscosity", "injection time", "cool-down time"};
  return kHeading;
}

std::string TrayColumnName(TrayColumn column) {
  return TrayFileHeading()[static_cast<size_t>(column) - 1];
}

std::vector<TrayFilePosition> ParseTrayFile(std::string_view text, int trayPositions,
                                            std::vector<FileProblem>& problems) {
  std::vector<CsvRow> rows = ParseCsv(text, problems);
  if (problems.empty()) CheckShape(rows, TrayFileHeading(), problems);
  TrayReader reader(trayPositions, problems);
  if (problems.empty()) {
    for (const CsvRow& row : rows) reader.Take(row);
  }
  std::vector<TrayFilePosition> positions = reader.Finish();
  if (problems.empty() && positions.empty()) {
    problems.push_back({0, 0, "", "no line behind the heading", "at least one position"});
  }
  return positions;
}

std::string FormatTrayFile(const std::vector<TrayFilePosition>& positions) {
  std::string text = CsvLine(TrayFileHeading());
  for (const TrayFilePosition& position : positions) {
    for (const TrayFileTest& test : position.tests) {
      text += CsvLine({std::to_string(position.position), position.verify ? "verify" : "measure",
                       position.sampleId, OptionalText(test.temperature),
                       OptionalText(test.rotorOnTime), OptionalText(test.knownViscosity),
                       OptionalText(position.injectionTime), OptionalText(position.coolDownTime)});
    }
  }
  return text;
}

}  // namespace torvell
