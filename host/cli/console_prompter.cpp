#include "host/cli/console_prompter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

#include "host/cli/terminal.h"
#include "platform/event.h"
#include "platform/text.h"

namespace torvell {

namespace {

// How long a key is waited for before a withdrawal is checked again.
constexpr int kKeyPollMilliseconds = 100;

bool IsTakenBack(std::span<platform::Event* const> withdrawal) {
  return std::any_of(withdrawal.begin(), withdrawal.end(),
                     [](platform::Event* event) { return event->TryWait(); });
}

void Write(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

}  // namespace

// An open question: the display steps aside for it.
class ConsolePrompter::Standing {
 public:
  explicit Standing(ConsolePrompter& prompter) : prompter_(prompter) {
    {
      const platform::PlainGuard guard(prompter_.lock_);
      ++prompter_.asking_;
      generation_ = prompter_.generation_;
      hook_ = prompter_.hook_;
    }
    if (hook_) hook_(true);
  }
  ~Standing() {
    {
      const platform::PlainGuard guard(prompter_.lock_);
      --prompter_.asking_;
    }
    if (hook_) hook_(false);
  }
  Standing(const Standing&) = delete;
  Standing& operator=(const Standing&) = delete;

  int generation() const { return generation_; }

 private:
  ConsolePrompter& prompter_;
  std::function<void(bool)> hook_;
  int generation_ = 0;
};

ConsolePrompter::ConsolePrompter(Output& output)
    : output_(output), lock_("console prompter", platform::kLeafRank) {}

platform::MessageAnswer ConsolePrompter::ShowMessage(const std::string& text,
                                                     platform::MessageButtons buttons,
                                                     platform::MessageIcon icon) {
  return *ShowMessageUntil(text, buttons, icon, {});
}

std::optional<platform::MessageAnswer> ConsolePrompter::ShowMessageUntil(
    const std::string& text, platform::MessageButtons buttons, platform::MessageIcon,
    std::span<platform::Event* const> withdrawal) {
  const bool question = buttons == platform::MessageButtons::YesNo;
  {
    const platform::PlainGuard guard(lock_);
    if (question && yes_ > 0) return platform::MessageAnswer::Yes;
  }
  const auto otherwise = question ? platform::MessageAnswer::No : platform::MessageAnswer::Ok;
  if (!SomebodyIsThere()) {
    output_.Notice(fmt::format("{}\n(no terminal: answered {})", text, question ? "No" : "OK"));
    return otherwise;
  }
  const Standing standing(*this);
  for (;;) {
    Write(text + (question ? " [y/n] " : "\n[Enter for OK] "));
    const std::optional<std::string> answer = ReadAnswer(standing.generation(), withdrawal);
    if (IsTakenBack(withdrawal)) {
      Write("\n");
      return std::nullopt;
    }
    if (!question || !answer) return otherwise;
    const std::string word = platform::Trim(*answer);
    if (platform::CompareNoCase(word, "y") == 0 || platform::CompareNoCase(word, "yes") == 0) {
      return platform::MessageAnswer::Yes;
    }
    if (platform::CompareNoCase(word, "n") == 0 || platform::CompareNoCase(word, "no") == 0) {
      return platform::MessageAnswer::No;
    }
  }
}

std::optional<int> ConsolePrompter::Choose(const std::string& title,
                                           const std::vector<std::string>& options, int initial) {
  if (!SomebodyIsThere()) return std::nullopt;
  const Standing standing(*this);
  for (;;) {
    std::string text = title + "\n";
    for (size_t i = 0; i < options.size(); ++i) text += fmt::format("  {} {}\n", i + 1, options[i]);
    Write(text + fmt::format("[1 to {}, Enter for {}, q to cancel] ", options.size(), initial + 1));
    const std::optional<std::string> answer = ReadAnswer(standing.generation());
    if (!answer || platform::Trim(*answer) == "q") return std::nullopt;
    if (platform::Trim(*answer).empty()) return initial;
    const std::optional<int> number = platform::ParseInt(*answer);
    if (number && *number >= 1 && *number <= static_cast<int>(options.size())) return *number - 1;
  }
}

void ConsolePrompter::Beep() {
  if (SomebodyIsThere()) Write("\a");
}

void ConsolePrompter::SetQuestionHook(std::function<void(bool)> hook) {
  const platform::PlainGuard guard(lock_);
  hook_ = std::move(hook);
}

void ConsolePrompter::Dismiss() {
  const platform::PlainGuard guard(lock_);
  ++generation_;
}

bool ConsolePrompter::IsAsking() {
  const platform::PlainGuard guard(lock_);
  return asking_ > 0;
}

void ConsolePrompter::CountYes(int change) {
  const platform::PlainGuard guard(lock_);
  yes_ += change;
}

int ConsolePrompter::Generation() {
  const platform::PlainGuard guard(lock_);
  return generation_;
}

std::optional<std::string> ConsolePrompter::ReadAnswer(
    int generation, std::span<platform::Event* const> withdrawal) {
  // Reads single keys in short steps, so that Ctrl+C can withdraw the question.
  std::string line;
  while (generation == Generation() && !IsTakenBack(withdrawal)) {
    const std::optional<char> key = WaitForKey(kKeyPollMilliseconds);
    if (!key) {
      if (!SomebodyIsThere()) return std::nullopt;
      platform::Sleep(platform::Milliseconds(1));
    } else if (*key == '\n' || *key == '\r') {
      return line;
    } else {
      line += *key;
    }
  }
  return std::nullopt;
}

}  // namespace torvell
