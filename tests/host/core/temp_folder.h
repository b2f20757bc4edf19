// A folder of a test, removed behind it.
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

inline std::unique_ptr<Host> OpenHost(const TempFolder& folder, const std::string& user = "") {
  HostOptions options;
  options.dataFolder = folder.path();
  options.userName = user;
  return Host::Open(options);
}

inline std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

// One statement straight at the database, past the host.
inline void ExecuteSql(Database& database, const std::string& sql) {
  platform::PlainGuard guard(database.lock());
  database.connection().exec(sql);
}

// The plan that the database makes for a statement, its lines joined by "; ".
inline std::string PlanOf(Database& database, const std::string& sql) {
  platform::PlainGuard guard(database.lock());
  SQLite::Statement plan(database.connection(), "EXPLAIN QUERY PLAN " + sql);
  std::string text;
  while (plan.executeStep()) text += plan.getColumn(3).getString() + "; ";
  return text;
}

// What a call raises as a HostError; fails the test if it raises none.
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

// The message of the ArchiveException that a call raises, or the empty text if it raises none.
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
