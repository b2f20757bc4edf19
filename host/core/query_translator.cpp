#include "host/core/query_translator.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "platform/text.h"

namespace torvell {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Reads the text from left to right. The first failure is noted and ends the reading.
class Parser {
 public:
  Parser(const std::string& text, TranslatedQuery& query) : text_(text), query_(query) {}

  bool Parse() {
    if (!Word("SELECT") || !Symbol('*') || !Word("FROM") || !Word("SAMPLES")) return false;
    std::string condition;
    if (TakeWord("WHERE")) {
      do {
        if (!condition.empty()) condition += " AND ";
        if (!Condition(condition)) return false;
      } while (TakeWord("AND"));
    }
    if (TakeWord("ORDER") && !(Word("BY") && Word("SAMPLES") && Symbol('.') && Word("Timestamp"))) {
      return false;
    }
    if (Peek() == ';') ++at_;
    Peek();
    if (at_ < text_.size()) return Fail("the end of the query");
    query_.condition = condition.empty() ? "1" : condition;
    return true;
  }

  const std::string& problem() const { return problem_; }

 private:
  bool Fail(const std::string& expected) {
    problem_ = fmt::format("{} is expected at character {}", expected, at_ + 1);
    return false;
  }

  // Skips blanks and returns the next character; 0 at the end.
  char Peek() {
    while (at_ < text_.size() && text_[at_] == ' ') ++at_;
    return at_ < text_.size() ? text_[at_] : '\0';
  }

  // Skips the word if it comes next.
  bool TakeWord(std::string_view word) {
    Peek();
    const std::string_view rest = std::string_view(text_).substr(at_);
    if (platform::CompareNoCase(rest.substr(0, word.size()), word) != 0) return false;
    if (rest.size() > word.size() && IsLetter(rest[word.size()])) return false;
    at_ += word.size();
    return true;
  }

  bool Word(std::string_view word) {
    if (!TakeWord(word)) return Fail(std::string(word));
    return true;
  }

  bool Symbol(char symbol) {
    if (Peek() != symbol) return Fail(fmt::format("\"{}\"", symbol));
    ++at_;
    return true;
  }

  bool Condition(std::string& out) {
    const bool parenthesis = Peek() == '(';
    if (parenthesis) ++at_;
    const SampleColumn* column = Column();
    if (column == nullptr) return false;
    const std::string op = Operator();
    if (op.empty()) return Fail("=, <>, <, > or Like");
    ColumnValue value;
    if (!Value(*column, op, value)) return false;
    query_.parameters.push_back(std::move(value));
    out += Comparison(*column, op);
    return !parenthesis || Symbol(')');
  }

  static std::string Comparison(const SampleColumn& column, const std::string& op) {
    if (op == "Like") return fmt::format("archive_like(?, \"{}\")", column.name);
    std::string comparison = fmt::format("\"{}\" {} ?", column.name, op);
    if (column.type == ColumnType::Text) return comparison + " COLLATE NOCASE";
    // Null and invalid dates sort before all others, but are not earlier than any of them.
    if (column.type == ColumnType::Date && op == "<") {
      return fmt::format("({} AND \"{}\" >= '0')", comparison, column.name);
    }
    return comparison;
  }

  const SampleColumn* Column() {
    if (!Symbol('[')) return nullptr;
    const size_t end = text_.find(']', at_);
    const std::string name =
        end == std::string::npos ? std::string() : text_.substr(at_, end - at_);
    const auto& columns = SampleColumns();
    auto found = std::find_if(columns.begin(), columns.end(), [&](const SampleColumn& column) {
      return platform::CompareNoCase(column.name, name) == 0;
    });
    if (found == columns.end()) {
      Fail("the name of a column");
      return nullptr;
    }
    at_ = end + 1;
    return &*found;
  }

  std::string Operator() {
    static constexpr std::array<const char*, 4> kSymbols = {"<>", "=", "<", ">"};
    Peek();
    for (const char* symbol : kSymbols) {
      if (text_.compare(at_, std::string_view(symbol).size(), symbol) == 0) {
        at_ += std::string_view(symbol).size();
        return symbol;
      }
    }
    return TakeWord("Like") ? "Like" : "";
  }

  bool Value(const SampleColumn& column, const std::string& op, ColumnValue& value) {
    const bool isText = column.type == ColumnType::Text || column.type == ColumnType::Guid;
    if (op == "Like" && !isText) return Fail("a column of text before Like");
    if (isText) return Text(value);
    if (column.type == ColumnType::Date) return DateValue(value);
    return Number(value);
  }

  bool Text(ColumnValue& value) {
    if (Peek() != '\'') return Fail("a text between apostrophes");
    if (texts_++ > 0) return Fail("no second text");
    const size_t end = text_.find('\'', at_ + 1);
    if (end == std::string::npos) return Fail("a closing apostrophe");
    value = text_.substr(at_ + 1, end - at_ - 1);
    at_ = end + 1;
    return true;
  }

  bool Number(ColumnValue& value) {
    Peek();
    const size_t begin = at_;
    size_t end = at_;
    if (end < text_.size() && (text_[end] == '-' || text_[end] == '+')) ++end;
    while (end < text_.size() && (IsDigit(text_[end]) || text_[end] == '.')) ++end;
    const auto number = platform::ParseDouble(std::string_view(text_).substr(begin, end - begin));
    if (!number) return Fail("a number");
    value = *number;
    at_ = end;
    return true;
  }

  bool DateValue(ColumnValue& value) {
    static constexpr std::string_view kForm = "#MM/DD/YYYY HH:MM:SS#";
    const std::string expected = fmt::format("a date as {}", kForm);
    Peek();
    if (text_.size() - at_ < kForm.size()) return Fail(expected);
    for (size_t i = 0; i < kForm.size(); ++i) {
      const char c = text_[at_ + i];
      if (IsLetter(kForm[i]) ? !IsDigit(c) : c != kForm[i]) return Fail(expected);
    }
    const auto number = [this](size_t offset, size_t digits) {
      return platform::ParseInt(std::string_view(text_).substr(at_ + offset, digits)).value_or(0);
    };
    const platform::Date date(number(7, 4), number(1, 2), number(4, 2), number(12, 2),
                              number(15, 2), number(18, 2));
    if (!date.IsValid()) return Fail(expected);
    value = platform::FormatIsoDate(date);
    at_ += kForm.size();
    return true;
  }

  const std::string& text_;
  TranslatedQuery& query_;
  size_t at_ = 0;
  int texts_ = 0;
  std::string problem_;
};

}  // namespace

bool TranslateQuery(const std::string& text, TranslatedQuery& query, std::string& problem) {
  query = {};
  Parser parser(text, query);
  if (parser.Parse()) return true;
  problem = parser.problem();
  return false;
}

}  // namespace torvell
