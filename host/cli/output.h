// Where the program writes: results to standard output, progress and messages to standard error.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace torvell {

using Json = nlohmann::ordered_json;

// Writes whole lines. Any thread; one call's lines stay together.
class Output {
 public:
  Output(bool json, bool quiet) : json_(json), quiet_(quiet) {}

  bool json() const { return json_; }
  bool quiet() const { return quiet_; }

  // Results. A document is one line when `line` is set, indented otherwise.
  void Text(const std::string& text);
  void Document(const Json& document);
  void Line(const Json& object);
  // A document with --json, a text for people without.
  void Result(const Json& document, const std::string& text);

  // Progress: left out with --quiet.
  void Progress(const std::string& text);
  // A notice that is never left out.
  void Notice(const std::string& text);
  // "error: " before each line of it.
  void Error(const std::string& text);

  // True once standard output took no more: a closed pipe, a full disk.
  bool OutputLost() const { return lost_; }
  // Hands everything to the system; false if results were lost on the way.
  bool Finish();

 private:
  const bool json_;
  const bool quiet_;
  bool lost_ = false;
};

// A document as one line of text, without its end. Bytes that are no UTF-8 are replaced.
std::string JsonText(const Json& document);

// A double for JSON: null unless it is finite.
Json NumberOrNull(double value);

}  // namespace torvell
