// Users, their levels and passwords, and who is acting.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "boundary/access_levels.h"
#include "boundary/host.h"
#include "host/core/lock_ranks.h"
#include "platform/lock.h"

namespace torvell {

class Database;
struct Actor;

using rvx::kLevelManager;
using rvx::kLevelNobody;
using rvx::kLevelOperator;
using rvx::kLevelService;

struct User {
  std::string name;
  int32_t level = kLevelOperator;
};

// The users of a data folder, and the acting one, who is set when the host opens and whenever a
// window's user changes. If the folder has no user, the local person acts at level 100. Else the
// named user acts at the stored level, and an unknown or empty name at level 0. Any thread.
class Users : public rvx::SecurityManager {
 public:
  explicit Users(Database& database);

  // Sets the acting user. An empty name means nobody.
  void SetActingUser(const std::string& name);
  std::string ActingUser();
  int32_t ActingLevel() { return GetAccessLevel(); }
  // Returns both, for the audit trail.
  Actor ActingAs();
  // HostError NotAllowed if the acting level is below `level`; `what` completes "To <what> ...".
  void Require(int32_t level, const std::string& what);

  // Returns true if there is no user yet: then everybody acts at level 100.
  bool IsEmpty();
  bool Exists(const std::string& name);
  std::vector<User> List();  // by name

  // The three changes require level 100, except that users may set their own password. Each leaves
  // a row in the audit trail, without the password. HostError: NotAllowed, Database. BadInput: an
  // empty name, one that exists (Add) or not (the others), control characters in it, a level other
  // than 10, 50, 100, an empty password, a first user below level 100, the removal of the last user
  // of level 100.
  void Add(const std::string& name, int32_t level, const std::string& password);
  void SetPassword(const std::string& name, const std::string& password);
  void Remove(const std::string& name);

  // Returns true if the password is this user's. Takes as long for a name that does not exist.
  bool Authenticate(const std::string& name, const std::string& password);

  // rvx::SecurityManager
  void GetUserName(std::string& text) override;
  int32_t GetAccessLevel() override;

 private:
  void RefreshActingLevel();

  Database& database_;
  platform::PlainLock lock_{"users", kUsersLockRank};
  std::string acting_ GUARDED_BY(lock_);
  std::string shownName_ GUARDED_BY(lock_);
  int32_t level_ GUARDED_BY(lock_) = 0;
};

}  // namespace torvell
