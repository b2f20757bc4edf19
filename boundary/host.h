// The host library as the module sees it. Everything is reached by name: the module's functions of
// the same names load the library and pass the call on; host code includes this for the types.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "boundary/action.h"
#include "boundary/exceptions.h"
#include "boundary/sample.h"
#include "boundary/viscometer_instrument.h"

namespace rvx {

// Is given the bytes that a port receives; the module implements it.
class PortWatcher {
 public:
  // On the port's thread, one call at a time, with no lock of the host held. `bytes` is valid
  // during the call only, and may end anywhere in a frame. May write to the port; must not wait for
  // it.
  virtual void Receive(std::span<const uint8_t> bytes) = 0;
  virtual ~PortWatcher() = default;
};

// An open port, owned by the port manager: valid until the last watcher was closed. Any thread.
class Port {
 public:
  // Sends all bytes in their order; the bytes of two calls are not mixed. On a broken line they are
  // dropped without a report; a line that accepts no more bytes delays the caller by 200 ms at
  // most.
  virtual void Write(std::span<const uint8_t> bytes) = 0;
  // Drops what was received and not yet passed to the watchers. At once.
  virtual void Purge() = 0;
  virtual ~Port() = default;
};

// The ports by name, "COM1" and so on. Any thread; throws nothing.
class PortManager {
 public:
  // The port with one more watcher, which is not owned; null if it can't be opened, and the host
  // keeps the reason for its user. Several watchers may share a port. Opening a device may take
  // seconds.
  virtual Port* OpenPort(const std::string& name, PortWatcher* watcher) = 0;
  // Non-zero: the port's settings decide whether it may be opened.
  virtual int32_t IsPortInUse(const std::string& name) = 0;
  // May be empty, also for an unknown name. Character 9 (from 0) is "1" when a port is set aside
  // for an instrument, else "0".
  virtual void GetPortSettings(const std::string& name, std::string& text) = 0;
  // Takes one watcher away, which is not called any more once this returns: it waits for a call in
  // progress, so hold no lock that the watcher may take. The port closes after the last watcher. No
  // effect for a port that is not open.
  virtual void ClosePort(const std::string& name, PortWatcher* watcher) = 0;
  // A text that is not a settings text is ignored, and so is one for a port without a device.
  virtual void SetPortSettings(const std::string& name, const std::string& text) = 0;
  virtual ~PortManager() = default;
};

// Is told about failures, and about changes in the list of instruments or in one of them; module or
// host may implement it. Called on the thread on which it happens, with locks of the module
// possibly held: return at once, and never wait for the user-interface thread.
class ViscometerArrayMonitor {
 public:
  virtual void ErrorReported(ActionErrorRecord record) = 0;
  // `what` is 0: the host does not distinguish changes.
  virtual void InstrumentsChanged(int32_t what) = 0;
  virtual ~ViscometerArrayMonitor() = default;
};

// The instruments that were found, and the reports about them. Any thread; throws nothing.
class InstrumentManager {
 public:
  // A handle for UnregisterMonitor. The monitor is not owned.
  virtual int32_t RegisterMonitor(ViscometerArrayMonitor* monitor) = 0;
  // An instrument by its number from 0, owned by the host; null past the last.
  virtual ViscometerInstrument* GetInstrument(int32_t index) = 0;
  virtual void ReleaseFrame(int32_t index) = 0;
  // Reports a failure to the user, keeps it in the archive of messages and tells the monitors; the
  // caller keeps the object.
  virtual void ReportError(ActionException* error) = 0;
  // Once it returns the monitor is not called any more: it waits for a call in progress, unless it
  // is called from inside that call. An unknown handle is ignored.
  virtual void UnregisterMonitor(int32_t handle) = 0;
  // Something of an instrument has changed: tells the monitors.
  virtual void NotifyInstrumentChanged() = 0;
  // Makes an instrument the selected one if `select` is not 0: 1, or 0 for an unknown number.
  virtual int32_t SelectInstrument(int32_t index, int32_t select) = 0;
  virtual ~InstrumentManager() = default;
};

// The settings texts of instruments. Any thread; waits for the database, so not the user-interface
// thread.
class InstrumentArchive {
 public:
  // Calls LoadSettingsText of the instrument with the stored text, on this thread and with no lock
  // held. ArchiveException if nothing is stored or it can't be read; LoadSettingsText is not called
  // then.
  virtual void LoadInstrument(const std::string& key, ViscometerInstrument* instrument,
                              int32_t flags) = 0;
  // Stores the result of SaveSettingsText, which it calls with no lock held; durable when it
  // returns. ArchiveException, with the reason as message, if it could not be stored.
  virtual void StoreInstrument(const std::string& key, ViscometerInstrument* instrument) = 0;
  virtual ~InstrumentArchive() = default;
};

// Chooses samples; the module implements it. Called on the thread that queries the archive.
class SampleArchiveFilter {
 public:
  // Called for each sample that the query has found. Must not call the archives.
  virtual bool AcceptSample(Sample sample) = 0;
  // A query over the table SAMPLES.
  virtual std::string GetQueryText() = 0;
  virtual ~SampleArchiveFilter() = default;
};

// The measured samples. Any thread; waits for the database, so not the user-interface thread.
class SampleArchive {
 public:
  // Replaces `out` by the samples of the query that the filter accepts, oldest first; a null filter
  // takes all. ArchiveException, with `out` as it was, if the query or the archive can't be read.
  virtual void QuerySamples(ArrayOfSamples& out, SampleArchiveFilter* filter) = 0;
  // Durable when it returns. ArchiveException, with a message that says where the sample is kept
  // instead, if it could not be stored.
  virtual void StoreSample(const Sample& sample) = 0;
  virtual ~SampleArchive() = default;
};

// Texts that outlive a program: standards, simulated oils. Any thread; waits for the database.
class AnalysisArchive {
 public:
  // The empty text if nothing is stored; ArchiveException if it can't be read.
  virtual void ReadAnalysisText(const std::string& name, const std::string& section,
                                std::string& text) = 0;
  // Durable when it returns; ArchiveException if it could not be stored.
  virtual void WriteAnalysisText(const std::string& name, const std::string& section,
                                 const std::string& text) = 0;
  virtual ~AnalysisArchive() = default;
};

class ArchiveManager {
 public:
  // The folder for saved files, with its trailing separator. Any thread. Makes the folder if it
  // can; does not report when it can't, so a caller that writes there has to.
  virtual void GetDefaultName(std::string& text) = 0;
  virtual ~ArchiveManager() = default;
};

// Who is logged in. Any thread, at once; the next call may return another user.
class SecurityManager {
 public:
  virtual void GetUserName(std::string& text) = 0;
  // 0 nobody, 10 operator, 50 manager, 100 service.
  virtual int32_t GetAccessLevel() = 0;
  virtual ~SecurityManager() = default;
};

// The module only passes pointers to these on.
class ErrorArchive;
class AnalysisManager;

}  // namespace rvx

