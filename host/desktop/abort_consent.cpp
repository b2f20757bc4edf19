#include "host/desktop/abort_consent.h"

namespace torvell {
namespace {

thread_local bool consenting = false;

}  // namespace

AbortConsent::~AbortConsent() {
  if (behind_ != nullptr) platform::SetPrompter(behind_);
}

void AbortConsent::StandInFront() {
  if (behind_ != nullptr || !platform::HasPrompter()) return;
  behind_ = &platform::GetPrompter();
  platform::SetPrompter(this);
}

AbortConsent::Scope::Scope() { consenting = true; }

AbortConsent::Scope::~Scope() { consenting = false; }

platform::MessageAnswer AbortConsent::ShowMessage(const std::string& text,
                                                  platform::MessageButtons buttons,
                                                  platform::MessageIcon icon) {
  if (consenting && buttons == platform::MessageButtons::YesNo) return platform::MessageAnswer::Yes;
  return behind_->ShowMessage(text, buttons, icon);
}

std::optional<platform::MessageAnswer> AbortConsent::ShowMessageUntil(
    const std::string& text, platform::MessageButtons buttons, platform::MessageIcon icon,
    std::span<platform::Event* const> withdrawal) {
  if (consenting && buttons == platform::MessageButtons::YesNo) return platform::MessageAnswer::Yes;
  return behind_->ShowMessageUntil(text, buttons, icon, withdrawal);
}

std::optional<int> AbortConsent::Choose(const std::string& title,
                                        const std::vector<std::string>& options, int initial) {
  return behind_->Choose(title, options, initial);
}

void AbortConsent::Beep() { behind_->Beep(); }

}  // namespace torvell
