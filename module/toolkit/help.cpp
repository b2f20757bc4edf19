#include "module/toolkit/help.h"

#include <QDir>

#include "platform/help.h"
#include "platform/prompt.h"

namespace rvx {

void ShowHelp(const std::string& topic) {
  platform::HelpViewer* viewer = platform::GetHelpViewer();
  if (viewer == nullptr) {
    platform::GetPrompter().Beep();
    return;
  }
  // The path is passed with the call and not kept, so that the help of no other window changes.
  viewer->ShowTopic(QDir::currentPath().toStdString() + "\\" + topic);
}

}  // namespace rvx
