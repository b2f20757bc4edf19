// The archives of texts: instrument settings, analysis texts, and the folder for files.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "boundary/host.h"
#include "host/core/lock_ranks.h"
#include "platform/lock.h"

namespace torvell {

class Database;
class Users;

// Settings texts of instruments by key. A change of a field leaves a row in the audit trail, in the
// same transaction. Any thread.
class InstrumentStore : public rvx::InstrumentArchive {
 public:
  InstrumentStore(Database& database, Users& users) : database_(database), users_(users) {}

  // Returns the stored text, or nothing if there is none. HostError Database if it can't be read.
  std::optional<std::string> Read(const std::string& key);

  // rvx::InstrumentArchive
  void LoadInstrument(const std::string& key, rvx::ViscometerInstrument* instrument,
                      int32_t flags) override;
  void StoreInstrument(const std::string& key, rvx::ViscometerInstrument* instrument) override;

 private:
  Database& database_;
  Users& users_;
  platform::PlainLock lock_{"instrument store", kTextArchiveLockRank};
  uint64_t nextTicket_ GUARDED_BY(lock_) = 1;
  std::map<std::string, uint64_t> stored_ GUARDED_BY(lock_);
  // Keys whose stored text could not be read: it must not be overwritten.
  std::set<std::string> unreadable_ GUARDED_BY(lock_);
};

// Analysis texts by name and section. A change needs level 10: an operator may correct the
// viscosity of a standard. Code that replaces whole lists requires level 50 itself. Any thread.
class AnalysisStore : public rvx::AnalysisArchive {
 public:
  AnalysisStore(Database& database, Users& users) : database_(database), users_(users) {}

  // rvx::AnalysisArchive
  void ReadAnalysisText(const std::string& name, const std::string& section,
                        std::string& text) override;
  void WriteAnalysisText(const std::string& name, const std::string& section,
                         const std::string& text) override;

 private:
  Database& database_;
  Users& users_;
};

// The folder for files, made when its name is first asked for. Any thread.
class FileFolder : public rvx::ArchiveManager {
 public:
  // `folder` ends in its separator.
  explicit FileFolder(std::string folder) : folder_(std::move(folder)) {}
  void GetDefaultName(std::string& text) override;

 private:
  const std::string folder_;
};

}  // namespace torvell
