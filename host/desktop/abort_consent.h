// Passes the user's consent to an abort on to the module's own question.
#pragma once

#include "platform/prompt.h"

namespace torvell {

// A prompter in front of the one that the module has installed. The window asks in its own words
// before it aborts a run. The module then asks once more; the thread that aborts gets a Yes, so no
// second box appears. All other questions go on to the module's prompter. Made and destroyed on the
// window's thread; any thread may ask.
class AbortConsent : public platform::Prompter {
 public:
  AbortConsent() = default;
  // Restores the prompter that this object replaced. Requires that no thread of the module runs.
  ~AbortConsent() override;
  AbortConsent(const AbortConsent&) = delete;
  AbortConsent& operator=(const AbortConsent&) = delete;

  // Installs this object as the prompter. Called once, after the discovery, in which the module
  // installs its own. Any thread.
  void StandInFront();

  // While one exists, questions of its thread are answered by Yes.
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
  // The module's prompter. Written once, before SetPrompter publishes this object to other threads.
  platform::Prompter* behind_ = nullptr;
};

}  // namespace torvell
