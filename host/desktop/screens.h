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

// One entry of a menu: the module's label, in the module's order. What the module has no screen for
// is no entry.
struct ScreenOffer {
  ScreenKind kind = ScreenKind::Configuration;
  int index = 0;
  QString label;
  QString refusal;     // why it can't be chosen now; empty if it can
  bool edits = false;  // it opens no screen: the action's Edit does what it is for

  bool operator==(const ScreenOffer& other) const = default;
};

// An open screen that does not want to close, and why.
struct CloseRefusal {
  QString label;
  QString reason;
};

// Asks the module what it offers, and opens it. The window's thread.
class Screens : public QObject {
  Q_OBJECT

 public:
  Screens(GuiThread& gui, Worker& worker);
  ~Screens() override;

  // Looks again, for this instrument and a user of this level; Offered says if anything is new. Of
  // several wishes at once only the last is looked for.
  void Ask(const InstrumentEntry& entry, int32_t level);
  const std::vector<ScreenOffer>& offers() const { return offers_; }
  // The sample actions that the module offers: kind and label.
  const std::vector<std::pair<int, QString>>& sampleKinds() const { return sampleKinds_; }

  // Opens the screen, or raises it if it is open; or runs the action's Edit.
  void Open(const InstrumentEntry& entry, const ScreenOffer& offer);
  // Which of the open screens do not want to close.
  std::vector<CloseRefusal> Refusals() const;
  // Ends what is open whatever it says, on the worker, after everything that it was given before.
  void CloseAll();

 Q_SIGNALS:
  void Offered();
  void Failed(const QString& text);

 private:
  struct Opened;
  class Watcher;

  void Edit(const std::shared_ptr<Opened>& opened);
  void Ended(const std::shared_ptr<Opened>& opened);

  GuiThread& gui_;
  Worker& worker_;
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
