// The host: one data folder opened, with everything in it, and the instruments found. One in a
// process at a time, since the entry points that the module looks up are process-wide.
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
  bool simulate = false;               // the "Simulate" setting on for this process
  std::string userName;                // who acts, already authenticated; empty: nobody named
  std::optional<uint64_t> seed;        // identifiers come from it and from the count of starts
  std::string moduleName = "rvx.dll";  // a name for platform::LoadLibrary, or a path
  // Who runs jobs for the user interface; null: a JobThread of the host's own. Not owned.
  UserInterfaceExecutor* userInterface = nullptr;
};

// $XDG_DATA_HOME/torvell, else ~/.local/share/torvell.
std::string DefaultDataFolder();

class Host {
 public:
  // Opens the folder: makes what is missing, brings the database to the present version and takes
  // in samples that the last start could not store. HostError: DataFolder, Database, NewerVersion.
  static std::unique_ptr<Host> Open(const HostOptions& options);
  // Deletes the instruments, then ends the rest. Not on the user-interface thread.
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  // What happened at the start that a person should know: samples taken in from the spool, damaged
  // lines in it, trays that were interrupted. One complete sentence or more each.
  const std::vector<std::string>& notices() const { return notices_; }
  const std::string& dataFolder() const { return folder_; }
  const std::string& databaseFile() const { return databaseFile_; }
  // The "Simulate" setting of the moment.
  bool IsSimulated() const;

  // Loads the module and lets it look for instruments, on a thread of its own; takes over a second
  // for each port of the real clock. Those found before stay. Returns how many there are then.
  // HostError ModuleMissing. PortDirectory::LastFailure says why a port was not tried.
  int DiscoverInstruments();

  // Starts the tray of an instrument (of InstrumentList::Entries), level 10. `listener` may be null
  // and must live as long as the runner. HostError: NotAllowed; Tray with the instrument's reason,
  // then nothing runs and no listener is called.
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
