// The query language, apart from the database.
#include "host/core/query_translator.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "host/core/like_pattern.h"

namespace torvell {
namespace {

constexpr char kModuleQuery[] =
    "SELECT * FROM SAMPLES WHERE ([Known Viscosity] = -2) AND ([Instrument] Like 'RVX 1') AND "
    "([Constant 5] <> 0) AND ([Valid] <> 0) AND ([Average Temperature] > -20.051) AND "
    "([Average Temperature] < -19.949) AND ([Timestamp] > #01/31/2026 16:05:06#) "
    "ORDER BY SAMPLES.Timestamp;";

std::string ProblemOf(const std::string& text) {
  TranslatedQuery query;
  std::string problem;
  return TranslateQuery(text, query, problem) ? "" : problem;
}

TEST(QueryTranslator, TakesTheModulesQuery) {
  TranslatedQuery query;
  std::string problem;
  ASSERT_TRUE(TranslateQuery(kModuleQuery, query, problem)) << problem;
  ASSERT_EQ(query.parameters.size(), 7u);
  EXPECT_EQ(std::get<double>(query.parameters[0]), -2.0);
  EXPECT_EQ(std::get<std::string>(query.parameters[1]), "RVX 1");
  EXPECT_EQ(std::get<double>(query.parameters[4]), -20.051);
  EXPECT_EQ(std::get<std::string>(query.parameters[6]), "2026-01-31T16:05:06");
  // The typed text is only in the parameters.
  EXPECT_EQ(query.condition.find("RVX"), std::string::npos);
  EXPECT_EQ(query.condition.find('\''), query.condition.find("'0'"));
}

TEST(QueryTranslator, RefusesWhatIsNoQuery) {
  using namespace std::string_literals;
  struct Case {
    std::string text;
    const char* expected;
    size_t at;  // from 1
  };
  for (const Case& each : std::initializer_list<Case>{
           {"", "SELECT", 1},
           {"SELECT", "\"*\"", 7},
           {"SELECT{", "\"*\"", 7},
           {"SELECTED * FROM SAMPLES", "SELECT", 1},
           {"select * from samplesx", "SAMPLES", 15},
           {"DELETE FROM SAMPLES;", "SELECT", 1},
           {"SELECT ID FROM SAMPLES", "\"*\"", 8},
           {"SELECT * OF SAMPLES", "FROM", 10},
           {"SELECT * FROM USERS;", "SAMPLES", 15},
           {"SELECT * FROM SAMPLES; DROP TABLE SAMPLES", "the end of the query", 24},
           {"SELECT * FROM SAMPLES\0;"s, "the end of the query", 22},
           {"SELECT * FROM SAMPLES ORDER SAMPLES.Timestamp", "BY", 29},
           {"SELECT * FROM SAMPLES ORDER BY Timestamp", "SAMPLES", 32},
           {"SELECT * FROM SAMPLES ORDER BY SAMPLES Timestamp", "\".\"", 40},
           {"SELECT * FROM SAMPLES ORDER BY SAMPLES.ID;", "Timestamp", 40}}) {
    EXPECT_EQ(ProblemOf(each.text),
              fmt::format("{} is expected at character {}", each.expected, each.at))
        << each.text;
  }
  const std::string start = "SELECT * FROM SAMPLES WHERE ";
  const char* const date = "a date as #MM/DD/YYYY HH:MM:SS#";
  for (const Case& each : std::initializer_list<Case>{
           {"", "\"[\"", 1},
           {"([Password] = 1)", "the name of a column", 3},
           {"[Valid = 1", "the name of a column", 2},
           {"([Valid] 1)", "=, <>, <, > or Like", 10},
           {"([Valid]", "=, <>, <, > or Like", 9},
           {"([Valid] = 1 OR 1)", "\")\"", 14},
           {"([Valid] = 1", "\")\"", 13},
           {"([Valid] = 1) AND", "\"[\"", 18},
           {"([Valid] = 1) OR ([Valid] = 0)", "the end of the query", 15},
           {"([Valid] = '1')", "a number", 12},
           {"[Valid] >= 1", "a number", 10},
           {"[Valid] =", "a number", 10},
           {"[Valid] = -", "a number", 11},
           {"[Valid] = 1.2.3", "a number", 11},
           {"([Valid] = 0x10)", "\")\"", 13},
           {"([Valid] Like '1')", "a column of text before Like", 14},
           {"([Instrument] Like 'a) ", "a closing apostrophe", 20},
           {"([Instrument] Like \"a\")", "a text between apostrophes", 20},
           {"[Instrument] = 'a' AND [Operator] = 'b'", "no second text", 37},
           {"[Timestamp] > '2026'", date, 15},
           {"[Timestamp] > #2026-01-31 16:05:06#", date, 15},
           {"[Timestamp] > #13/31/2026 16:05:06#", date, 15},
           {"[Timestamp] > #02/30/2026 16:05:06#", date, 15},
           {"[Timestamp] > #+1/31/2026 16:05:06#", date, 15},
           {"[Timestamp] > #01/31/2026 16:05:6 #", date, 15},
           {"[Timestamp] > #1", date, 15}}) {
    EXPECT_EQ(ProblemOf(start + each.text),
              fmt::format("{} is expected at character {}", each.expected, start.size() + each.at))
        << each.text;
  }
}

TEST(QueryTranslator, TakesEveryFormOfACondition) {
  for (const char* text :
       {"select * from samples", " SELECT*FROM SAMPLES ; ", "SELECT * FROM SAMPLES WHERE[Valid]=1",
        "SELECT * FROM SAMPLES where [valid] <> +5 and ([SPEED] < -.5) order by samples.timestamp",
        "SELECT * FROM SAMPLES WHERE [ID] = '1' ORDER BY SAMPLES.Timestamp"}) {
    EXPECT_EQ(ProblemOf(text), "") << text;
  }
}

// An instrument's id with an apostrophe cannot change the query.
RC_GTEST_PROP(QueryTranslator, AnIdWithAnApostropheNeverMakesAQuery, ()) {
  const auto pieces = *rc::gen::container<std::vector<std::string>>(rc::gen::element<std::string>(
      "'", "''", ") AND ([Instrument] Like ", ") AND ([Probe ID] = ", ") OR (1", ";", "--", "[",
      "%", "x", " ", "\n", "DROP TABLE SAMPLES"));
  std::string id;
  for (const std::string& piece : pieces) id += piece;
  const std::string text = "SELECT * FROM SAMPLES WHERE ([Instrument] Like '" + id +
                           "') AND ([Valid] <> 0) ORDER BY SAMPLES.Timestamp;";
  RC_ASSERT((ProblemOf(text) == "") == (id.find('\'') == std::string::npos));
}

RC_GTEST_PROP(QueryTranslator, AnyTextIsTakenOrRefused, (const std::string& text)) {
  TranslatedQuery query;
  std::string problem;
  if (!TranslateQuery(text, query, problem)) RC_ASSERT(!problem.empty());
}

TEST(LikePattern, Wildcards) {
  struct Case {
    const char* pattern;
    const char* text;
    bool matches;
  };
  for (const Case& each : std::initializer_list<Case>{{"rvx", "RVX", true},
                                                      {"RVX", "RVX 2", false},
                                                      {"RVX*", "RVX 2", true},
                                                      {"%2", "RVX 2", true},
                                                      {"RVX ?", "RVX 2", true},
                                                      {"RVX _", "RVX", false},
                                                      {"RVX #", "RVX 2", true},
                                                      {"RVX #", "RVX a", false},
                                                      {"RVX #", "RVX #", true},
                                                      {"a[b-d]e", "aCe", true},
                                                      {"a[b-d]e", "aee", false},
                                                      {"a[!b-d]e", "aee", true},
                                                      {"a[!b-d]e", "ace", false},
                                                      {"a[b", "a[b", true},
                                                      {"a[b", "ab", false},
                                                      {"[a]", "[a]", true},
                                                      {"[a]", "a", true},
                                                      {"", "", true},
                                                      {"*", "", true},
                                                      {"", "x", false},
                                                      {"a*b*c", "aXbXbXc", true},
                                                      {"a*b*c", "aXbX", false},
                                                      {"*[1-3]", "RVX 2", true},
                                                      {"*#", "RVX #", true},
                                                      {"*[", "RVX [", true},
                                                      {"a[", "ab", false},
                                                      {"[a-z]", "{", false},
                                                      {"[A-Z]", "q", true},
                                                      {"[]", "x", false}}) {
    EXPECT_EQ(MatchesLikePattern(each.pattern, each.text), each.matches)
        << each.pattern << " and " << each.text;
  }
}

RC_GTEST_PROP(LikePattern, EveryTextFitsItself, ()) {
  const auto text = *rc::gen::container<std::string>(
      rc::gen::element('a', 'B', '*', '%', '?', '_', '#', '[', ']', '!', '-', '1', ' '));
  RC_ASSERT(MatchesLikePattern(text, text));
}

}  // namespace
}  // namespace torvell
