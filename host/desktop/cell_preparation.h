// Making a simulated instrument ready for a tray, from the window.
#pragma once

#include <QObject>
#include <atomic>
#include <memory>

#include "host/core/instrument_list.h"
#include "host/desktop/worker.h"

namespace torvell {

// Sets the home flag and cools the cell. It takes minutes, during which the tray can be filled, so
// it has a thread of its own. The window's thread only, Finish apart.
class CellPreparation : public QObject {
  Q_OBJECT

 public:
  CellPreparation(GuiThread& gui, const InstrumentEntry& entry) : gui_(gui), entry_(entry) {}

  bool IsUnderWay() const { return underWay_; }
  // Does nothing while one is on its way.
  void Start();
  // Lets it end at its next step, within a second of the base's time.
  void Cancel() { cancelled_ = true; }
  // Waits for the end of what is on its way and ends the thread. Any thread but the window's, which
  // starts nothing afterwards.
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
  // Set by the window's thread, looked at by the preparation's; nothing else goes with it.
  std::atomic<bool> cancelled_{false};
  std::unique_ptr<Worker> worker_;  // made with the first preparation
};

}  // namespace torvell
