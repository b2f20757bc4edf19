// The question that is asked before the window closes. No widgets.
#pragma once

#include <QString>
#include <optional>
#include <vector>

namespace torvell {

// An activity that closing the window would break off.
struct ClosingObstacle {
  QString title;  // name of the instrument or the screen
  QString text;   // what would be lost, or why the screen must not be closed now
};

struct ClosingQuestion {
  QString text;
  QString details;      // a line for each obstacle
  QString closeAnyway;  // the button's label
  QString keepOpen;
};

// Returns the question; nothing if the window may close without one.
std::optional<ClosingQuestion> AskBeforeClosing(const std::vector<ClosingObstacle>& runs,
                                                const std::vector<ClosingObstacle>& screens);

}  // namespace torvell
