// Users and their levels, and the trail of what they changed.
#include "host/core/users.h"

#include <gtest/gtest.h>

#include "host/core/password.h"
#include "tests/host/core/temp_folder.h"

namespace torvell {
namespace {

class UsersTest : public testing::Test {
 protected:
  TempFolder folder_;
};

TEST_F(UsersTest, WithoutUsersTheLocalPersonMayDoAll) {
  const auto host = OpenHost(folder_);
  EXPECT_TRUE(host->users().IsEmpty());
  EXPECT_EQ(host->users().ActingUser(), "local person");
  EXPECT_EQ(host->users().ActingLevel(), 100);
}

TEST_F(UsersTest, TheFirstUserIsOfLevel100AndTheLastOneStays) {
  const auto host = OpenHost(folder_);
  Users& users = host->users();
  EXPECT_EQ(KindRaisedBy([&] { users.Add("otto", 10, "x"); }), HostErrorKind::BadInput);
  EXPECT_TRUE(users.IsEmpty());
  users.Add("anna", 100, "secret");
  // From now on the local person has no rights.
  EXPECT_EQ(users.ActingLevel(), 0);
  EXPECT_EQ(KindRaisedBy([&] { users.Add("otto", 10, "x"); }), HostErrorKind::NotAllowed);

  users.SetActingUser("anna");
  users.Add("otto", 10, "x");
  EXPECT_EQ(KindRaisedBy([&] { users.Remove("anna"); }), HostErrorKind::BadInput);
  users.Remove("otto");
  EXPECT_EQ(users.List().size(), 1u);
}

TEST_F(UsersTest, LevelsOfTheActingUser) {
  {
    const auto host = OpenHost(folder_);
    host->users().Add("anna", 100, "a");
    host->users().SetActingUser("anna");
    host->users().Add("mia", 50, "m");
    host->users().Add("otto", 10, "o");
  }
  EXPECT_EQ(OpenHost(folder_, "anna")->users().ActingLevel(), 100);
  EXPECT_EQ(OpenHost(folder_, "mia")->users().ActingLevel(), 50);
  EXPECT_EQ(OpenHost(folder_, "otto")->users().ActingLevel(), 10);
  EXPECT_EQ(OpenHost(folder_, "nobody")->users().ActingLevel(), 0);
  EXPECT_EQ(OpenHost(folder_)->users().ActingLevel(), 0);
  // The interface of the module says the same.
  std::string name;
  const auto host = OpenHost(folder_, "mia");
  GetSecurityManager()->GetUserName(name);
  EXPECT_EQ(name, "mia");
  EXPECT_EQ(GetSecurityManager()->GetAccessLevel(), 50);
}

TEST_F(UsersTest, PasswordsAreCheckedAndNeverKept) {
  const auto host = OpenHost(folder_);
  host->users().Add("anna", 100, "open sesame");
  EXPECT_TRUE(host->users().Authenticate("anna", "open sesame"));
  EXPECT_FALSE(host->users().Authenticate("anna", "open sesam"));
  EXPECT_FALSE(host->users().Authenticate("anna", ""));
  EXPECT_FALSE(host->users().Authenticate("otto", "open sesame"));
  host->users().SetActingUser("anna");
  host->users().SetPassword("anna", "other");
  EXPECT_FALSE(host->users().Authenticate("anna", "open sesame"));
  EXPECT_TRUE(host->users().Authenticate("anna", "other"));
  ExecuteSql(host->database(), "PRAGMA wal_checkpoint(TRUNCATE)");
  EXPECT_EQ(ReadFile(host->databaseFile()).find("open sesame"), std::string::npos);
}

// A guess at a user name must cost as much as a guess at a password. The test compares the amount
// of work, not the time.
TEST_F(UsersTest, AnUnknownNameCostsAWholeCheck) {
  EXPECT_TRUE(HasPresentCost(HashPassword("a")));
  EXPECT_TRUE(HasPresentCost(NobodysHash())) << "it is not even read as a hash";
  EXPECT_FALSE(
      HasPresentCost("$argon2id$v=19$m=8,t=1,p=1$c29tZXNhbHRzb21lc2FsdA$"
                     "CTFhFdXPJO1aFaMaO6Mm5c8y7cJHAPz8ArZWb2GRPPc"));
}

TEST_F(UsersTest, BadNamesLevelsAndPasswords) {
  const auto host = OpenHost(folder_);
  Users& users = host->users();
  EXPECT_EQ(KindRaisedBy([&] { users.Add("", 100, "x"); }), HostErrorKind::BadInput);
  EXPECT_EQ(KindRaisedBy([&] { users.Add("a\nb", 100, "x"); }), HostErrorKind::BadInput);
  EXPECT_EQ(KindRaisedBy([&] { users.Add(" a", 100, "x"); }), HostErrorKind::BadInput);
  EXPECT_EQ(KindRaisedBy([&] { users.Add("anna", 99, "x"); }), HostErrorKind::BadInput);
  EXPECT_EQ(KindRaisedBy([&] { users.Add("anna", 100, ""); }), HostErrorKind::BadInput);
  users.Add("anna", 100, "x");
  users.SetActingUser("anna");
  EXPECT_EQ(KindRaisedBy([&] { users.Add("anna", 10, "y"); }), HostErrorKind::BadInput);
  EXPECT_EQ(KindRaisedBy([&] { users.SetPassword("otto", "y"); }), HostErrorKind::BadInput);
  EXPECT_EQ(KindRaisedBy([&] { users.Remove("otto"); }), HostErrorKind::BadInput);
  EXPECT_TRUE(users.Authenticate("anna", "x"));
}

TEST_F(UsersTest, OnlyTheUserItselfOrLevel100SetsAPassword) {
  const auto host = OpenHost(folder_);
  Users& users = host->users();
  users.Add("anna", 100, "a");
  users.SetActingUser("anna");
  users.Add("otto", 10, "o");
  users.SetActingUser("otto");
  users.SetPassword("otto", "new");
  EXPECT_EQ(KindRaisedBy([&] { users.SetPassword("anna", "mine"); }), HostErrorKind::NotAllowed);
  users.SetActingUser("");
  EXPECT_EQ(KindRaisedBy([&] { users.SetPassword("", "mine"); }), HostErrorKind::NotAllowed);
}

TEST_F(UsersTest, ChangesLeaveATrailThatNobodyChanges) {
  const auto host = OpenHost(folder_);
  host->users().Add("anna", 100, "secret");
  host->users().SetActingUser("anna");
  host->ports().SetMapping("COM2", "/dev/ttyS9");
  host->ports().SetMapping("COM2", "/dev/ttyS9");  // changes nothing

  const std::vector<AuditRow> rows = host->audit().Last(0);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].object, "user anna");
  EXPECT_EQ(rows[0].user, "local person");
  EXPECT_EQ(rows[0].newValue, "level 100");
  EXPECT_EQ(rows[1].object, "port COM2");
  EXPECT_EQ(rows[1].user, "anna");
  EXPECT_EQ(rows[1].level, 100);
  EXPECT_EQ(rows[1].oldValue, "");
  EXPECT_EQ(rows[1].newValue, "/dev/ttyS9 009600,u=0");
  EXPECT_TRUE(rows[1].time.IsValid());

  EXPECT_THROW(ExecuteSql(host->database(), "DELETE FROM AUDIT"), SQLite::Exception);
  EXPECT_THROW(ExecuteSql(host->database(), "UPDATE AUDIT SET \"User\" = 'otto'"),
               SQLite::Exception);
  EXPECT_EQ(host->audit().Last(0).size(), 2u);
}

}  // namespace
}  // namespace torvell
