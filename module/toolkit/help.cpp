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
  // The path goes with the call and is kept nowhere, so that no other window's help changes.
  viewer->ShowTopic(QDir::currentPath().toStdString() + "\\" + topic);
}

}  // namespace rvx
