// A query of the archive, which holds what people type. What is accepted runs on a real database.
#include <sqlite3.h>

#include "fuzz/require.h"
#include "host/core/like_pattern.h"
#include "host/core/query_translator.h"
#include "host/core/schema.h"

namespace {

using torvell::ColumnValue;

void Like(sqlite3_context* context, int, sqlite3_value** values) {
  const auto text = [&](int index) {
    const auto* bytes = static_cast<const char*>(sqlite3_value_blob(values[index]));
    const auto size = static_cast<size_t>(sqlite3_value_bytes(values[index]));
    return bytes == nullptr ? std::string_view() : std::string_view(bytes, size);
  };
  sqlite3_result_int(context, torvell::MatchesLikePattern(text(0), text(1)) ? 1 : 0);
}

// With the archive's tables and one sample, kept for all inputs: a query changes nothing.
sqlite3* OpenArchive() {
  sqlite3* database = nullptr;
  sqlite3_open(":memory:", &database);
  for (int step = 0; step < torvell::kSchemaVersion; ++step) {
    sqlite3_exec(database, torvell::kSchemaSteps[step], nullptr, nullptr, nullptr);
  }
  sqlite3_create_function(database, "archive_like", 2, SQLITE_UTF8, nullptr, Like, nullptr,
                          nullptr);
  sqlite3_exec(database,
               "INSERT INTO SAMPLES (\"ID\", \"Timestamp\", \"Instrument\", \"Valid\") "
               "VALUES ('1', '2026-01-31T16:05:06', 'RVX 1', 1)",
               nullptr, nullptr, nullptr);
  fuzz::Require(sqlite3_total_changes(database) == 2, "the archive is there");
  return database;
}

void Bind(sqlite3_stmt* statement, int index, const ColumnValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) {
    sqlite3_bind_text(statement, index, text->data(), static_cast<int>(text->size()),
                      SQLITE_TRANSIENT);
  } else if (const auto* number = std::get_if<double>(&value)) {
    sqlite3_bind_double(statement, index, *number);
  } else if (const auto* whole = std::get_if<int64_t>(&value)) {
    sqlite3_bind_int64(statement, index, *whole);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static sqlite3* const archive = OpenArchive();
  const std::string text = fuzz::ToText(data, size);
  fuzz::Require(torvell::MatchesLikePattern(text, text), "every id matches itself");

  torvell::TranslatedQuery query;
  std::string problem;
  if (!torvell::TranslateQuery(text, query, problem)) {
    fuzz::Require(!problem.empty(), "a refusal says why");
    return 0;
  }
  const std::string sql =
      "SELECT * FROM SAMPLES WHERE " + query.condition + " ORDER BY \"Timestamp\"";
  sqlite3_stmt* statement = nullptr;
  const char* rest = nullptr;
  fuzz::Require(sqlite3_prepare_v2(archive, sql.c_str(), -1, &statement, &rest) == SQLITE_OK,
                "an accepted query is a statement");
  fuzz::Require(*rest == '\0', "it is one statement");
  fuzz::Require(sqlite3_stmt_readonly(statement) != 0, "it only reads");
  fuzz::Require(
      sqlite3_bind_parameter_count(statement) == static_cast<int>(query.parameters.size()),
      "every typed value is a parameter");
  for (size_t i = 0; i < query.parameters.size(); ++i) {
    Bind(statement, static_cast<int>(i) + 1, query.parameters[i]);
  }
  int rows = 0;
  int result = SQLITE_ROW;
  while ((result = sqlite3_step(statement)) == SQLITE_ROW) ++rows;
  fuzz::Require(result == SQLITE_DONE && rows <= 1, "it runs");
  sqlite3_finalize(statement);
  return 0;
}
