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

// Hears what a port receives, on the port's thread.
class PortWatcher {
 public:
  virtual void Receive(std::span<const uint8_t> bytes) = 0;
  virtual ~PortWatcher() = default;
};

// An open port, owned by the port manager. Any thread may call it.
class Port {
 public:
  // Sends all bytes or, if the line is broken, none; never blocks for long.
  virtual void Write(std::span<const uint8_t> bytes) = 0;
  // Drops what was received and not yet handed over.
  virtual void Purge() = 0;
  virtual ~Port() = default;
};

class PortManager {
 public:
  // The port with one more watcher, or null if it can't be opened.
  virtual Port* OpenPort(const std::string& name, PortWatcher* watcher) = 0;
  // Non-zero: the port's settings decide whether it may be opened.
  virtual int32_t IsPortInUse(const std::string& name) = 0;
  // May be empty. Character 9 (from 0) is "1" when a port is set aside for an instrument, else "0".
  virtual void GetPortSettings(const std::string& name, std::string& text) = 0;
  // Takes one watcher away, which is not called any more once this returns; the port closes behind
  // the last.
  virtual void ClosePort(const std::string& name, PortWatcher* watcher) = 0;
  virtual void SetPortSettings(const std::string& name, const std::string& text) = 0;
  virtual ~PortManager() = default;
};

// Hears of failures, and of changes in the list of instruments or in one of them. Any thread.
class ViscometerArrayMonitor {
 public:
  virtual void ErrorReported(ActionErrorRecord record) = 0;
  // `what` is 0: the host does not tell changes apart.
  virtual void InstrumentsChanged(int32_t what) = 0;
  virtual ~ViscometerArrayMonitor() = default;
};

class InstrumentManager {
 public:
  virtual int32_t RegisterMonitor(ViscometerArrayMonitor* monitor) = 0;
  // Null past the last.
  virtual ViscometerInstrument* GetInstrument(int32_t index) = 0;
  virtual void ReleaseFrame(int32_t index) = 0;
  // Reports a failure to the user; the caller keeps the object.
  virtual void ReportError(ActionException* error) = 0;
  virtual void UnregisterMonitor(int32_t handle) = 0;
  virtual void NotifyInstrumentChanged() = 0;
  virtual int32_t SelectInstrument(int32_t index, int32_t select) = 0;
  virtual ~InstrumentManager() = default;
};

class InstrumentArchive {
 public:
  // Calls LoadSettingsText of the instrument with the stored text; ArchiveException if there is
  // none.
  virtual void LoadInstrument(const std::string& key, ViscometerInstrument* instrument,
                              int32_t flags) = 0;
  // Stores the result of SaveSettingsText.
  virtual void StoreInstrument(const std::string& key, ViscometerInstrument* instrument) = 0;
  virtual ~InstrumentArchive() = default;
};

// Chooses samples.
class SampleArchiveFilter {
 public:
  virtual bool AcceptSample(Sample sample) = 0;
  virtual std::string GetQueryText() = 0;
  virtual ~SampleArchiveFilter() = default;
};

class SampleArchive {
 public:
  virtual void QuerySamples(ArrayOfSamples& out, SampleArchiveFilter* filter) = 0;
  // Durable when it returns. ArchiveException if it could not be stored.
  virtual void StoreSample(const Sample& sample) = 0;
  virtual ~SampleArchive() = default;
};

class AnalysisArchive {
 public:
  // The empty text if nothing is stored; ArchiveException if it can't be read.
  virtual void ReadAnalysisText(const std::string& name, const std::string& section,
                                std::string& text) = 0;
  virtual void WriteAnalysisText(const std::string& name, const std::string& section,
                                 const std::string& text) = 0;
  virtual ~AnalysisArchive() = default;
};

class ArchiveManager {
 public:
  // The folder for saved files, with its trailing separator.
  virtual void GetDefaultName(std::string& text) = 0;
  virtual ~ArchiveManager() = default;
};

class SecurityManager {
 public:
  virtual void GetUserName(std::string& text) = 0;
  // 10 operator, 50 manager, 100 service.
  virtual int32_t GetAccessLevel() = 0;
  virtual ~SecurityManager() = default;
};

// The module only passes these on.
class ErrorArchive;
class AnalysisManager;

}  // namespace rvx

// Run the client's operation on the user-interface thread and return its result when it is done.
extern "C" {
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

// The module's own export: appends the instruments found to the array.
void CreateInstruments(rvx::ArrayOfInstruments** array);
}
