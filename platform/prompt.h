// Questions and notices to the person in front of the program. The program sets what answers them:
// a window, a terminal, or fixed answers where there is no person.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/event.h"

namespace platform {

enum class MessageButtons { Ok, YesNo };
enum class MessageAnswer { Ok, Yes, No };
enum class MessageIcon { Information, Question, Warning };

// Puts questions to a person. Any thread may call it, and is blocked until the person has answered.
class Prompter {
 public:
  virtual ~Prompter() = default;
  virtual MessageAnswer ShowMessage(const std::string& text, MessageButtons buttons,
                                    MessageIcon icon) = 0;
  // The same for a question that loses its sense when one of these events is set, such as the end
  // of the run that asks: then it is taken back and nothing is answered. The events are of the
  // ManualReset mode and outlive the call. A prompter that can't take a question back waits for its
  // answer.
  virtual std::optional<MessageAnswer> ShowMessageUntil(const std::string& text,
                                                        MessageButtons buttons, MessageIcon icon,
                                                        std::span<Event* const> /*withdrawal*/) {
    return ShowMessage(text, buttons, icon);
  }
  // A choice among `options`, with `initial` chosen at the start. Returns its index, or nothing if
  // the person cancels.
  virtual std::optional<int> Choose(const std::string& title,
                                    const std::vector<std::string>& options, int initial) = 0;
  virtual void Beep() = 0;
};

// The prompter in force. Without one set: messages go to the log, a question is answered with Ok or
// No, a choice is cancelled.
Prompter& GetPrompter();

// Whether one is set.
bool HasPrompter();

// Sets the prompter; null removes it. The caller keeps it alive while it is set.
void SetPrompter(Prompter* prompter);

}  // namespace platform
