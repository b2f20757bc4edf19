#include "host/core/host.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "host/core/current_host.h"
#include "host/core/database.h"
#include "host/core/module_loader.h"
#include "platform/guid.h"
#include "platform/key_store.h"
#include "platform/time_base.h"

namespace torvell {
namespace {

constexpr char kSimulateKey[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\HaldenInstrument\\TORVELL\\Instruments\\RVX";
constexpr char kSimulateName[] = "Simulate";

void MakeFolder(const std::string& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (!error && std::filesystem::is_directory(folder, error)) return;
  throw HostError(
      HostErrorKind::DataFolder,
      fmt::format("The data folder {} can't be made: {}. Nothing was changed. Check the "
                  "name and the rights to the folder above it, or name another one.",
                  folder, error ? error.message() : "there is a file of this name"));
}

std::string DescribeInterrupted(const InterruptedTray& tray) {
  int measured = 0;
  for (const InterruptedPosition& position : tray.positions) {
    if (position.state == PositionState::Measured) ++measured;
  }
  return fmt::format(
      "A tray of {} was interrupted (started {}): {} of {} positions have been measured. Nothing "
      "moves by itself.",
      tray.archiveKey, platform::FormatIsoDate(tray.started), measured, tray.positions.size());
}

}  // namespace

std::string DefaultDataFolder() {
  const char* data = std::getenv("XDG_DATA_HOME");
  if (data != nullptr && data[0] == '/') return std::string(data) + "/torvell";
  const char* home = std::getenv("HOME");
  if (home != nullptr && home[0] == '/') return std::string(home) + "/.local/share/torvell";
  throw HostError(HostErrorKind::DataFolder,
                  "There is no place for the data: neither XDG_DATA_HOME nor HOME is set. Name a "
                  "data folder.");
}

Host::Host() = default;

std::unique_ptr<Host> Host::Open(const HostOptions& options) {
  std::unique_ptr<Host> host(new Host());
  host->OpenFolder(options);
  return host;
}

void Host::OpenFolder(const HostOptions& options) {
  folder_ = options.dataFolder.empty() ? DefaultDataFolder() : options.dataFolder;
  moduleName_ = options.moduleName;
  MakeFolder(folder_);
  databaseFile_ = folder_ + "/torvell.db";
  platform::SetKeyStoreFile(folder_ + "/torvell.keys");
  if (options.simulate) platform::OverrideKeyValue(kSimulateKey, kSimulateName, 1);

  database_ = std::make_unique<Database>(databaseFile_);
  SeedIdentifiers(options);
  users_ = std::make_unique<Users>(*database_);
  audit_ = std::make_unique<AuditTrail>(*database_, *users_);
  users_->SetActingUser(options.userName);
  errors_ = std::make_unique<ErrorStore>(*database_);
  journal_ = std::make_unique<TrayJournal>(*database_, folder_ + "/trays.lock");
  samples_ = std::make_unique<SampleStore>(*database_, *journal_, folder_ + "/samples.spool");
  instrumentTexts_ = std::make_unique<InstrumentStore>(*database_, *users_);
  analysisTexts_ = std::make_unique<AnalysisStore>(*database_, *users_);
  files_ = std::make_unique<FileFolder>(folder_ + "/files/");
  ports_ = std::make_unique<PortDirectory>(*database_, *users_, [this] { return IsSimulated(); });
  instruments_ = std::make_unique<InstrumentList>(*errors_);
  CollectNotices();

  userInterface_ = options.userInterface;
  if (userInterface_ == nullptr) {
    ownUserInterface_ = std::make_unique<JobThread>();
    userInterface_ = ownUserInterface_.get();
  }
  ports_->AddListener(instruments_.get());
  registered_ = RegisterHost(this);
  if (!registered_) throw std::logic_error("a host is open in this process already");
}

Host::~Host() {
  if (ports_ && instruments_) {
    // A line that breaks now must not reach an instrument that is being deleted.
    ports_->RemoveListener(instruments_.get());
    instruments_->DeleteAll();
  }
  if (registered_) UnregisterHost(this);
}

void Host::SeedIdentifiers(const HostOptions& options) {
  if (!options.seed) return;
  WithDatabaseErrors("The count of starts could not be stored", [&] {
    platform::PlainGuard guard(database_->lock());
    Transaction transaction(*database_);
    uint64_t starts = 0;
    {
      Query query(
          database_->Prepared("UPDATE META SET \"Value\" = \"Value\" + 1 WHERE \"Name\" = 'starts' "
                              "RETURNING \"Value\""));
      query->executeStep();
      starts = static_cast<uint64_t>(query->getColumn(0).getInt64());
      // SQLite completes a changing statement only when it has been stepped to its end.
      query->executeStep();
    }
    transaction.Commit();
    platform::SeedGuids(*options.seed, starts);
  });
}

void Host::CollectNotices() {
  for (const std::string& text : samples_->TakeInSpool()) {
    ErrorReport report;
    report.time = platform::LocalNow();
    report.source = "host";
    report.message = text;
    errors_->Report(report);
    notices_.push_back(text);
  }
  for (const InterruptedTray& tray : journal_->Interrupted()) {
    notices_.push_back(DescribeInterrupted(tray));
  }
}

bool Host::IsSimulated() const {
  return platform::ReadKeyValue(kSimulateKey, kSimulateName).value_or(0) != 0;
}

int Host::DiscoverInstruments() {
  rvx::ArrayOfInstruments found;
  const std::optional<HostError> failure = FindInstruments(moduleName_, found);
  instruments_->Adopt(found);
  // Marking too many samples as simulated does less harm than marking too few.
  const std::vector<InstrumentEntry> entries = instruments_->Entries();
  samples_->SetSimulated(
      std::any_of(entries.begin(), entries.end(),
                  [](const InstrumentEntry& entry) { return entry.identity.simulated; }));
  if (failure) throw *failure;
  return static_cast<int>(instruments_->Entries().size());
}

std::unique_ptr<TrayRunner> Host::StartTray(const InstrumentEntry& entry, TrayListener* listener) {
  users_->Require(kLevelOperator, "run a tray");
  std::unique_ptr<TrayRunner> runner(new TrayRunner(*this, entry, listener));
  runner->Start();
  return runner;
}

}  // namespace torvell
