// Pages of help. The program that has a window shows them; the module only names the page.
#pragma once

#include <string>

namespace platform {

// Opens a page beside the window that asks for it. Called on the user-interface thread; must return
// at once.
class HelpViewer {
 public:
  virtual ~HelpViewer() = default;
  // `path`: the working directory, a backslash, the help file, "::" and the page within it, as
  // "/home/lab\RVX.chm::/RVX/Monitor.htm". What follows the last "/" names the topic. A viewer
  // without such a file shows its own page of that name, or says that there is none.
  virtual void ShowTopic(const std::string& path) = 0;
};

// The viewer in force; null where nothing can be shown.
HelpViewer* GetHelpViewer();

// Sets the viewer; null removes it. The caller keeps it alive while it is set.
void SetHelpViewer(HelpViewer* viewer);

}  // namespace platform
