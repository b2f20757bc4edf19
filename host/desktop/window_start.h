// What the window reads before it greets the user.
#pragma once

#include <vector>

#include "host/core/journal.h"
#include "host/desktop/main_window.h"

namespace torvell {

struct MainWindow::Start {
  bool isDemo = false;
  bool hasUsers = true;
  int32_t level = 0;  // of the acting user
  std::vector<InterruptedTray> interrupted;
};

}  // namespace torvell
