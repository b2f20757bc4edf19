#include "host/core/users.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/core/audit_write.h"
#include "host/core/database.h"
#include "host/core/password.h"
#include "platform/text.h"

namespace torvell {
namespace {

constexpr char kLocalPerson[] = "local person";

void CheckName(const std::string& name) {
  const bool control =
      std::any_of(name.begin(), name.end(), [](char c) { return static_cast<uint8_t>(c) < 0x20; });
  if (name.empty() || control || platform::Trim(name) != name) {
    throw HostError(HostErrorKind::BadInput,
                    "The name of a user must not be empty, begin or end with a blank, or hold "
                    "control characters. Nothing was changed.");
  }
}

void CheckPassword(const std::string& password) {
  if (!password.empty()) return;
  throw HostError(
      HostErrorKind::BadInput,
      "The password is empty. Nothing was changed. Give one of at least one character.");
}

HostError UnknownUser(const std::string& name) {
  return HostError(HostErrorKind::BadInput,
                   fmt::format("There is no user \"{}\". Nothing was changed.", name));
}

int64_t CountUsers(Database& database, int32_t level) REQUIRES(database.lock()) {
  Query query(database.Prepared("SELECT COUNT(*) FROM USERS WHERE \"Level\" >= ?"));
  query->bind(1, level);
  query->executeStep();
  return query->getColumn(0).getInt64();
}

// Returns -1 if there is no such user.
int32_t LevelOf(Database& database, const std::string& name) REQUIRES(database.lock()) {
  Query query(database.Prepared("SELECT \"Level\" FROM USERS WHERE \"Name\" = ?"));
  query->bind(1, name);
  return query->executeStep() ? query->getColumn(0).getInt() : -1;
}

}  // namespace

Users::Users(Database& database) : database_(database) { RefreshActingLevel(); }

void Users::SetActingUser(const std::string& name) {
  {
    platform::PlainGuard guard(lock_);
    acting_ = name;
  }
  RefreshActingLevel();
}

void Users::RefreshActingLevel() {
  WithDatabaseErrors("The list of users could not be read", [&] {
    platform::PlainGuard guard(lock_);
    platform::PlainGuard databaseGuard(database_.lock());
    if (CountUsers(database_, 0) == 0) {
      shownName_ = acting_.empty() ? kLocalPerson : acting_;
      level_ = kLevelService;
      return;
    }
    shownName_ = acting_;
    level_ = acting_.empty() ? kLevelNobody : std::max(LevelOf(database_, acting_), kLevelNobody);
  });
}

std::string Users::ActingUser() { return ActingAs().user; }

Actor Users::ActingAs() {
  platform::PlainGuard guard(lock_);
  return {shownName_, level_};
}

void Users::Require(int32_t level, const std::string& what) {
  const Actor actor = ActingAs();
  if (actor.level >= level) return;
  const std::string who =
      actor.user.empty() ? "nobody is named" : fmt::format("\"{}\"", actor.user);
  throw HostError(
      HostErrorKind::NotAllowed,
      fmt::format("To {}, level {} is needed; the present level is {} ({}). Nothing was changed. "
                  "Ask a user of level {} to do it, or name one.",
                  what, level, actor.level, who, level));
}

bool Users::IsEmpty() {
  return WithDatabaseErrors("The list of users could not be read", [&] {
    platform::PlainGuard guard(database_.lock());
    return CountUsers(database_, 0) == 0;
  });
}

bool Users::Exists(const std::string& name) {
  return WithDatabaseErrors("The list of users could not be read", [&] {
    platform::PlainGuard guard(database_.lock());
    return LevelOf(database_, name) >= 0;
  });
}

std::vector<User> Users::List() {
  return WithDatabaseErrors("The list of users could not be read", [&] {
    std::vector<User> users;
    platform::PlainGuard guard(database_.lock());
    Query query(database_.Prepared("SELECT \"Name\", \"Level\" FROM USERS ORDER BY \"Name\""));
    while (query->executeStep()) {
      users.push_back({query->getColumn(0).getString(), query->getColumn(1).getInt()});
    }
    return users;
  });
}

void Users::Add(const std::string& name, int32_t level, const std::string& password) {
  Require(kLevelService, "add a user");
  CheckName(name);
  if (level != kLevelOperator && level != kLevelManager && level != kLevelService) {
    throw HostError(HostErrorKind::BadInput,
                    fmt::format("{} is no level. Nothing was changed. Give 10 (operator), 50 "
                                "(manager) or 100 (service).",
                                level));
  }
  CheckPassword(password);
  const std::string hash = HashPassword(password);
  const Actor actor = ActingAs();
  WithDatabaseErrors("The user could not be added", [&] {
    platform::PlainGuard guard(database_.lock());
    Transaction transaction(database_);
    if (LevelOf(database_, name) >= 0) {
      throw HostError(HostErrorKind::BadInput,
                      fmt::format("There is a user \"{}\" already. Nothing was changed.", name));
    }
    if (level != kLevelService && CountUsers(database_, 0) == 0) {
      throw HostError(HostErrorKind::BadInput,
                      "The first user has to be of level 100, since nobody could add others "
                      "otherwise. Nothing was changed.");
    }
    Query query(database_.Prepared("INSERT INTO USERS VALUES (?, ?, ?)"));
    query->bind(1, name);
    query->bind(2, level);
    query->bind(3, hash);
    query->exec();
    WriteAudit(database_, actor, {{"user " + name, "", fmt::format("level {}", level)}});
    transaction.Commit();
  });
  RefreshActingLevel();
}

void Users::SetPassword(const std::string& name, const std::string& password) {
  const Actor actor = ActingAs();
  // Below level 10 the acting name was not recognised as a user.
  if (actor.user != name || actor.level < kLevelOperator) {
    Require(kLevelService, "set another user's password");
  }
  CheckPassword(password);
  const std::string hash = HashPassword(password);
  WithDatabaseErrors("The password could not be stored", [&] {
    platform::PlainGuard guard(database_.lock());
    Transaction transaction(database_);
    Query query(database_.Prepared("UPDATE USERS SET \"Hash\" = ? WHERE \"Name\" = ?"));
    query->bind(1, hash);
    query->bind(2, name);
    if (query->exec() == 0) throw UnknownUser(name);
    WriteAudit(database_, actor, {{"user " + name, "password", "new password"}});
    transaction.Commit();
  });
}

void Users::Remove(const std::string& name) {
  Require(kLevelService, "remove a user");
  const Actor actor = ActingAs();
  WithDatabaseErrors("The user could not be removed", [&] {
    platform::PlainGuard guard(database_.lock());
    Transaction transaction(database_);
    const int32_t level = LevelOf(database_, name);
    if (level < 0) throw UnknownUser(name);
    if (level >= kLevelService && CountUsers(database_, kLevelService) == 1) {
      throw HostError(
          HostErrorKind::BadInput,
          fmt::format("\"{}\" is the last user of level 100 and can't be removed, since "
                      "nobody could administer users afterwards. Nothing was changed. "
                      "Add another one first.",
                      name));
    }
    Query query(database_.Prepared("DELETE FROM USERS WHERE \"Name\" = ?"));
    query->bind(1, name);
    query->exec();
    WriteAudit(database_, actor, {{"user " + name, fmt::format("level {}", level), ""}});
    transaction.Commit();
  });
  RefreshActingLevel();
}

bool Users::Authenticate(const std::string& name, const std::string& password) {
  std::string hash;
  WithDatabaseErrors("The list of users could not be read", [&] {
    platform::PlainGuard guard(database_.lock());
    Query query(database_.Prepared("SELECT \"Hash\" FROM USERS WHERE \"Name\" = ?"));
    query->bind(1, name);
    if (query->executeStep()) hash = query->getColumn(0).getString();
  });
  const bool known = !hash.empty();
  // A wrong name takes as long as a wrong password.
  const bool fits = FitsPassword(known ? hash : NobodysHash(), password);
  return known && fits;
}

void Users::GetUserName(std::string& text) { text = ActingUser(); }

int32_t Users::GetAccessLevel() { return ActingAs().level; }

}  // namespace torvell
