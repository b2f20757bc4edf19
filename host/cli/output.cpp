#include "host/cli/output.h"

#include <cmath>
#include <cstdio>

namespace torvell {

namespace {

// Texts in a data folder may contain bytes that are not UTF-8; they must not end the program.
std::string Dump(const Json& document, int indent) {
  return document.dump(indent, ' ', false, Json::error_handler_t::replace);
}

void ToError(const std::string& prefix, const std::string& text) {
  std::string lines;
  size_t at = 0;
  while (at <= text.size()) {
    const size_t end = std::min(text.find('\n', at), text.size());
    if (end > at || at == 0) lines += prefix + text.substr(at, end - at) + "\n";
    at = end + 1;
  }
  std::fwrite(lines.data(), 1, lines.size(), stderr);
}

}  // namespace

void Output::Text(const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) lost_ = true;
}

void Output::Document(const Json& document) { Text(Dump(document, 2) + "\n"); }

void Output::Line(const Json& object) {
  Text(Dump(object, -1) + "\n");
  if (std::fflush(stdout) != 0) lost_ = true;
}

void Output::Result(const Json& document, const std::string& text) {
  if (json_) {
    Document(document);
  } else {
    Text(text);
  }
}

void Output::Progress(const std::string& text) {
  if (!quiet_) ToError("", text);
}

void Output::Notice(const std::string& text) { ToError("", text); }

void Output::Error(const std::string& text) { ToError("error: ", text); }

bool Output::Finish() {
  if (std::fflush(stdout) != 0) lost_ = true;
  return !lost_;
}

Json NumberOrNull(double value) {
  if (!std::isfinite(value)) return nullptr;
  return value;
}

std::string JsonText(const Json& document) { return Dump(document, -1); }

}  // namespace torvell
