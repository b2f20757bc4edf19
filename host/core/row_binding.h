// Binds column values to a statement and reads them back. SQLite::Exception.
#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <type_traits>
#include <variant>

#include "host/core/sample_columns.h"

namespace torvell {

inline void BindValue(SQLite::Statement& statement, int index, const ColumnValue& value) {
  std::visit(
      [&](const auto& each) {
        if constexpr (std::is_same_v<std::decay_t<decltype(each)>, std::monostate>) {
          statement.bind(index);
        } else {
          statement.bind(index, each);
        }
      },
      value);
}

inline ColumnValue ReadValue(const SQLite::Column& column) {
  if (column.isInteger()) return static_cast<int64_t>(column.getInt64());
  if (column.isFloat()) return column.getDouble();
  if (column.isNull()) return std::monostate();
  return column.getString();
}

}  // namespace torvell
