#include "host/core/audit_write.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "platform/text.h"
#include "platform/time_base.h"

namespace torvell {
namespace {

// The fields of one line of a settings text, which nests two separators.
std::vector<std::string> FieldsOf(const std::string& line) {
  std::string flat = line;
  std::replace(flat.begin(), flat.end(), '\t', '\x0B');
  return platform::SplitFields(flat, '\x0B');
}

std::vector<std::string> SettingsLines(const std::string& text) {
  std::vector<std::string> lines = platform::SplitFields(text, '\n');
  lines.erase(std::find(lines.begin(), lines.end(), "Tray 0"), lines.end());
  return lines;
}

std::string At(const std::vector<std::string>& list, size_t index) {
  return index < list.size() ? list[index] : std::string();
}

// A row as a person reads it: its cells end in VT.
std::string ReadableRow(const std::string& row) {
  std::string out;
  for (const std::string& cell : platform::SplitFields(row, '\x0B')) {
    if (!out.empty()) out += " | ";
    out += cell;
  }
  return out;
}

}  // namespace

void WriteAudit(Database& database, const Actor& actor, const std::vector<AuditChange>& changes) {
  const std::string time = platform::FormatIsoDate(platform::UtcNow());
  for (const AuditChange& change : changes) {
    if (change.oldValue == change.newValue) continue;
    Query query(database.Prepared("INSERT INTO AUDIT VALUES (?, ?, ?, ?, ?, ?)"));
    query->bind(1, time);
    query->bind(2, actor.user);
    query->bind(3, actor.level);
    query->bind(4, change.object);
    query->bind(5, change.oldValue);
    query->bind(6, change.newValue);
    query->exec();
  }
}

std::vector<AuditChange> CompareSettingsTexts(const std::string& object, const std::string& before,
                                              const std::string& after) {
  std::vector<AuditChange> changes;
  const auto oldLines = SettingsLines(before);
  const auto newLines = SettingsLines(after);
  for (size_t line = 0; line < std::max(oldLines.size(), newLines.size()); ++line) {
    const auto oldFields = FieldsOf(At(oldLines, line));
    const auto newFields = FieldsOf(At(newLines, line));
    for (size_t field = 0; field < std::max(oldFields.size(), newFields.size()); ++field) {
      if (At(oldFields, field) == At(newFields, field)) continue;
      changes.push_back({fmt::format("{} line {} field {}", object, line + 1, field + 1),
                         At(oldFields, field), At(newFields, field)});
    }
  }
  return changes;
}

std::vector<AuditChange> CompareRowTexts(const std::string& object, const std::string& before,
                                         const std::string& after) {
  // How much more often each row is in the one text than in the other: a moved row is no change.
  std::map<std::string, int> balance;
  for (const std::string& row : platform::SplitFields(before, '\r')) --balance[row];
  for (const std::string& row : platform::SplitFields(after, '\r')) ++balance[row];
  std::vector<AuditChange> changes;
  for (const auto& [row, count] : balance) {
    for (int i = count; i < 0; ++i) changes.push_back({object, ReadableRow(row), ""});
    for (int i = 0; i < count; ++i) changes.push_back({object, "", ReadableRow(row)});
  }
  return changes;
}

}  // namespace torvell
