// The query language, apart from the database.
#include "host/core/query_translator.h"

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
  // What was typed is in the parameters alone.
  EXPECT_EQ(query.condition.find("RVX"), std::string::npos);
  EXPECT_EQ(query.condition.find('\''), query.condition.find("'0'"));
}

TEST(QueryTranslator, RefusesWhatIsNoQuery) {
  const std::string start = "SELECT * FROM SAMPLES WHERE ";
  for (const char* text : {"", "SELECT", "DELETE FROM SAMPLES;", "SELECT * FROM USERS;",
                           "SELECT ID FROM SAMPLES", "SELECT * FROM SAMPLES; DROP TABLE SAMPLES",
                           "SELECT * FROM SAMPLES ORDER BY SAMPLES.ID;"}) {
    EXPECT_NE(ProblemOf(text), "") << text;
  }
  for (const char* condition :
       {"", "([Password] = 1)", "([Valid] = 1 OR 1)", "([Valid] = '1')", "([Valid] Like '1')",
        "([Valid] = 1", "[Valid] >= 1", "[Valid = 1", "([Valid] = 1) AND",
        "([Valid] = 1) OR ([Valid] = 0)", "([Valid] = 0x10)", "([Timestamp] > '2026')",
        "([Timestamp] > #2026-01-31 16:05:06#)", "([Timestamp] > #13/31/2026 16:05:06#)",
        "([Timestamp] > #1", "([Instrument] Like 'a) ", "([Instrument] Like \"a\")"}) {
    EXPECT_NE(ProblemOf(start + condition), "") << condition;
  }
}

// Whatever has an apostrophe in it: nobody gets another query out of an instrument's id.
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