// The host's entries. The `Get` functions may be called on any thread as long as a host is open and
// return an object of the host, which lives as long. InvalidException without a host, and from the
// module's functions of these names where the library or the entry is missing.
extern "C" {
// Run the client's operation on the user-interface thread and return when it is done, with its
// result; directly when called on that thread. What the operation throws is thrown to the caller.
// Any thread that holds no lock which the user-interface thread may take.
rvx::FrameWindow* ExecutePerformCreation(rvx::UserInterfaceClient* client);
int32_t ExecuteLoadResources(rvx::UserInterfaceClient* client);
rvx::AnalysisArchive* GetAnalysisArchive();
rvx::AnalysisManager* GetAnalysisManager();
rvx::ArchiveManager* GetArchiveManager();
rvx::ErrorArchive* GetErrorArchive();
rvx::InstrumentArchive* GetInstrumentArchive();
rvx::InstrumentManager* GetInstrumentManager();
rvx::PortManager* GetPortManager();
rvx::SampleArchive* GetSampleArchive();
rvx::SecurityManager* GetSecurityManager();

// The module's own export: looks for instruments on the ports, for up to some seconds a port, and
// appends those found to the array; the caller owns them. A call after one that found instruments
// adds nothing. Any thread but the user-interface thread. InvalidException without a host.
void CreateInstruments(rvx::ArrayOfInstruments** array);
}
