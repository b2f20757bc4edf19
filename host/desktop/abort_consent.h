// The person's "yes" to an abort, handed to the module's own question.
#pragma once

#include "platform/prompt.h"

namespace torvell {

// Is asked before the prompter that the module has installed. The window asks in its own words
// before it aborts a run; the module asks once more, and the thread that aborts gets a Yes without
// a second box. All other questions go on to the module's prompter. Made and destroyed on the
// window's thread; any thread may ask.
class AbortConsent : public platform::Prompter {
 public:
  AbortConsent() = default;
  // Puts back the prompter that it replaced. No module thread runs any more.
  ~AbortConsent() override;
  AbortConsent(const AbortConsent&) = delete;
  AbortConsent& operator=(const AbortConsent&) = delete;

  // From here on this object is asked first. Called once, after the discovery, in which the module
  // installs its prompter. Any thread.
  void StandInFront();

  // While one lives, questions of this thread are answered by Yes.
  class Scope {
   public:
    Scope();
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
  };

  platform::MessageAnswer ShowMessage(const std::string& text, platform::MessageButtons buttons,
                                      platform::MessageIcon icon) override;
  std::optional<platform::MessageAnswer> ShowMessageUntil(
      const std::string& text, platform::MessageButtons buttons, platform::MessageIcon icon,
      std::span<platform::Event* const> withdrawal) override;
  std::optional<int> Choose(const std::string& title, const std::vector<std::string>& options,
                            int initial) override;
  void Beep() override;

 private:
  // The module's. Written once, before SetPrompter hands this object to other threads.
  platform::Prompter* behind_ = nullptr;
};

}  // namespace torvell
