// The instruments that the module found, and the listeners for their changes.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "boundary/host.h"
#include "boundary/instrument_scripting.h"
#include "host/core/error_store.h"
#include "host/core/listener_list.h"
#include "host/core/lock_ranks.h"
#include "host/core/ports.h"

namespace torvell {

// An instrument as the host's programs use it. The pointers live as long as the host.
struct InstrumentEntry {
  rvx::ViscometerInstrument* instrument = nullptr;
  rvx::InstrumentScripting* scripting = nullptr;  // null if the module has none
  // The identity at discovery; without scripting only portName ("") and archiveKey ("#0") are
  // filled.
  rvx::InstrumentIdentity identity;

  // "COM1 RVX-D TX"
  std::string Title() const { return identity.portName + " " + identity.model; }
};

// Is told which instrument is to be shown.
class SelectionListener {
 public:
  virtual ~SelectionListener() = default;
  // `index` is the place in the list. Called on the thread that selects, which may be any; must not
  // wait for the user-interface thread.
  virtual void InstrumentSelected(int32_t index) = 0;
};

// The list of instruments. Any thread.
class InstrumentList : public rvx::InstrumentManager, public LineListener {
 public:
  explicit InstrumentList(ErrorStore& errors);
  ~InstrumentList() override;

  std::vector<InstrumentEntry> Entries();

  // Takes ownership of the instruments: DeleteAll deletes them.
  void Adopt(const rvx::ArrayOfInstruments& instruments);
  // Empties the list and deletes the instruments, first to last. Not on the user-interface thread:
  // the end of an instrument may need that thread.
  void DeleteAll();

  // rvx::InstrumentManager
  int32_t RegisterMonitor(rvx::ViscometerArrayMonitor* monitor) override;
  rvx::ViscometerInstrument* GetInstrument(int32_t index) override;
  void ReleaseFrame(int32_t index) override;
  void ReportError(rvx::ActionException* error) override;
  // Once it returns the monitor is not called any more.
  void UnregisterMonitor(int32_t handle) override;
  void NotifyInstrumentChanged() override;
  int32_t SelectInstrument(int32_t index, int32_t select) override;
  int32_t SelectedInstrument();
  void AddSelectionListener(SelectionListener* listener) { selections_.Add(listener); }
  // Once it returns the listener is not called any more.
  void RemoveSelectionListener(SelectionListener* listener) { selections_.Remove(listener); }

  // LineListener: reports the change, and pauses a tray that runs on this port at once. A paused
  // tray does not go on by itself when the line is back.
  void LineBroken(const std::string& port, const std::string& reason) override;
  void LineRestored(const std::string& port) override;

 private:
  ErrorStore& errors_;
  ListenerList<rvx::ViscometerArrayMonitor> monitors_;
  ListenerList<SelectionListener> selections_;
  platform::PlainLock lock_{"instrument list", kInstrumentListLockRank};
  std::vector<InstrumentEntry> entries_ GUARDED_BY(lock_);
  std::map<int32_t, rvx::ViscometerArrayMonitor*> handles_ GUARDED_BY(lock_);
  int32_t nextHandle_ GUARDED_BY(lock_) = 1;
  int32_t selected_ GUARDED_BY(lock_) = 0;
};

}  // namespace torvell
