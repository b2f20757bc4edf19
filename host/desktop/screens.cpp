#include "host/desktop/screens.h"

#include <algorithm>

#include "instrument/host/action.h"

namespace torvell {
namespace {

// Where the actions of the two menus stand in the module's table of all actions: the label of one
// that is refused has to come from there.
constexpr int32_t kConfigurationTable[] = {16, 6, 7, 8, 9, 10, 13, 14};
constexpr int32_t kServiceTable[] = {3, 15, 4, 17, 5};
constexpr int kSampleKinds[] = {1, 2};

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
  QString label;
  std::string classKey;
  std::string place;  // of the instrument
  bool hasFrame = false;
  std::unique_ptr<Watcher> watcher;
  // Goes before the watcher that it may still call.
  std::unique_ptr<rvx::Action> action;
};

Screens::Screens(GuiThread& gui, Worker& worker) : gui_(gui), worker_(worker) {
  gui_.SetFrameHook([this] {
    if (const std::shared_ptr<Opened> opened = starting_.lock()) opened->hasFrame = true;
  });
}

Screens::~Screens() { gui_.SetFrameHook(nullptr); }

void Screens::Ask(const InstrumentEntry& entry) {
  struct Answer {
    std::vector<ScreenOffer> offers;
    std::vector<std::pair<int, QString>> kinds;
  };
  auto answer = std::make_shared<Answer>();
  worker_.Do(
      this,
      [entry, answer] {
        rvx::ViscometerInstrument& instrument = *entry.instrument;
        int index = 0;
        for (const int32_t place : kConfigurationTable) {
          answer->offers.push_back(OfferOf(instrument, ScreenKind::Configuration, index++, place));
        }
        index = 0;
        for (const int32_t place : kServiceTable) {
          answer->offers.push_back(OfferOf(instrument, ScreenKind::Service, index++, place));
        }
        for (const int kind : kSampleKinds) {
          const auto action = TryMake([&] { return instrument.CreateSampleAction(kind); });
          if (action) {
            answer->kinds.emplace_back(kind, QString::fromStdString(action->GetLabel()));
          }
        }
      },
      [this, answer] {
        offers_ = std::move(answer->offers);
        sampleKinds_ = std::move(answer->kinds);
        Q_EMIT Offered();
      },
      [this](const QString& text) { Q_EMIT Failed(text); });
}

void Screens::Open(const InstrumentEntry& entry, const ScreenOffer& offer) {
  auto opened = std::make_shared<Opened>();
  opened->label = offer.label;
  opened->place = entry.identity.archiveKey;
  opened->watcher = std::make_unique<Watcher>(gui_, this);
  opened->watcher->SetOpened(opened);
  starting_ = opened;
  open_.push_back(opened);
  worker_.Do(
      this,
      [entry, offer, opened] {
        opened->action = Make(*entry.instrument, offer.kind, offer.index);
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
      [this, opened](const QString& text) {
        open_.erase(std::remove(open_.begin(), open_.end(), opened), open_.end());
        Q_EMIT Failed(text);
      });
}

void Screens::Ended(const std::shared_ptr<Opened>& opened) {
  const auto found = std::find(open_.begin(), open_.end(), opened);
  if (found == open_.end()) return;
  open_.erase(found);
  // A second start of an open screen only raises it, and makes no frame either.
  const bool isRaise = std::any_of(open_.begin(), open_.end(), [&](const auto& other) {
    return other->hasFrame && other->classKey == opened->classKey && other->place == opened->place;
  });
  if (!opened->hasFrame && !isRaise) {
    Q_EMIT Notice(
        QStringLiteral("\"%1\" has no screen in this version yet; the command line does it "
                       "(torvell --help).")
            .arg(opened->label));
  }
  // The action's end may wait for its thread, which may want this one.
  worker_.Do(this, [held = opened]() mutable { held->action.reset(); });
}

std::function<void()> Screens::CloseAll() {
  return [open = std::move(open_)] {
    for (const auto& opened : open) {
      if (opened->action) opened->action->Stop();
      opened->action.reset();
    }
  };
}

}  // namespace torvell
