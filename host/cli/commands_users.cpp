// users: who may do what. Works without an instrument.
#include <fmt/format.h>

#include "host/cli/commands.h"
#include "host/cli/failure.h"
#include "host/cli/session.h"
#include "host/cli/table.h"
#include "platform/text.h"

namespace torvell {

namespace {

struct UserArguments {
  std::string name;
  std::string level;
};

// Returns the level of a name or number; the host refuses numbers that are not a level.
int32_t ParseLevel(const std::string& text) {
  if (platform::CompareNoCase(text, "operator") == 0) return kLevelOperator;
  if (platform::CompareNoCase(text, "manager") == 0) return kLevelManager;
  if (platform::CompareNoCase(text, "service") == 0) return kLevelService;
  if (const std::optional<int> number = platform::ParseInt(text)) return *number;
  throw CommandFailure(ExitCode::BadUse,
                       fmt::format("level: found \"{}\"; accepted: operator (10), manager (50), "
                                   "service (100). Nothing was done.",
                                   text));
}

std::string NewPassword(Session& session, const std::string& name) {
  std::string password = session.Password(fmt::format("New password of {}: ", name));
  if (!session.options().passwordDescriptor && session.Password("The same again: ") != password) {
    throw CommandFailure(ExitCode::BadUse, "the two passwords differ. Nothing was done.");
  }
  return password;
}

int ListUsers(Session& session) {
  Json list = Json::array();
  Table table({{"name"}, {"level", Table::Align::Right}});
  for (const User& user : session.host().users().List()) {
    list.push_back({{"name", user.name}, {"level", user.level}});
    table.AddRow({user.name, std::to_string(user.level)});
  }
  session.output().Result(list, table.Text());
  return static_cast<int>(ExitCode::Good);
}

int AddUser(Session& session, const UserArguments& arguments) {
  const int32_t level = ParseLevel(arguments.level);
  session.RequireLevel(kLevelService, "add a user");
  // Checked before the password is asked for, so that nobody types it for nothing.
  if (session.host().users().IsEmpty() && level != kLevelService) {
    throw CommandFailure(ExitCode::BadUse,
                         "the first user has to be of level 100, since nobody could add others "
                         "afterwards. Nothing was done. Add a user of level 100 first.");
  }
  session.host().users().Add(arguments.name, level, NewPassword(session, arguments.name));
  return ListUsers(session);
}

int ChangePassword(Session& session, const UserArguments& arguments) {
  Users& users = session.host().users();
  if (users.ActingUser() != arguments.name) session.RequireLevel(kLevelService, "set a password");
  users.SetPassword(arguments.name, NewPassword(session, arguments.name));
  session.output().Result({{"name", arguments.name}, {"changed", true}},
                          fmt::format("the password of {} is changed\n", arguments.name));
  return static_cast<int>(ExitCode::Good);
}

int RemoveUser(Session& session, const UserArguments& arguments) {
  session.host().users().Remove(arguments.name);
  return ListUsers(session);
}

}  // namespace

void AddUserCommands(const Command& program) {
  const Command users = program.AddGroup("users", "the users and their levels");
  users.AddCommand("list", "list them", ListUsers);

  const auto arguments = std::make_shared<UserArguments>();
  const auto add = [&](const char* name, const char* description,
                       int (*command)(Session&, const UserArguments&)) {
    const Command added = users.AddCommand(name, description, command, arguments);
    added.Add("NAME", arguments->name).Required();
    return added;
  };
  add("add", "add a user (level 100)", AddUser)
      .Add("LEVEL,--level", arguments->level, "operator (10), manager (50) or service (100)")
      .Required();
  add("passwd", "set a password (level 100, or one's own)", ChangePassword);
  add("remove", "remove a user (level 100)", RemoveUser);
}

}  // namespace torvell
