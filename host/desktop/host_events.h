// Turns what the host reports on other threads into signals of the window's thread.
#pragma once

#include <QObject>
#include <QPointer>
#include <functional>

#include "host/core/host.h"
#include "host/desktop/gui_thread.h"

namespace torvell {

// Made and destroyed on the window's thread. No signal is emitted after its end, not even for
// events that were posted before.
class HostEvents : public QObject,
                   private ErrorListener,
                   private SampleStoredListener,
                   private SelectionListener,
                   private rvx::ViscometerArrayMonitor {
  Q_OBJECT

 public:
  // Both outlive this object.
  HostEvents(Host& host, GuiThread& gui);
  ~HostEvents() override;

 Q_SIGNALS:
  void Reported(const torvell::ErrorReport& report);
  // A sample is in the archive.
  void Stored();
  // Settings, constants or the tray of an instrument have changed.
  void InstrumentChanged();
  // This instrument of the list is to be shown; a screen may have asked for it.
  void SelectionWanted(int32_t index);

 private:
  // Makes the window's thread emit a signal. Any thread.
  void Post(std::function<void(HostEvents&)> emit);

  // ErrorListener, SampleStoredListener, SelectionListener, rvx::ViscometerArrayMonitor: called on
  // any thread.
  void ErrorReported(const ErrorReport& report) override;
  void SampleStored(const rvx::Sample& sample, const SampleOrigin& origin) override;
  void ErrorReported(rvx::ActionErrorRecord record) override;
  void InstrumentsChanged(int32_t index) override;
  void InstrumentSelected(int32_t index) override;

  Host& host_;
  GuiThread& gui_;
  // Constant after construction; other threads only copy it.
  const QPointer<HostEvents> self_{this};
  int32_t monitor_ = 0;  // constant after construction
};

}  // namespace torvell
