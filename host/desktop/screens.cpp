#include "host/desktop/screens.h"

#include <algorithm>
#include <span>
#include <utility>

#include "boundary/action.h"
#include "boundary/action_keys.h"
#include "host/desktop/instrument_state.h"

namespace torvell {
namespace {

using ActionMaker = std::function<rvx::Action*()>;

// Returns null if the module does not offer the action.
std::unique_ptr<rvx::Action> TryMake(const ActionMaker& make) {
  try {
    return std::unique_ptr<rvx::Action>(make());
  } catch (rvx::InvalidException* refused) {
    delete refused;
    return nullptr;
  }
}

std::unique_ptr<rvx::Action> Make(rvx::ViscometerInstrument& instrument, ScreenKind kind,
                                  int index) {
  return TryMake([&] {
    return kind == ScreenKind::Configuration ? instrument.CreateConfigAction(index)
                                             : instrument.CreateServiceAction(index);
  });
}

// Returns why a user of this level can't choose the screen; empty if allowed. The module itself
// refuses a configuration screen only for the level, a service screen only for the model.
QString RefusalOf(ScreenKind kind, bool made, int32_t level) {
  if (kind == ScreenKind::Service && level < kLevelOperator) {
    return LevelNeededText(kLevelOperator, level);
  }
  if (made) return {};
  return kind == ScreenKind::Configuration
             ? LevelNeededText(kLevelService, level)
             : QStringLiteral("This model of instrument has nothing to do here.");
}

// Returns nothing if the module has nothing to show.
std::optional<ScreenOffer> OfferOf(rvx::ViscometerInstrument& instrument, ScreenKind kind,
                                   int index, int32_t place, int32_t level) {
  std::unique_ptr<rvx::Action> action = Make(instrument, kind, index);
  const bool made = action != nullptr;
  if (!made) action = TryMake([&] { return instrument.CreateActionByIndex(place); });
  auto* screen = dynamic_cast<rvx::ScreenAction*>(action.get());
  if (screen == nullptr || screen->GetUse() == rvx::ScreenAction::Use::None) return std::nullopt;
  ScreenOffer offer;
  offer.kind = kind;
  offer.index = index;
  offer.label = QString::fromStdString(action->GetLabel());
  offer.refusal = RefusalOf(kind, made, level);
  offer.edits = screen->GetUse() == rvx::ScreenAction::Use::Edit;
  return offer;
}

}  // namespace

// The watcher may be called until the action has been stopped, so one object owns both.
class Screens::Watcher : public rvx::ActionWatcher {
 public:
  Watcher(GuiThread& gui, QPointer<Screens> owner) : gui_(gui), owner_(std::move(owner)) {}
  void SetOpened(std::weak_ptr<Opened> opened) { opened_ = std::move(opened); }

  void ActionStarted(std::string) override {}
  void ActionStatus(std::string, std::string) override {}
  void ActionFinished(std::string) override {
    gui_.Post([owner = owner_, opened = opened_] {
      const std::shared_ptr<Opened> held = opened.lock();
      if (!owner.isNull() && held) owner->Ended(held);
    });
  }

