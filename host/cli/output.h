// Where the program writes: results to standard output, progress and messages to standard error.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace torvell {

using Json = nlohmann::ordered_json;

// Writes whole lines. Any thread; the lines of one call stay together.
class Output {
 public:
  Output(bool json, bool quiet) : json_(json), quiet_(quiet) {}

  bool json() const { return json_; }
  bool quiet() const { return quiet_; }

  // Results for standard output: a text, a document indented for reading, an object in one line.
  void Text(const std::string& text);
  void Document(const Json& document);
  void Line(const Json& object);
  // Prints the document with --json, else the text.
  void Result(const Json& document, const std::string& text);

  // Progress: left out with --quiet.
  void Progress(const std::string& text);
  // A notice that is never left out.
  void Notice(const std::string& text);
  // Prints the text with "error: " before each of its lines.
  void Error(const std::string& text);

  // True once a write to standard output has failed: a closed pipe, a full disk.
  bool OutputLost() const { return lost_; }
  // Flushes everything; returns false if results were lost.
  bool Finish();

 private:
  const bool json_;
  const bool quiet_;
  bool lost_ = false;
};

// Returns a document as one line of text, without a line end. Bytes that are not UTF-8 are
// replaced.
std::string JsonText(const Json& document);

// Returns a double for JSON: null if it is infinite or NaN.
Json NumberOrNull(double value);

}  // namespace torvell
