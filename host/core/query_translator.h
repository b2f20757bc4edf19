// The archive's query language, as the module writes it.
#pragma once

#include <string>
#include <vector>

#include "host/core/sample_columns.h"

namespace torvell {

// A statement of the database that reads and does nothing else.
struct TranslatedQuery {
  std::string condition;  // what follows WHERE, with "?" for each parameter; never empty
  std::vector<ColumnValue> parameters;
};

// Reads
//   SELECT * FROM SAMPLES [WHERE condition [AND condition]...] [ORDER BY SAMPLES.Timestamp] [;]
// A condition is a column's name in brackets; =, <>, <, > or Like; and a number, a 'text' or a date
// as #MM/DD/YYYY HH:MM:SS#. It may be in parentheses. Words may be in any case. There is no escape
// for an apostrophe, and a query has at most one 'text': an apostrophe that is typed into an
// instrument's id can end the text early but never begin another, so it can't change the meaning of
// the query. Returns false for anything else; `problem` then says what was expected where.
bool TranslateQuery(const std::string& text, TranslatedQuery& query, std::string& problem);

}  // namespace torvell
