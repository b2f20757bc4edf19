// One run of an instrument's tray, watched for the journal and for a listener that shows it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "boundary/tray.h"
#include "host/core/error_store.h"
#include "host/core/instrument_list.h"
#include "host/core/listener_list.h"
#include "host/core/sample_store.h"
#include "platform/event.h"

namespace torvell {

class Host;

// Is told of a run. All calls come from the module's threads, which may hold locks of the module:
// they may call the instrument's tray operations, but must not wait, and must not destroy the
// instrument or the runner. Positions count from 0.
class TrayListener {
 public:
  virtual ~TrayListener() = default;
  virtual void TrayStarted() {}
  virtual void SampleStarted(int32_t /*position*/) {}
  virtual void SampleStatus(int32_t /*position*/, const std::string& /*text*/) {}
  // A result of this run is in the archive.
  virtual void SampleStored(int32_t /*position*/, const StoredSample& /*sample*/) {}
  // The position is done, with or without a failure.
  virtual void SampleFinished(int32_t /*position*/) {}
  virtual void PauseChanged(bool /*paused*/) {}
  // A failure that this instrument reported.
  virtual void ErrorReported(const ErrorReport& /*report*/) {}
  // The last call of a run, whether it came to its end or was aborted.
  virtual void TrayFinished() {}
};

// Starts the tray of an instrument, watches it, and records the run in the journal until it ends.
// Made by Host::StartTray. Any thread.
class TrayRunner : private rvx::TrayWatcher, private SampleStoredListener, private ErrorListener {
 public:
  // Waits for the end of the run.
  ~TrayRunner() override;

  const InstrumentEntry& entry() const { return entry_; }
  rvx::ViscometerInstrument& instrument() const { return *entry_.instrument; }
  // Set and never reset, once the run is over and the listener's TrayFinished has returned.
  platform::Event& finished() { return *finished_; }
  bool HasFinished() const;

  void PauseNow() { instrument().PauseTray(0, 1); }
  void PauseAfterSample() { instrument().PauseTray(0, 0); }
  void Resume() { instrument().ResumeTray(0); }
  // Asks the user (platform/prompt.h) and aborts unless the answer is No. Returns true if it was
  // aborted.
  bool Abort() { return instrument().QueryAbortTray() != 0; }

 private:
  friend class Host;
  TrayRunner(Host& host, const InstrumentEntry& entry, TrayListener* listener);
  void Start();
  void StoreTray();

  // rvx::TrayWatcher
  void TrayStarted(int32_t tray) override;
  void TrayFinished(int32_t tray) override;
  void TrayPauseChanged(int32_t tray, int32_t paused) override;
  void SampleStarted(int32_t tray, int32_t position) override;
  void SampleStatus(int32_t tray, int32_t position, std::string text) override;
  void SampleFinished(int32_t tray, int32_t position) override;
  // SampleStoredListener, ErrorListener
  void SampleStored(const rvx::Sample& sample, const SampleOrigin& origin) override;
  void ErrorReported(const ErrorReport& report) override;

  Host& host_;
  const InstrumentEntry entry_;
  TrayListener* const listener_;  // may be null
  int64_t run_ = 0;               // constant once Start has begun the run
  // Shared with the call that sets it, which may still be in progress when the runner is destroyed.
  std::shared_ptr<platform::Event> finished_;
  mutable platform::PlainLock lock_{"tray runner", kTrayRunnerLockRank};
  bool over_ GUARDED_BY(lock_) = false;
};

}  // namespace torvell
