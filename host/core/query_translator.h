// The archive's query language, as the module writes it.
#pragma once

#include <string>
#include <vector>

#include "host/core/sample_columns.h"

namespace torvell {

// A statement of the database that reads and does nothing else.
struct TranslatedQuery {
  std::string condition;  // behind WHERE, with "?" for each parameter; never empty
  std::vector<ColumnValue> parameters;
};

// Reads
//   SELECT * FROM SAMPLES [WHERE condition [AND condition]...] [ORDER BY SAMPLES.Timestamp] [;]
// A condition stands in parentheses or not: a column's name in brackets; =, <>, <, > or Like; a
// number, a 'text' or a date as #MM/DD/YYYY HH:MM:SS#. Words in any case. There is no escape for an
// apostrophe, and at most one 'text' in a query: so whatever stands between apostrophes can end the
// text that it is part of, but never begin another, and nothing typed into an instrument's id can
// change the meaning of a query. Anything else: false, and `problem` says what was found where.
bool TranslateQuery(const std::string& text, TranslatedQuery& query, std::string& problem);

}  // namespace torvell