 private:
  GuiThread& gui_;
  const QPointer<Screens> owner_;
  std::weak_ptr<Opened> opened_;
};

struct Screens::Opened {
  InstrumentEntry entry;
  ScreenOffer offer;
  // Window's thread only.
  bool started = false;  // the action was made and started
  bool edited = false;   // its Edit is on the stack of the window's thread
  std::unique_ptr<Watcher> watcher;
  // Declared after the watcher: the action may call the watcher until it is destroyed.
  std::unique_ptr<rvx::Action> action;
};

Screens::Screens(GuiThread& gui) : gui_(gui), worker_(gui, "window screens") {}

Screens::~Screens() = default;

void Screens::Ask(const InstrumentEntry& entry, int32_t level) {
  if (asking_) {
    askAgain_ = Wish{entry, level};
    return;
  }
  asking_ = true;
  struct Answer {
    std::vector<ScreenOffer> offers;
    std::vector<std::pair<int, QString>> kinds;
  };
  auto answer = std::make_shared<Answer>();
  const auto over = [this] {
    asking_ = false;
    if (const auto again = std::exchange(askAgain_, std::nullopt)) Ask(again->entry, again->level);
  };
  worker_.Do(
      this,
      [entry, level, answer] {
        rvx::ViscometerInstrument& instrument = *entry.instrument;
        const auto offer = [&](ScreenKind kind, std::span<const rvx::ActionIndex> places) {
          for (size_t i = 0; i < places.size(); ++i) {
            auto found = OfferOf(instrument, kind, static_cast<int>(i), places[i], level);
            if (found) answer->offers.push_back(std::move(*found));
          }
        };
        offer(ScreenKind::Configuration, rvx::kConfigActions);
        offer(ScreenKind::Service, rvx::kServiceActions);
        for (const int kind : {rvx::kFirstSampleKind, rvx::kSecondSampleKind}) {
          const auto action = TryMake([&] { return instrument.CreateSampleAction(kind); });
          if (action) {
            answer->kinds.emplace_back(kind, QString::fromStdString(action->GetLabel()));
          }
        }
      },
      [this, answer, over] {
        // Rebuilding a menu closes it while the user reads it, and the module reports changes
        // often.
        const bool changed = offers_ != answer->offers || sampleKinds_ != answer->kinds;
        offers_ = std::move(answer->offers);
        sampleKinds_ = std::move(answer->kinds);
        over();
        if (changed) Q_EMIT Offered();
      },
      [this, over](const QString& text) {
        over();
        Q_EMIT Failed(text);
      });
}

void Screens::Open(const InstrumentEntry& entry, const ScreenOffer& offer) {
  auto opened = std::make_shared<Opened>();
  opened->entry = entry;
  opened->offer = offer;
  opened->watcher = std::make_unique<Watcher>(gui_, this);
  opened->watcher->SetOpened(opened);
  open_.push_back(opened);
  worker_.Do(
      this,
      [opened] {
        opened->action = Make(*opened->entry.instrument, opened->offer.kind, opened->offer.index);
        if (!opened->action) {
          rvx::ActionErrorRecord record;
          record.message =
              "\"" + opened->offer.label.toStdString() +
              "\" is not offered for this instrument or this user. Nothing was opened.";
          throw new rvx::InvalidException(record);
        }
        if (!opened->offer.edits) opened->action->Start(opened->watcher.get(), "0,0");
      },
      [this, opened] {
        // CloseAll may have been called in the meantime.
        if (std::find(open_.begin(), open_.end(), opened) == open_.end()) return;
        opened->started = true;
        if (opened->offer.edits) Edit(opened);
      },
      [this, opened](const QString& text) {
        std::erase(open_, opened);
        Q_EMIT Failed(text);
      });
}

void Screens::Edit(const std::shared_ptr<Opened>& opened) {
  const QPointer<Screens> self = this;
  QString failure;
  opened->edited = true;
  try {
    opened->action->Edit();
  } catch (...) {
    failure = DescribeRaised();
  }
  opened->edited = false;
  // Edit may have shown dialogs, and the window may have been closed in the meantime.
  if (self.isNull()) return;
  if (!failure.isEmpty()) Q_EMIT Failed(failure);
  Ended(opened);
}

void Screens::Ended(const std::shared_ptr<Opened>& opened) {
  if (std::erase(open_, opened) == 0) return;
  // Destroying the action may wait for its thread, which may need this thread.
  worker_.Do(this, [held = opened]() mutable { held->action.reset(); });
}

std::vector<CloseRefusal> Screens::Refusals() const {
  std::vector<CloseRefusal> refusals;
  for (const auto& opened : open_) {
    if (!opened->started) continue;
    auto* screen = dynamic_cast<rvx::ScreenAction*>(opened->action.get());
    const std::string reason = screen != nullptr ? screen->GetCloseRefusal() : std::string();
    if (reason.empty()) continue;
    refusals.push_back({opened->offer.label, QString::fromStdString(reason)});
  }
  return refusals;
}

void Screens::CloseAll() {
  // An action stays while its Edit shows a dialog: Edit lets go of it after the dialog, which the
  // end of the event loop closes.
  const auto kept = std::stable_partition(open_.begin(), open_.end(),
                                          [](const auto& opened) { return opened->edited; });
  std::vector<std::shared_ptr<Opened>> closing(kept, open_.end());
  open_.erase(kept, open_.end());
  // Done on the worker, because its pending jobs may still be starting one of the screens.
  worker_.Do(this, [closing = std::move(closing)] {
    for (const auto& opened : closing) {
      if (opened->action) opened->action->Stop();
      opened->action.reset();
    }
  });
}

}  // namespace torvell
