#include "host/cli/terminal.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace torvell {

namespace {

constexpr size_t kMaxLineLength = 4096;

// Restores the terminal's attributes when destroyed.
class AttributeGuard {
 public:
  explicit AttributeGuard(tcflag_t flagsOff) {
    changed_ = tcgetattr(STDIN_FILENO, &saved_) == 0;
    if (!changed_) return;
    termios quiet = saved_;
    quiet.c_lflag &= ~flagsOff;
    tcsetattr(STDIN_FILENO, TCSADRAIN, &quiet);
  }
  ~AttributeGuard() {
    if (changed_) tcsetattr(STDIN_FILENO, TCSADRAIN, &saved_);
  }
  AttributeGuard(const AttributeGuard&) = delete;
  AttributeGuard& operator=(const AttributeGuard&) = delete;

 private:
  termios saved_{};
  bool changed_ = false;
};

}  // namespace

bool SomebodyIsThere() { return isatty(STDIN_FILENO) == 1 && isatty(STDERR_FILENO) == 1; }

bool CanRedraw() {
  const char* kind = std::getenv("TERM");
  return isatty(STDOUT_FILENO) == 1 && isatty(STDERR_FILENO) == 1 && kind != nullptr &&
         std::strcmp(kind, "dumb") != 0;
}

size_t TerminalWidth() {
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

struct KeyMode::Saved {
  AttributeGuard guard{ICANON | ECHO};
};

KeyMode::KeyMode() : saved_(new Saved) {}
KeyMode::~KeyMode() { delete saved_; }

std::optional<char> WaitForKey(int milliseconds) {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  if (poll(&input, 1, milliseconds) <= 0) return std::nullopt;
  char key = 0;
  if (read(STDIN_FILENO, &key, 1) != 1) return std::nullopt;
  return key;
}

std::optional<std::string> AskPassword(const std::string& question) {
  if (!SomebodyIsThere()) return std::nullopt;
  std::optional<std::string> line;
  {
    // Switched off before the question appears, so that fast typing is not shown either.
    const AttributeGuard guard(ECHO);
    std::fputs(question.c_str(), stderr);
    std::fflush(stderr);
    line = ReadLineFrom(STDIN_FILENO);
  }
  std::fputs("\n", stderr);
  return line;
}

std::optional<std::string> ReadLineFrom(int descriptor) {
  std::string line;
  bool any = false;
  while (line.size() < kMaxLineLength) {
    char c = 0;
    const ssize_t count = read(descriptor, &c, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    any = true;
    if (c == '\n') break;
    line += c;
  }
  if (!any) return std::nullopt;
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return line;
}

}  // namespace torvell
