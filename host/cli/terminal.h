// The terminal of the program: whether there is one, its width, keys, lines and passwords.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace torvell {

// Returns true if standard input and error both belong to a terminal, so that a person can be
// asked.
bool SomebodyIsThere();

// Returns true if standard output and error both belong to a terminal that can redraw.
bool CanRedraw();

// Returns the columns of the terminal on standard error; 80 if unknown.
size_t TerminalWidth();

// While one exists, keys arrive without Enter and are not shown. Ctrl+C still interrupts.
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

// Returns the next key from standard input, or nothing after `milliseconds` of real time. Real
// time, because a key is not an event of the program's time base, and under virtual time nothing
// may advance while a person thinks.
std::optional<char> WaitForKey(int milliseconds);

// Asks on standard error and reads a line from standard input without showing it. Returns nothing
// at the end of the input or without a terminal.
std::optional<std::string> AskPassword(const std::string& question);

// Reads one line from a descriptor byte by byte, so that the rest stays for the next reader.
// Returns nothing if the input ends before the first byte.
std::optional<std::string> ReadLineFrom(int descriptor);

}  // namespace torvell
