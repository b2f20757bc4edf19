#include "module/calibration/standard_group_file.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <ostream>

namespace rvx {

bool operator==(const StandardGroupRow& a, const StandardGroupRow& b) {
  return a.name == b.name && a.temperature == b.temperature && a.group == b.group;
}
std::ostream& operator<<(std::ostream& out, const StandardGroupRow& row) {
  return out << "(" << row.name << "|" << row.temperature << "|" << row.group << ")";
}

namespace {

using Rows = std::vector<StandardGroupRow>;

// The rows of a file with these lines after the heading.
Rows Parse(const std::string& lines) { return ParseStandardGroups("name,temp,group\n" + lines); }

TEST(StandardGroups, RowsBehindTheHeading) {
  EXPECT_EQ(Parse("CL-1,- 5,A\nCL-2,-20,B\n"), (Rows{{"CL-1", "- 5", "A"}, {"CL-2", "-20", "B"}}));
  EXPECT_TRUE(ParseStandardGroups("CL-1,-20,A\n").empty()) << "the first line is the heading";
  EXPECT_TRUE(ParseStandardGroups("").empty());
}

TEST(StandardGroups, LastLineWithoutNewlineLosesItsLetter) {
  EXPECT_EQ(Parse("a,-20,A\nb,-20,B"), (Rows{{"a", "-20", "A"}, {"b", "-20", ""}}));
}

TEST(StandardGroups, RunsOfCommasCountAsOne) {
  EXPECT_EQ(Parse(",,a,,-20,,,A\n"), (Rows{{"a", "-20", "A"}}));
  EXPECT_EQ(Parse("a,,A\n"), (Rows{{"a", "A\n", ""}})) << "the empty field moved the next forward";
  EXPECT_TRUE(Parse(",,,").empty());
}

TEST(StandardGroups, MissingFields) {
  EXPECT_EQ(Parse("a\n"), (Rows{{"a\n", "777", ""}}));
  EXPECT_EQ(Parse("a,-20\n"), (Rows{{"a", "-20\n", ""}})) << "its newline keeps it from matching";
  EXPECT_EQ(Parse("a,-20,A,more\n"), (Rows{{"a", "-20", ""}})) << "no newline behind the letter";
}

TEST(StandardGroups, CarriageReturnBelongsToTheNewline) {
  EXPECT_EQ(Parse("a,-20,A\r\nb,-25,C\r\n"), (Rows{{"a", "-20", "A"}, {"b", "-25", "C"}}));
}

TEST(StandardGroups, LongLinesAreCutIntoPieces) {
  // 58 + ",-20," are 63: the letter is in the next piece, as a name with its newline.
  const std::string name(58, 'n');
  EXPECT_EQ(Parse(name + ",-20,A\n"), (Rows{{name, "-20", ""}, {"A\n", "777", ""}}));
  // One character less fits, but its newline does not, and becomes a separate piece.
  const std::string shorter(57, 'n');
  EXPECT_EQ(Parse(shorter + ",-20,A\n"), (Rows{{shorter, "-20", ""}, {"\n", "777", ""}}));
  const std::string fits(56, 'n');
  EXPECT_EQ(Parse(fits + ",-20,A\n"), (Rows{{fits, "-20", "A"}}));
  EXPECT_EQ(Parse(",,,\n"), Rows{});
  // A long heading is skipped for its first piece only.
  EXPECT_EQ(ParseStandardGroups(std::string(63, 'h') + "x,y\n"), (Rows{{"x", "y\n", ""}}));
}

TEST(StandardGroups, GrowsBeyondTheUsualTable) {
  std::string lines;
  for (int i = 0; i < 151; ++i) lines += "s" + std::to_string(i) + ",-20,A\n";
  const Rows rows = Parse(lines);
  ASSERT_EQ(rows.size(), 151u);
  EXPECT_EQ(rows.back(), (StandardGroupRow{"s150", "-20", "A"}));
}

TEST(StandardGroups, PieceEndsAtAZeroByte) {
  using std::string_literals::operator""s;
  EXPECT_EQ(Parse("a,-20\0,A\nb,-20,B\n"s), (Rows{{"a", "-20", ""}, {"b", "-20", "B"}}));
  EXPECT_TRUE(Parse("\0,a,b\n"s).empty());
}

RC_GTEST_PROP(StandardGroupsProperty, AnyBytesAreHarmless, ()) {
  const auto bytes = *rc::gen::container<std::string>(
      rc::gen::oneOf(rc::gen::elementOf(std::string(",,\n\r\0A-", 7)), rc::gen::arbitrary<char>()));
  for (const StandardGroupRow& row : ParseStandardGroups(bytes)) {
    RC_ASSERT(!row.name.empty());
    RC_ASSERT(!row.temperature.empty());
    RC_ASSERT(row.name.size() + row.temperature.size() + row.group.size() <= 66u);
  }
}

class StandardGroupFile : public ::testing::Test {
 protected:
  void SetUp() override {
    folder_ = std::filesystem::temp_directory_path() /
              ("rvx_groups_" + std::to_string(::getpid()) + "_" +
               ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(folder_);
    path_ = StandardGroupPath(folder_.string() + "/");
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }
  void Write(const std::string& bytes) { std::ofstream(path_, std::ios::binary) << bytes; }

  std::filesystem::path folder_;
  std::string path_;
};

TEST_F(StandardGroupFile, IsReadFromTheDefaultFolder) {
  EXPECT_EQ(path_, (folder_ / "StandardGroups.txt").string());
  EXPECT_TRUE(ReadStandardGroups(path_).empty()) << "missing";
  Write("h\na,-20,A\n");
  EXPECT_EQ(ReadStandardGroups(path_), (Rows{{"a", "-20", "A"}}));
}

TEST_F(StandardGroupFile, HugeOrNoFileIsHarmless) {
  Write("h\na,-20,A\n" + std::string(3 * 1024 * 1024, 'x'));
  EXPECT_EQ(ReadStandardGroups(path_).at(0), (StandardGroupRow{"a", "-20", "A"}));
  EXPECT_LE(ReadStandardGroups(path_).size(), 17000u);
  EXPECT_TRUE(ReadStandardGroups(folder_.string()).empty()) << "a folder";
  EXPECT_TRUE(ReadStandardGroups("/dev/zero").empty());
}

}  // namespace
}  // namespace rvx
