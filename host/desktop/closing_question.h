// What a person is asked before the window closes. No widgets.
#pragma once

#include <QString>
#include <optional>
#include <vector>

namespace torvell {

// Something that goes on and that the end of the window would break off.
struct ClosingObstacle {
  QString title;  // the instrument's or the screen's
  QString text;   // what would be lost, or why the screen must not be closed now
};

struct ClosingQuestion {
  QString text;
  QString details;      // a line for each obstacle
  QString closeAnyway;  // the button's label
  QString keepOpen;
};

// Nothing if the window may close without a question.
std::optional<ClosingQuestion> AskBeforeClosing(const std::vector<ClosingObstacle>& runs,
                                                const std::vector<ClosingObstacle>& screens);

}  // namespace torvell
