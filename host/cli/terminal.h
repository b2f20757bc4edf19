// The terminal in front of the program: whether there is one, its width, keys, lines and passwords.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace torvell {

// Standard input and error both belong to a terminal: somebody can be asked.
bool SomebodyIsThere();

// Standard output and error both belong to a terminal that can redraw.
bool CanRedraw();

// Columns of the terminal on standard error; 80 when unknown.
size_t TerminalWidth();

// While one lives, keys arrive without Enter and are not shown. Ctrl+C still interrupts.
class KeyMode {
 public:
  KeyMode();
  ~KeyMode();
  KeyMode(const KeyMode&) = delete;
  KeyMode& operator=(const KeyMode&) = delete;

 private:
  struct Saved;
  Saved* saved_;
};

// The next key from standard input, or nothing within `milliseconds` of real time: a person's key
// is no event of the program's time base, and under virtual time nothing may move while a person
// thinks.
std::optional<char> WaitForKey(int milliseconds);

// Asks on standard error and reads a line from standard input without showing it. Nothing at its
// end or when there is no terminal.
std::optional<std::string> AskPassword(const std::string& question);

// Reads one line from a descriptor byte by byte, so that what follows stays for the next reader.
// Nothing if it ends before anything came.
std::optional<std::string> ReadLineFrom(int descriptor);

}  // namespace torvell
