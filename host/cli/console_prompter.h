// Asks the module's questions on the terminal.
#pragma once

#include <functional>

#include "host/cli/output.h"
#include "platform/lock.h"
#include "platform/prompt.h"

namespace torvell {

// Asks on standard error and reads the answer from standard input. Without a terminal, a notice is
// written to standard error and answered by OK, and a question is answered by No. Any thread may
// ask.
class ConsolePrompter : public platform::Prompter {
 public:
  explicit ConsolePrompter(Output& output);

  platform::MessageAnswer ShowMessage(const std::string& text, platform::MessageButtons buttons,
                                      platform::MessageIcon icon) override;
  std::optional<platform::MessageAnswer> ShowMessageUntil(
      const std::string& text, platform::MessageButtons buttons, platform::MessageIcon icon,
      std::span<platform::Event* const> withdrawal) override;
  std::optional<int> Choose(const std::string& title, const std::vector<std::string>& options,
                            int initial) override;
  void Beep() override;

  // Sets a function that is called on the asking thread, with true before a question appears and
  // with false after the answer, so that a live display can step aside. Null removes it.
  void SetQuestionHook(std::function<void(bool)> hook);

  // While one exists, every question is answered by Yes: the user has already agreed.
  class YesScope {
   public:
    explicit YesScope(ConsolePrompter& prompter) : prompter_(prompter) { prompter_.CountYes(1); }
    ~YesScope() { prompter_.CountYes(-1); }
    YesScope(const YesScope&) = delete;
    YesScope& operator=(const YesScope&) = delete;

   private:
    ConsolePrompter& prompter_;
  };

  // Withdraws the open question: a notice counts as read, a question is answered by No.
  void Dismiss();

  // Returns whether a question is open: keys then belong to it.
  bool IsAsking();

 private:
  class Standing;

  void CountYes(int change);
  // Returns the line that is typed; nothing if the question was dismissed or withdrawn, or the
  // terminal is gone.
  std::optional<std::string> ReadAnswer(int generation,
                                        std::span<platform::Event* const> withdrawal = {});
  int Generation();

  Output& output_;
  platform::PlainLock lock_;
  std::function<void(bool)> hook_ GUARDED_BY(lock_);
  int yes_ GUARDED_BY(lock_) = 0;
  int asking_ GUARDED_BY(lock_) = 0;
  int generation_ GUARDED_BY(lock_) = 0;  // one more at each Dismiss
};

}  // namespace torvell
