#include "host/desktop/screens.h"

#include <algorithm>
#include <utility>

#include "boundary/action.h"
#include "boundary/action_keys.h"

namespace torvell {
namespace {

using ActionMaker = std::function<rvx::Action*()>;

// Null where the module does not offer it.
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

// `place`: in the table of all actions, from which the label of one that is refused has to come.
ScreenOffer OfferOf(rvx::ViscometerInstrument& instrument, ScreenKind kind, int index,
                    int32_t place) {
  ScreenOffer offer;
  offer.kind = kind;
  offer.index = index;
  std::unique_ptr<rvx::Action> action = Make(instrument, kind, index);
  offer.offered = action != nullptr;
  if (action == nullptr) {
    action = TryMake([&] { return instrument.CreateActionByIndex(place); });
  }
  if (action != nullptr) offer.label = QString::fromStdString(action->GetLabel());
  return offer;
}

}  // namespace

// The watcher may be called until the action has been stopped, so both live together.
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
  std::string classKey;
  bool hasFrame = false;
  std::unique_ptr<Watcher> watcher;
  // Goes before the watcher that it may still call.
  std::unique_ptr<rvx::Action> action;
};

Screens::Screens(GuiThread& gui, Worker& worker) : gui_(gui), worker_(worker) {
  gui_.SetFrameHook([this] {
    if (const std::shared_ptr<Opened> opened = starting_) {
      opened->hasFrame = true;
      Started(opened);
    }
  });
}

Screens::~Screens() { gui_.SetFrameHook(nullptr); }

void Screens::Ask(const InstrumentEntry& entry) {
  if (asking_) {
    askAgain_ = entry;
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
    if (const auto again = std::exchange(askAgain_, std::nullopt)) Ask(*again);
  };
  worker_.Do(
      this,
      [entry, answer] {
        rvx::ViscometerInstrument& instrument = *entry.instrument;
        int index = 0;
        for (const int32_t place : rvx::kConfigActions) {
          answer->offers.push_back(OfferOf(instrument, ScreenKind::Configuration, index++, place));
        }
        index = 0;
        for (const int32_t place : rvx::kServiceActions) {
          answer->offers.push_back(OfferOf(instrument, ScreenKind::Service, index++, place));
        }
        for (const int kind : {rvx::kFirstSampleKind, rvx::kSecondSampleKind}) {
          const auto action = TryMake([&] { return instrument.CreateSampleAction(kind); });
          if (action) {
            answer->kinds.emplace_back(kind, QString::fromStdString(action->GetLabel()));
          }
        }
      },
      [this, answer, over] {
        offers_ = std::move(answer->offers);
        sampleKinds_ = std::move(answer->kinds);
        over();
        Q_EMIT Offered();
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
  waiting_.push_back(opened);
  StartNext();
}

void Screens::StartNext() {
  if (starting_ != nullptr || waiting_.empty()) return;
  starting_ = waiting_.front();
  waiting_.pop_front();
  worker_.Do(
      this,
      [opened = starting_] {
        const ScreenOffer& offer = opened->offer;
        opened->action = Make(*opened->entry.instrument, offer.kind, offer.index);
        if (!opened->action) {
          rvx::ActionErrorRecord record;
          record.message =
              "\"" + offer.label.toStdString() +
              "\" is not offered for this instrument or this user. Nothing was opened.";
          throw new rvx::InvalidException(record);
        }
        opened->classKey = opened->action->GetClassName();
        opened->action->Start(opened->watcher.get(), "0,0");
      },
      {},
      [this, opened = starting_](const QString& text) {
        open_.erase(std::remove(open_.begin(), open_.end(), opened), open_.end());
        Started(opened);
        Q_EMIT Failed(text);
      });
}

void Screens::Started(const std::shared_ptr<Opened>& opened) {
  if (starting_ != opened) return;
  starting_.reset();
  StartNext();
}

void Screens::Ended(const std::shared_ptr<Opened>& opened) {
  const auto found = std::find(open_.begin(), open_.end(), opened);
  if (found == open_.end()) return;
  open_.erase(found);
  Started(opened);
  // A second start of an open screen only raises it, and makes no frame either.
  const bool isRaise = std::any_of(open_.begin(), open_.end(), [&](const auto& other) {
    return other->hasFrame && other->classKey == opened->classKey &&
           other->entry.instrument == opened->entry.instrument;
  });
  if (!opened->hasFrame && !isRaise) {
    Q_EMIT Notice(
        QStringLiteral("\"%1\" has no screen in this version yet. Nothing was opened or changed.")
            .arg(opened->offer.label));
  }
  // The action's end may wait for its thread, which may want this one.
  worker_.Do(this, [held = opened]() mutable { held->action.reset(); });
}

void Screens::CloseAll() {
  waiting_.clear();
  starting_.reset();
  // There, because what was given to the worker before may still be starting one of them.
  worker_.Do(this, [open = std::exchange(open_, {})] {
    for (const auto& opened : open) {
      if (opened->action) opened->action->Stop();
      opened->action.reset();
    }
  });
}

}  // namespace torvell
