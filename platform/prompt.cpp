#include "platform/prompt.h"

#include <atomic>

#include "platform/log.h"

namespace platform {
namespace {

// Answers where there is no person: it confirms nothing that a person would have to confirm.
class SilentPrompter final : public Prompter {
 public:
  MessageAnswer ShowMessage(const std::string& text, MessageButtons buttons,
                            MessageIcon icon) override {
    Log(icon == MessageIcon::Warning ? LogLevel::Warning : LogLevel::Info, "message: " + text);
    return buttons == MessageButtons::YesNo ? MessageAnswer::No : MessageAnswer::Ok;
  }
  std::optional<int> Choose(const std::string& title, const std::vector<std::string>& /*options*/,
                            int /*initial*/) override {
    Log(LogLevel::Info, "choice cancelled: " + title);
    return std::nullopt;
  }
  void Beep() override {}
};

std::atomic<Prompter*> prompterInForce{nullptr};

}  // namespace

Prompter& GetPrompter() {
  // Never destroyed: threads may ask while the process ends.
  static SilentPrompter* const silent = new SilentPrompter;
  Prompter* prompter = prompterInForce.load();
  return prompter != nullptr ? *prompter : *silent;
}

bool HasPrompter() { return prompterInForce.load() != nullptr; }

void SetPrompter(Prompter* prompter) { prompterInForce.store(prompter); }

}  // namespace platform
