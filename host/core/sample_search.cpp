// Finds samples for a screen: which rows match, and what some of them hold.
#include <fmt/format.h>

#include <algorithm>

#include "host/core/database.h"
#include "host/core/host_error.h"
#include "host/core/row_binding.h"
#include "host/core/sample_rows.h"
#include "host/core/sample_store.h"

namespace torvell {
namespace {

constexpr size_t kRowsAtATime = 500;

const char* OrderColumn(SampleQuery::Order order) {
  switch (order) {
    case SampleQuery::Order::Time:
      break;
    case SampleQuery::Order::Instrument:
      return "\"Instrument\" COLLATE NOCASE";
    case SampleQuery::Order::Position:
      return "\"Position\"";
    case SampleQuery::Order::SampleId:
      return "\"Sample ID\" COLLATE NOCASE";
    case SampleQuery::Order::Temperature:
      return "\"Constant 6\"";
    case SampleQuery::Order::Average:
      return "\"Average Temperature\"";
    case SampleQuery::Order::Speed:
      return "\"Speed\"";
    case SampleQuery::Order::Viscosity:
      return "\"Viscosity\"";
    case SampleQuery::Order::Known:
      return "\"Constant 5\"";
    case SampleQuery::Order::Operator:
      return "\"Operator\" COLLATE NOCASE";
    case SampleQuery::Order::Origin:
      return "\"Simulated\"";
  }
  return "\"Timestamp\"";
}

constexpr size_t kMaxSearchTextBytes = 1000;  // below the database's limit for a pattern

// Returns a pattern that finds the text anywhere, each character taken literally.
std::string AnywherePattern(const std::string& text) {
  std::string pattern = "%";
  for (const char c : text) {
    if (c == '%' || c == '_' || c == '\\') pattern += '\\';
    pattern += c;
  }
  return pattern + "%";
}

struct Condition {
  std::string text = "1";
  std::vector<ColumnValue> parameters;

  void And(const char* part, const std::string& parameter) {
    text += fmt::format(" AND {}", part);
    parameters.emplace_back(parameter);
  }
};

Condition ConditionOf(const SampleQuery& wanted) {
  const size_t longest = std::max(wanted.instrument.size(), wanted.sampleId.size());
  if (longest > kMaxSearchTextBytes) {
    throw HostError(
        HostErrorKind::BadInput,
        fmt::format("The text to be searched for is too long: {} bytes, of which at most "
                    "{} can be looked for. Nothing was searched. Shorten it.",
                    longest, kMaxSearchTextBytes));
  }
  Condition condition;
  if (!wanted.instrument.empty()) {
    condition.And("\"Instrument\" LIKE ? ESCAPE '\\'", AnywherePattern(wanted.instrument));
  }
  if (!wanted.sampleId.empty()) {
    condition.And("\"Sample ID\" LIKE ? ESCAPE '\\'", AnywherePattern(wanted.sampleId));
  }
  if (!wanted.fromDay.empty()) condition.And("\"Timestamp\" >= ?", wanted.fromDay);
  // A timestamp continues with "T" after the day, so day + "U" sorts after everything of that day.
  // Null and invalid dates sort before all others, and are not earlier than any of them.
  if (!wanted.toDay.empty()) {
    condition.And("\"Timestamp\" >= '0' AND \"Timestamp\" < ?", wanted.toDay + "U");
  }
  if (wanted.verified) {
    condition.text += *wanted.verified ? " AND \"Constant 5\" <> 0" : " AND \"Constant 5\" = 0";
  }
  return condition;
}

}  // namespace

std::vector<int64_t> SampleStore::FindRows(const SampleQuery& wanted) {
  const Condition condition = ConditionOf(wanted);
  const char* direction = wanted.descending ? "DESC" : "ASC";
  const std::string sql =
      fmt::format("SELECT rowid FROM SAMPLES WHERE {} ORDER BY {} {}, rowid {}", condition.text,
                  OrderColumn(wanted.order), direction, direction);
  std::vector<int64_t> rows;
  WithDatabaseErrors("The samples could not be searched", [&] {
    platform::PlainGuard guard(database_.lock());
    SQLite::Statement statement(database_.connection(), sql);
    int index = 0;
    for (const ColumnValue& parameter : condition.parameters) {
      BindValue(statement, ++index, parameter);
    }
    while (statement.executeStep()) rows.push_back(statement.getColumn(0).getInt64());
  });
  return rows;
}

std::vector<StoredSample> SampleStore::ReadRows(const std::vector<int64_t>& rows) {
  static const std::string sql =
      fmt::format("SELECT {} FROM SAMPLES WHERE rowid = ?", SampleColumnList());
  std::vector<StoredSample> samples;
  WithDatabaseErrors("The samples could not be read", [&] {
    // The lock is released between parts: a run that has to store must not wait for a whole export.
    for (size_t first = 0; first < rows.size(); first += kRowsAtATime) {
      platform::PlainGuard guard(database_.lock());
      SQLite::Statement statement(database_.connection(), sql);
      for (size_t i = first; i < std::min(rows.size(), first + kRowsAtATime); ++i) {
        statement.bind(1, rows[i]);
        if (statement.executeStep()) samples.push_back(ReadSampleRow(statement, database_.file()));
        statement.reset();
      }
    }
  });
  return samples;
}

}  // namespace torvell
