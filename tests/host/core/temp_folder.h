// A folder for a test, and what host tests do with the archive in it.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "host/core/database.h"
#include "host/core/host.h"

namespace torvell {

// A new empty folder, removed with its contents at the end of its scope.
class TempFolder {
 public:
  TempFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "core_test_XXXXXX").string();
    path_ = mkdtemp(pattern.data());
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// Opens the folder's archive; `user` acts if given. Throws HostError.
inline std::unique_ptr<Host> OpenHost(const TempFolder& folder, const std::string& user = "") {
  HostOptions options;
  options.dataFolder = folder.path();
  options.userName = user;
  return Host::Open(options);
}

// The file's bytes; empty if it can't be read.
inline std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

// Runs one statement directly in the database, without the host's checks. Throws SQLite::Exception.
inline void ExecuteSql(Database& database, const std::string& sql) {
  platform::PlainGuard guard(database.lock());
  database.connection().exec(sql);
}

// The database's query plan for a statement, with "; " after each line.
inline std::string PlanOf(Database& database, const std::string& sql) {
  platform::PlainGuard guard(database.lock());
  SQLite::Statement plan(database.connection(), "EXPLAIN QUERY PLAN " + sql);
  std::string text;
  while (plan.executeStep()) text += plan.getColumn(3).getString() + "; ";
  return text;
}

// The kind of the HostError that a call throws. Fails the test if it throws none.
template <class Call>
HostErrorKind KindRaisedBy(const Call& call) {
  try {
    call();
  } catch (const HostError& error) {
    EXPECT_GT(std::string(error.what()).size(), 20u) << "a message for people is expected";
    return error.kind();
  }
  ADD_FAILURE() << "no HostError was raised";
  return HostErrorKind::BadInput;
}

// The message of the ArchiveException that a call throws; empty if it throws none.
template <class Call>
std::string ArchiveMessageOf(const Call& call) {
  try {
    call();
  } catch (rvx::ArchiveException* raised) {
    const std::string message = raised->GetRecord().message;
    delete raised;
    return message;
  }
  return {};
}

}  // namespace torvell
