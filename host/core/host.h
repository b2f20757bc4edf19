// The host: one open data folder with everything in it, and the instruments found. A process has at
// most one at a time, since the entry points that the module looks up are process-wide.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/core/audit.h"
#include "host/core/error_store.h"
#include "host/core/host_error.h"
#include "host/core/instrument_list.h"
#include "host/core/journal.h"
#include "host/core/ports.h"
#include "host/core/sample_store.h"
#include "host/core/text_archives.h"
#include "host/core/tray_runner.h"
#include "host/core/user_interface.h"
#include "host/core/users.h"

namespace torvell {

struct HostOptions {
  std::string dataFolder;              // made if it is missing; empty: DefaultDataFolder()
  bool simulate = false;               // turns the "Simulate" setting on for this process
  std::string userName;                // who acts, already authenticated; empty: no user
  std::optional<uint64_t> seed;        // identifiers are made from it and the number of starts
  std::string moduleName = "rvx.dll";  // a name for platform::LoadLibrary, or a path
  // Runs jobs on the user-interface thread; null: the host makes a JobThread. Not owned, must
  // outlive the host.
  UserInterfaceExecutor* userInterface = nullptr;
};

// $XDG_DATA_HOME/torvell, else ~/.local/share/torvell.
std::string DefaultDataFolder();

class Host {
 public:
  // Opens the folder: makes what is missing, brings the database to the present version and stores
  // samples that the last start could not store. HostError: DataFolder, Database, NewerVersion.
  // std::logic_error if the process has an open host already.
  static std::unique_ptr<Host> Open(const HostOptions& options);
  // Deletes the instruments first. Must not run on the user-interface thread.
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  // What a person should know of the start: samples stored from the spool, damaged lines in it,
  // trays that were interrupted. Each text is one or more complete sentences.
  const std::vector<std::string>& notices() const { return notices_; }
  const std::string& dataFolder() const { return folder_; }
  const std::string& databaseFile() const { return databaseFile_; }
  // The present value of the "Simulate" setting.
  bool IsSimulated() const;

  // Loads the module and lets it look for instruments on a separate thread; returns when it is
  // done. Takes over a second for each port that is tried under the real clock. Instruments that
  // were found before stay. Returns how many there are now. HostError ModuleMissing or OtherModule.
  // PortDirectory::LastFailure says why a port could not be tried.
  int DiscoverInstruments();

  // Starts the tray of an instrument (of InstrumentList::Entries), level 10. `listener` may be null
  // and must live as long as the runner. HostError: NotAllowed; Database if the run can't be
  // recorded; Tray with the instrument's reason, then nothing runs and no listener is called.
  std::unique_ptr<TrayRunner> StartTray(const InstrumentEntry& entry, TrayListener* listener);

  Users& users() { return *users_; }
  AuditTrail& audit() { return *audit_; }
  PortDirectory& ports() { return *ports_; }
  InstrumentList& instruments() { return *instruments_; }
  SampleStore& samples() { return *samples_; }
  ErrorStore& errors() { return *errors_; }
  TrayJournal& journal() { return *journal_; }
  InstrumentStore& instrumentTexts() { return *instrumentTexts_; }
  AnalysisStore& analysisTexts() { return *analysisTexts_; }
  FileFolder& files() { return *files_; }
  UserInterfaceExecutor& userInterface() { return *userInterface_; }
  Database& database() { return *database_; }

 private:
  Host();
  void OpenFolder(const HostOptions& options);
  void SeedIdentifiers(const HostOptions& options);
  void CollectNotices();

  std::string folder_;
  std::string databaseFile_;
  std::string moduleName_;
  std::vector<std::string> notices_;
  bool registered_ = false;
  std::unique_ptr<Database> database_;
  std::unique_ptr<AuditTrail> audit_;
  std::unique_ptr<Users> users_;
  std::unique_ptr<ErrorStore> errors_;
  std::unique_ptr<TrayJournal> journal_;
  std::unique_ptr<SampleStore> samples_;
  std::unique_ptr<InstrumentStore> instrumentTexts_;
  std::unique_ptr<AnalysisStore> analysisTexts_;
  std::unique_ptr<FileFolder> files_;
  std::unique_ptr<PortDirectory> ports_;
  std::unique_ptr<InstrumentList> instruments_;
  std::unique_ptr<JobThread> ownUserInterface_;
  UserInterfaceExecutor* userInterface_ = nullptr;
};

}  // namespace torvell
