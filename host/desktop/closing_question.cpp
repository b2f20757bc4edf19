#include "host/desktop/closing_question.h"

#include <QStringList>

namespace torvell {

std::optional<ClosingQuestion> AskBeforeClosing(const std::vector<ClosingObstacle>& runs,
                                                const std::vector<ClosingObstacle>& screens) {
  if (runs.empty() && screens.empty()) return std::nullopt;
  QStringList details;
  for (const auto* obstacles : {&runs, &screens}) {
    for (const ClosingObstacle& each : *obstacles) {
      details << QStringLiteral("%1: %2").arg(each.title, each.text);
    }
  }
  ClosingQuestion question;
  question.details = details.join(QLatin1Char('\n'));
  if (screens.empty()) {
    question.text = QStringLiteral("A tray is running. Closing aborts it.");
    question.closeAnyway = QStringLiteral("Abort and Close");
    question.keepOpen = QStringLiteral("Keep Running");
    return question;
  }
  question.text = runs.empty()
                      ? QStringLiteral("A screen is at work. Closing ends what it does.")
                      : QStringLiteral(
                            "A tray is running and a screen is at work. Closing aborts the "
                            "tray and ends what the screen does.");
  question.closeAnyway = QStringLiteral("End It and Close");
  question.keepOpen = QStringLiteral("Keep Open");
  return question;
}

}  // namespace torvell
