// The module's questions, asked on the terminal.
#pragma once

#include <functional>

#include "host/cli/output.h"
#include "platform/lock.h"
#include "platform/prompt.h"

namespace torvell {

// Asks on standard error and takes the answer from standard input. Where nobody sits, a notice is
// answered by OK and written down, a question is answered by No. Any thread may ask.
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

  // Called with true before a question appears and with false behind the answer, on the asking
  // thread, so that a live display can step aside; null takes it away.
  void SetQuestionHook(std::function<void(bool)> hook);

  // A question that is asked while one lives is answered by Yes: the person has said it already.
  class YesScope {
   public:
    explicit YesScope(ConsolePrompter& prompter) : prompter_(prompter) { prompter_.CountYes(1); }
    ~YesScope() { prompter_.CountYes(-1); }
    YesScope(const YesScope&) = delete;
    YesScope& operator=(const YesScope&) = delete;

   private:
    ConsolePrompter& prompter_;
  };

  // Takes a standing question away: a notice counts as read, a question is answered by No.
  void Dismiss();

  // A question stands: keys belong to it.
  bool IsAsking();

 private:
  class Standing;

  void CountYes(int change);
  // The person's line; nothing once the question was dismissed or taken back, or the terminal is
  // gone.
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
