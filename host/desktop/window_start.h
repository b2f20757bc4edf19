// What the window learns before it greets the person.
#pragma once

#include <vector>

#include "host/core/journal.h"
#include "host/desktop/main_window.h"

namespace torvell {

struct MainWindow::Start {
  bool isDemo = false;
  bool hasUsers = true;
  int32_t level = 0;  // of who acts
  std::vector<InterruptedTray> interrupted;
};

}  // namespace torvell
