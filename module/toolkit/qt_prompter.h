// Message boxes and questions in windows.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/event.h"
#include "platform/lock.h"
#include "platform/prompt.h"

class QDialog;

namespace rvx {

// Any thread may ask. On the GUI thread the box is modal. Any other thread waits until the user has
// answered; its box is not modal, so that the windows stay usable: a run that waits for an
// injection must not prevent a pause. The GUI thread's event loop must run.
class QtPrompter final : public platform::Prompter {
 public:
  // Answers all open questions, and all later ones, without asking: OK, No, cancelled. For the end
  // of the program, when the event loop does not run any more. GUI thread.
  void Close();

  platform::MessageAnswer ShowMessage(const std::string& text, platform::MessageButtons buttons,
                                      platform::MessageIcon icon) override;
  std::optional<platform::MessageAnswer> ShowMessageUntil(
      const std::string& text, platform::MessageButtons buttons, platform::MessageIcon icon,
      std::span<platform::Event* const> withdrawal) override;
  std::optional<int> Choose(const std::string& title, const std::vector<std::string>& options,
                            int initial) override;
  void Beep() override;

 private:
  struct Question;
  using DialogMaker = std::function<std::unique_ptr<QDialog>()>;
  // Reads the answer from the closed dialog, with its result code. GUI thread.
  using AnswerReader = std::function<void(QDialog& dialog, int result)>;

  using Withdrawal = std::span<platform::Event* const>;

  // Shows the dialog and returns when `read` has been called or the question was dropped. Returns
  // false if the question was withdrawn.
  bool Ask(const DialogMaker& make, const AnswerReader& read, Withdrawal withdrawal = {});
  // The same on the GUI thread, which handles events meanwhile, and on another thread, which waits.
  static bool AskHere(const DialogMaker& make, const AnswerReader& read, Withdrawal withdrawal);
  bool AskBeside(const DialogMaker& make, const AnswerReader& read, Withdrawal withdrawal);
  static void Show(const std::shared_ptr<Question>& question);

  platform::PlainLock lock_{"questions", platform::kLeafRank};
  std::vector<std::shared_ptr<Question>> standing_ GUARDED_BY(lock_);
  bool closed_ GUARDED_BY(lock_) = false;
};

// Beeps and shows a failure with an OK button: for failures in screens. Any thread.
void ShowFailure(const std::string& text);

}  // namespace rvx
