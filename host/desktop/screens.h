// The module's configuration and service screens, as the menus offer them.
#pragma once

#include <QObject>
#include <QPointer>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "host/core/host.h"
#include "host/desktop/gui_thread.h"
#include "host/desktop/worker.h"

namespace torvell {

enum class ScreenKind { Configuration, Service };

// One entry of a menu: the module's label, in the module's order, and whether it is offered now.
struct ScreenOffer {
  ScreenKind kind = ScreenKind::Configuration;
  int index = 0;
  QString label;
  bool offered = false;
};

// Asks the module what it offers, and opens it. The window's thread.
class Screens : public QObject {
  Q_OBJECT

 public:
  Screens(GuiThread& gui, Worker& worker);
  ~Screens() override;

  // Looks again, for this instrument and the user of the moment; Offered says when it is done. Of
  // several wishes at once only the last is looked for.
  void Ask(const InstrumentEntry& entry);
  const std::vector<ScreenOffer>& offers() const { return offers_; }
  // The sample actions that the module offers: kind and label.
  const std::vector<std::pair<int, QString>>& sampleKinds() const { return sampleKinds_; }

  void Open(const InstrumentEntry& entry, const ScreenOffer& offer);
  // Gives up what is open, and has the worker close it behind everything that it was given before.
  void CloseAll();

 Q_SIGNALS:
  void Offered();
  void Failed(const QString& text);
  void Notice(const QString& text);

 private:
  struct Opened;
  class Watcher;

  // Starts the next one that waits, if none is on its way.
  void StartNext();
  // This one has its frame, or will never have one.
  void Started(const std::shared_ptr<Opened>& opened);
  void Ended(const std::shared_ptr<Opened>& opened);

  GuiThread& gui_;
  Worker& worker_;
  bool asking_ = false;
  std::optional<InstrumentEntry> askAgain_;
  std::vector<ScreenOffer> offers_;
  std::vector<std::pair<int, QString>> sampleKinds_;
  std::vector<std::shared_ptr<Opened>> open_;
  // The one that a new frame belongs to, so they are started one at a time.
  std::shared_ptr<Opened> starting_;
  std::deque<std::shared_ptr<Opened>> waiting_;
};

}  // namespace torvell
