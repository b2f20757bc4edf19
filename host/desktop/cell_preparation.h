// Prepares a simulated instrument for a tray from the window.
#pragma once

#include <QObject>
#include <atomic>
#include <memory>

#include "host/core/instrument_list.h"
#include "host/desktop/worker.h"

namespace torvell {

// Sets the home flag and cools the cell on a separate thread: it takes minutes, during which the
// tray can be filled. The window's thread only, except Finish.
class CellPreparation : public QObject {
  Q_OBJECT

 public:
  CellPreparation(GuiThread& gui, const InstrumentEntry& entry) : gui_(gui), entry_(entry) {}

  bool IsUnderWay() const { return underWay_; }
  // Starts a preparation; no effect while one is under way.
  void Start();
  // Ends the preparation at its next step, within a second of the time base.
  void Cancel() { cancelled_ = true; }
  // Waits until the preparation and its thread have ended. Any thread except the window's; Start
  // must not be called afterwards.
  void Finish();

 Q_SIGNALS:
  // IsUnderWay has changed.
  void Changed();
  void Notice(const QString& text);
  void Failed(const QString& text);

 private:
  void End();

  GuiThread& gui_;
  const InstrumentEntry entry_;
  bool underWay_ = false;
  // Written by the window's thread, read by the preparation's thread; no other data depends on it.
  std::atomic<bool> cancelled_{false};
  std::unique_ptr<Worker> worker_;  // made by the first Start
};

}  // namespace torvell
