#include "host/core/text_archives.h"

#include <fmt/format.h>

#include <filesystem>
#include <system_error>

#include "host/core/archive_errors.h"
#include "host/core/audit_write.h"
#include "host/core/database.h"
#include "host/core/users.h"
#include "platform/log.h"

namespace torvell {
namespace {

std::optional<std::string> ReadSettings(Database& database, const std::string& key)
    REQUIRES(database.lock()) {
  Query query(database.Prepared("SELECT \"Text\" FROM INSTRUMENTS WHERE \"Key\" = ?"));
  query->bind(1, key);
  if (!query->executeStep()) return std::nullopt;
  return query->getColumn(0).getString();
}

std::string ReadAnalysis(Database& database, const std::string& name, const std::string& section)
    REQUIRES(database.lock()) {
  Query query(database.Prepared(
      "SELECT \"Text\" FROM ANALYSIS_TEXTS WHERE \"Name\" = ? AND \"Section\" = ?"));
  query->bind(1, name);
  query->bind(2, section);
  return query->executeStep() ? query->getColumn(0).getString() : std::string();
}

}  // namespace

std::optional<std::string> InstrumentStore::Read(const std::string& key) {
  return WithDatabaseErrors("The instrument's settings could not be read", [&] {
    platform::PlainGuard guard(database_.lock());
    return ReadSettings(database_, key);
  });
}

void InstrumentStore::LoadInstrument(const std::string& key, rvx::ViscometerInstrument* instrument,
                                     int32_t flags) {
  std::optional<std::string> text;
  try {
    text = Read(key);
  } catch (const HostError& error) {
    {
      platform::PlainGuard guard(lock_);
      unreadable_.insert(key);
    }
    RaiseArchiveException(error.what());
  }
  {
    platform::PlainGuard guard(lock_);
    unreadable_.erase(key);
  }
  if (!text) {
    RaiseArchiveException(fmt::format("No settings are stored for the instrument {}.", key));
  }
  instrument->LoadSettingsText(*text, flags);
}

void InstrumentStore::StoreInstrument(const std::string& key,
                                      rvx::ViscometerInstrument* instrument) {
  // The text is read from the instrument without a lock held, so two calls may overtake each other.
  // The call that began last saw the latest settings, so its text is the one that is kept.
  uint64_t ticket = 0;
  {
    platform::PlainGuard guard(lock_);
    ticket = nextTicket_++;
  }
  const std::string text = instrument->SaveSettingsText();
  const Actor actor = users_.ActingAs();
  platform::PlainGuard guard(lock_);
  if (unreadable_.count(key) != 0) {
    RaiseArchiveException(fmt::format(
        "The settings of the instrument {} could not be read and are not overwritten by what is in "
        "force instead. Start the program again when the database can be read.",
        key));
  }
  if (stored_[key] > ticket) return;
  WithArchiveErrors("The instrument's settings could not be stored", [&] {
    platform::PlainGuard databaseGuard(database_.lock());
    Transaction transaction(database_);
    const std::optional<std::string> before = ReadSettings(database_, key);
    if (before != text) {
      Query query(database_.Prepared("INSERT OR REPLACE INTO INSTRUMENTS VALUES (?, ?)"));
      query->bind(1, key);
      query->bind(2, text);
      query->exec();
      const std::string object = "instrument " + key;
      WriteAudit(database_, actor,
                 before ? CompareSettingsTexts(object, *before, text)
                        : std::vector<AuditChange>{{object, "", "stored for the first time"}});
      transaction.Commit();
    }
  });
  // Noted after the success: a call that failed must not keep an earlier one from being stored.
  stored_[key] = ticket;
}

void AnalysisStore::ReadAnalysisText(const std::string& name, const std::string& section,
                                     std::string& text) {
  WithArchiveErrors(fmt::format("\"{}\" could not be read", section), [&] {
    platform::PlainGuard guard(database_.lock());
    text = ReadAnalysis(database_, name, section);
  });
}

void AnalysisStore::WriteAnalysisText(const std::string& name, const std::string& section,
                                      const std::string& text) {
  AsArchiveErrors([&] { users_.Require(kLevelOperator, fmt::format("change \"{}\"", section)); });
  const Actor actor = users_.ActingAs();
  WithArchiveErrors(fmt::format("\"{}\" could not be stored", section), [&] {
    platform::PlainGuard guard(database_.lock());
    Transaction transaction(database_);
    const std::string before = ReadAnalysis(database_, name, section);
    if (before == text) return;
    Query query(database_.Prepared("INSERT OR REPLACE INTO ANALYSIS_TEXTS VALUES (?, ?, ?)"));
    query->bind(1, name);
    query->bind(2, section);
    query->bind(3, text);
    query->exec();
    WriteAudit(database_, actor, CompareRowTexts(section, before, text));
    transaction.Commit();
  });
}

void FileFolder::GetDefaultName(std::string& text) {
  std::error_code error;
  std::filesystem::create_directories(folder_, error);
  // A program that then writes a file there reports its own failure; the name is the same in any
  // case.
  if (error) {
    platform::Log(platform::LogLevel::Warning, folder_ + " can't be made: " + error.message());
  }
  text = folder_;
}

}  // namespace torvell
