#include "host/desktop/tray_rows.h"

#include <QLocale>
#include <QStringList>
#include <algorithm>

#include "host/desktop/number_display.h"
#include "host/tray/sample_text.h"

namespace torvell {
namespace {

// A position without results failed; one with some of them failed in part.
RowState StateOfPosition(const RunState& run, const RunPosition& position) {
  if (&position == run.Current()) return run.paused() ? RowState::Paused : RowState::Running;
  const bool complete = static_cast<int>(position.samples.size()) >= position.plan.TestCount();
  if (position.finished) return complete ? RowState::Done : RowState::Failed;
  if (!run.finished()) return RowState::Waiting;
  return position.samples.empty() ? RowState::NotRun : RowState::Failed;
}

}  // namespace

std::vector<TrayRow> RowsOfTray(int size, const std::vector<TrayPosition>& tray) {
  std::vector<TrayRow> rows(static_cast<size_t>(size));
  for (const TrayPosition& position : tray) {
    TrayRow& row = rows.at(static_cast<size_t>(position.position));
    row.action = QString::fromStdString(position.label);
    row.sampleId = QString::fromStdString(position.sampleId);
    if (position.tests) row.tests = position.tests->tests;
    row.state = RowState::Waiting;
  }
  return rows;
}

std::vector<TrayRow> RowsOfRun(int size, const RunState& run,
                               const std::map<int, QString>& failures) {
  std::vector<TrayPosition> plan;
  for (const RunPosition& position : run.positions()) plan.push_back(position.plan);
  std::vector<TrayRow> rows = RowsOfTray(size, plan);
  for (const RunPosition& position : run.positions()) {
    TrayRow& row = rows.at(static_cast<size_t>(position.plan.position));
    row.state = StateOfPosition(run, position);
    row.results.assign(position.samples.begin(), position.samples.end());
    if (&position == run.Current()) row.doing = QString::fromStdString(run.statusText());
    const auto failure = failures.find(position.plan.position);
    if (failure != failures.end()) row.failure = failure->second;
  }
  return rows;
}

QString RowStateText(RowState state) {
  switch (state) {
    case RowState::Empty:
      return {};
    case RowState::Waiting:
      return QStringLiteral("Waiting");
    case RowState::Running:
      return QStringLiteral("Running");
    case RowState::Paused:
      return QStringLiteral("Paused");
    case RowState::Done:
      return QStringLiteral("Done");
    case RowState::Failed:
      return QStringLiteral("Failed");
    case RowState::NotRun:
      return QStringLiteral("Not run");
  }
  return {};
}

Shape RowShape(RowState state) {
  switch (state) {
    case RowState::Empty:
      return Shape::None;
    case RowState::Waiting:
      return Shape::Waiting;
    case RowState::Running:
      return Shape::Running;
    case RowState::Paused:
      return Shape::Paused;
    case RowState::Done:
      return Shape::Done;
    case RowState::Failed:
      return Shape::Failed;
    case RowState::NotRun:
      return Shape::NotRun;
  }
  return Shape::None;
}

QString TestsText(const TrayRow& row) {
  QStringList parts;
  for (const rvx::SampleTest& test : row.tests) parts << DisplayNumber(test.temperature, 1);
  return parts.join(QLatin1Char(QLocale().decimalPoint() == QLatin1String(",") ? ';' : ',') +
                    QStringLiteral(" "));
}

QString ResultText(const TrayRow& row) {
  QStringList parts;
  for (const rvx::Sample& sample : row.results) {
    parts << (sample.viscosity == 0.0 ? QStringLiteral("-") : DisplayNumber(sample.viscosity, 1));
  }
  const QString separator =
      QLocale().decimalPoint() == QLatin1String(",") ? QStringLiteral("; ") : QStringLiteral(", ");
  const bool active = row.state == RowState::Running || row.state == RowState::Paused;
  if (active && parts.isEmpty()) return row.doing;
  if (row.state == RowState::Failed) {
    for (size_t i = row.results.size(); i < row.tests.size(); ++i) parts << QStringLiteral("-");
  }
  return parts.join(separator);
}

QString DescribeRow(int position, const TrayRow& row) {
  if (!row.filled()) return QStringLiteral("Position %1: empty").arg(position + 1);
  QString text = QStringLiteral("Position %1: %2, sample \"%3\"")
                     .arg(position + 1)
                     .arg(row.action, row.sampleId.isEmpty() ? QStringLiteral("-") : row.sampleId);
  text += QStringLiteral("\n%1").arg(RowStateText(row.state));
  if (!row.doing.isEmpty()) text += QStringLiteral(": %1").arg(row.doing);
  for (size_t i = 0; i < row.tests.size(); ++i) {
    text += QStringLiteral("\n%1 °C").arg(DisplayNumber(row.tests[i].temperature, 1));
    if (row.tests[i].rotorOnTime) {
      text += QStringLiteral(", rotor on %1 s").arg(*row.tests[i].rotorOnTime);
    }
    if (row.tests[i].knownViscosity) {
      text +=
          QStringLiteral(", known %1 mPa*s").arg(DisplayNumber(*row.tests[i].knownViscosity, 1));
    }
    if (i < row.results.size()) {
      const double viscosity = row.results[i].viscosity;
      text += viscosity == 0.0 ? QStringLiteral(": no viscosity")
                               : QStringLiteral(": %1 mPa*s").arg(DisplayNumber(viscosity, 1));
    }
  }
  if (!row.failure.isEmpty()) text += QLatin1Char('\n') + row.failure;
  return text;
}

QString CleanSampleId(const QString& typed) {
  QString clean;
  for (const QChar c : typed) clean += c.isPrint() ? c : QLatin1Char(' ');
  // The cut must not leave half of a surrogate pair at the end.
  clean = clean.simplified().left(kMaxSampleIdLength);
  if (!clean.isEmpty() && clean.back().isHighSurrogate()) clean.chop(1);
  return clean.trimmed();
}

}  // namespace torvell
