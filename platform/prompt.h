// Questions and notices to the person in front of the program. What answers them is set by the
// program: a window, a terminal, or fixed answers where nobody sits.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace platform {

enum class MessageButtons { Ok, YesNo };
enum class MessageAnswer { Ok, Yes, No };
enum class MessageIcon { Information, Question, Warning };

// Who answers. Calls come from any thread and may block it until the person has answered.
class Prompter {
 public:
  virtual ~Prompter() = default;
  virtual MessageAnswer ShowMessage(const std::string& text, MessageButtons buttons,
                                    MessageIcon icon) = 0;
  // A choice among `options`, `initial` the one set at the start; nothing if cancelled.
  virtual std::optional<int> Choose(const std::string& title,
                                    const std::vector<std::string>& options, int initial) = 0;
  virtual void Beep() = 0;
};

// The prompter in force. Without one set: messages go to the log, a question is answered with Ok or
// No, a choice is cancelled.
Prompter& GetPrompter();

// Whether one is set.
bool HasPrompter();

// Sets it; null takes it away again. The caller keeps it alive while it is set.
void SetPrompter(Prompter* prompter);

}  // namespace platform
