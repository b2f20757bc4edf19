// Pages of help. The program that has a window shows them; the module only names the page.
#pragma once

#include <string>

namespace platform {

// Opens a page. Called on the user-interface thread; must return at once, with the page open beside
// the window that asked.
class HelpViewer {
 public:
  virtual ~HelpViewer() = default;
  // `path`: the working directory, a backslash, the help file, "::" and the page within it, as
  // "/home/lab\RVX.chm::/RVX/Monitor.htm". What follows the last "/" names the topic. A viewer that
  // has no such file shows the page of that name of its own, or says that there is none.
  virtual void ShowTopic(const std::string& path) = 0;
};

// The viewer in force; null where nothing can be shown.
HelpViewer* GetHelpViewer();

// Sets it; null takes it away again. The caller keeps it alive while it is set.
void SetHelpViewer(HelpViewer* viewer);

}  // namespace platform
