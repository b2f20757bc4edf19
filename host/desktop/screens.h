// The module's configuration and service screens, as the menus offer them.
#pragma once

#include <QObject>
#include <QPointer>
#include <memory>
#include <optional>
#include <vector>

#include "host/core/host.h"
#include "host/desktop/gui_thread.h"
#include "host/desktop/worker.h"

namespace torvell {

enum class ScreenKind { Configuration, Service };

// One entry of a menu, with the module's label and in the module's order. There is no entry where
// the module has no screen.
struct ScreenOffer {
  ScreenKind kind = ScreenKind::Configuration;
  int index = 0;
  QString label;
  QString refusal;     // why it can't be chosen now; empty if it can
  bool edits = false;  // opens no screen: the action's Edit does the work

  bool operator==(const ScreenOffer& other) const = default;
};

// An open screen that refuses to close, and why.
struct CloseRefusal {
  QString label;
  QString reason;
};

// Asks the module which screens it offers, and opens them. The window's thread only.
class Screens : public QObject {
  Q_OBJECT

 public:
  explicit Screens(GuiThread& gui);
  ~Screens() override;

  // Asks the module again, for this instrument and a user of this level; emits Offered if the
  // result is new. Of several calls while one is in progress, only the last is carried out.
  void Ask(const InstrumentEntry& entry, int32_t level);
  const std::vector<ScreenOffer>& offers() const { return offers_; }
  // The sample actions that the module offers: kind and label.
  const std::vector<std::pair<int, QString>>& sampleKinds() const { return sampleKinds_; }

  // Opens the screen, or brings it to the front if it is open; or runs the action's Edit.
  void Open(const InstrumentEntry& entry, const ScreenOffer& offer);
  // Returns the open screens that refuse to close.
  std::vector<CloseRefusal> Refusals() const;
  // Ends all open screens, also those that refuse. Returns at once; nothing but a screen that is
  // just being opened comes before it. An action whose Edit shows a dialog is left to its end.
  void CloseAll();
  // Ends the thread of the screens, after what CloseAll has begun. Not on the window's thread,
  // which a screen that ends may need.
  void Finish() { worker_.Finish(); }

 Q_SIGNALS:
  void Offered();
  void Failed(const QString& text);

 private:
  struct Opened;
  class Watcher;

  void Edit(const std::shared_ptr<Opened>& opened);
  void Ended(const std::shared_ptr<Opened>& opened);

  GuiThread& gui_;
  // Its own, so that a screen that moves something can be ended while an archive is being searched.
  Worker worker_;
  bool asking_ = false;
  struct Wish {
    InstrumentEntry entry;
    int32_t level = 0;
  };
  std::optional<Wish> askAgain_;
  std::vector<ScreenOffer> offers_;
  std::vector<std::pair<int, QString>> sampleKinds_;
  std::vector<std::shared_ptr<Opened>> open_;
};

}  // namespace torvell
