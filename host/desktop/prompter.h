// The module's questions, asked in the window.
#pragma once

#include "host/desktop/gui_thread.h"
#include "platform/lock.h"
#include "platform/prompt.h"

namespace torvell {

// Asks by a modal dialog over the active window. Any thread may ask; it waits for the answer, the
// window goes on. Without a window (the program is ending) a question is answered by No.
class WindowPrompter : public platform::Prompter {
 public:
  explicit WindowPrompter(GuiThread& gui) : gui_(gui) {}

  platform::MessageAnswer ShowMessage(const std::string& text, platform::MessageButtons buttons,
                                      platform::MessageIcon icon) override;
  std::optional<int> Choose(const std::string& title, const std::vector<std::string>& options,
                            int initial) override;
  void Beep() override;

  // While one lives a question is answered by Yes: the person has said it already.
  class YesScope {
   public:
    explicit YesScope(WindowPrompter& prompter) : prompter_(prompter) { prompter_.CountYes(1); }
    ~YesScope() { prompter_.CountYes(-1); }
    YesScope(const YesScope&) = delete;
    YesScope& operator=(const YesScope&) = delete;

   private:
    WindowPrompter& prompter_;
  };

 private:
  void CountYes(int change);

  GuiThread& gui_;
  platform::PlainLock lock_{"window prompter", platform::kLeafRank};
  int yes_ GUARDED_BY(lock_) = 0;
};

}  // namespace torvell
