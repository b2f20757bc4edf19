#include "platform/event.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "platform/event_state.h"
#include "platform/fatal.h"
#include "platform/lost_signal.h"
#include "platform/real_base.h"
#include "platform/virtual_base.h"

namespace platform {
namespace {

int WaitUnderBase(std::span<EventState* const> events, const Deadline& deadline) {
  // Nearly every wait is for a few events; their nodes are on the stack.
  constexpr size_t kFew = 8;
  std::array<detail::WaitNode, kFew> few;
  std::vector<detail::WaitNode> many;
  std::span<detail::WaitNode> nodes(few.data(), std::min(events.size(), kFew));
  if (events.size() > kFew) {
    many.resize(events.size());
    nodes = many;
  }
  if (detail::VirtualBase* base = detail::VirtualBase::Current()) {
    return base->WaitForAny(events, nodes, deadline);
  }
  return detail::WaitForAnyReal(events, nodes, deadline);
}

}  // namespace

Event::Event(const char* name, Mode mode) : state_(std::make_unique<EventState>(name, mode)) {}

Event::~Event() {
  detail::VirtualBase* base = detail::VirtualBase::Current();
  if (base != nullptr) base->Clear(*state_);
  const bool waitedFor =
      base != nullptr ? state_->first != nullptr : detail::IsWaitedForReal(*state_);
  if (!waitedFor) return;
  detail::Fatal(std::string("the event \"") + state_->name + "\" ends while thread \"" +
                state_->first->wait->thread->threadName + "\" waits for it");
}

void Event::Set() {
  if (detail::VirtualBase* base = detail::VirtualBase::Current()) {
    base->Set(*state_);
  } else {
    detail::SetReal(*state_);
  }
}

void Event::Reset() {
  if (detail::VirtualBase* base = detail::VirtualBase::Current()) {
    base->Reset(*state_);
  } else {
    detail::ResetReal(*state_);
  }
}

bool Event::Wait(const Deadline& deadline) {
  EventState* const event = state_.get();
  return WaitUnderBase({&event, 1}, deadline) == 0;
}

bool Event::TryWait() {
  if (detail::VirtualBase* base = detail::VirtualBase::Current()) return base->TryWait(*state_);
  return detail::TryWaitReal(*state_);
}

bool detail::WatchesForLostSignals() {
  const VirtualBase* base = VirtualBase::Current();
  return base != nullptr && base->watchesForLostSignals();
}

void detail::SuspectLostSignal(Event& event) { VirtualBase::Current()->Suspect(*event.state_); }

int WaitForAny(std::span<Event* const> events, const Deadline& deadline) {
  constexpr size_t kFew = 8;
  std::array<EventState*, kFew> few{};
  std::vector<EventState*> many;
  std::span<EventState*> states(few.data(), std::min(events.size(), kFew));
  if (events.size() > kFew) {
    many.resize(events.size());
    states = many;
  }
  for (size_t i = 0; i < events.size(); ++i) states[i] = events[i]->state_.get();
  return WaitUnderBase(states, deadline);
}

void Sleep(Milliseconds duration) {
  const Deadline end = Deadline::After(duration);
  if (detail::VirtualBase* base = detail::VirtualBase::Current()) {
    base->SleepUntil(end);
  } else {
    detail::SleepUntilReal(end);
  }
}

}  // namespace platform
