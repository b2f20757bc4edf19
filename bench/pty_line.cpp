#include "bench/pty_line.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "bench/measure.h"
#include "module/protocol/frames.h"
#include "module/protocol/status_record.h"

namespace bench {
namespace {

void MakeRaw(int descriptor) {
  termios settings{};
  if (tcgetattr(descriptor, &settings) != 0) Fail("no pseudo-terminal");
  cfmakeraw(&settings);
  if (tcsetattr(descriptor, TCSANOW, &settings) != 0) Fail("no raw pseudo-terminal");
}

}  // namespace

PtyLine::PtyLine() : farEnd_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
  if (farEnd_ < 0 || grantpt(farEnd_) != 0 || unlockpt(farEnd_) != 0) Fail("no pseudo-terminal");
  device_ = ptsname(farEnd_);
  keptOpen_ = open(device_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (keptOpen_ < 0) Fail("the pseudo-terminal can't be opened");
  MakeRaw(keptOpen_);
}

PtyLine::~PtyLine() {
  close(keptOpen_);
  close(farEnd_);
}

std::string StatusFrame(const std::string& tag) {
  // Count, temperature of a cold cell, control off, supplies; no operation, no error.
  std::array<uint8_t, rvx::kStatusRecordSize> record = {0,    1,    0xE2, 0,    0xFF,
                                                        0xFF, 0xE0, 0,    0x20, 0};
  if (tag.size() == 2) {
    record[rvx::kStatusRecordSize - 2] = static_cast<uint8_t>(tag[0]);
    record[rvx::kStatusRecordSize - 1] = static_cast<uint8_t>(tag[1]);
  }
  return "-0QST" + rvx::HexPayload(record) + "\r";
}

InstantController::InstantController(PtyLine& line, Hook before)
    : line_(line), before_(std::move(before)) {
  if (pipe(stop_) != 0) Fail("no pipe");
  thread_ = std::thread([this] { Main(); });
}

InstantController::~InstantController() {
  WriteBytes(stop_[1], "x");
  thread_.join();
  close(stop_[0]);
  close(stop_[1]);
}

void InstantController::Main() {
  std::string pending;
  for (;;) {
    std::array<pollfd, 2> wait = {pollfd{line_.farEnd(), POLLIN, 0}, pollfd{stop_[0], POLLIN, 0}};
    if (poll(wait.data(), wait.size(), -1) < 0 && errno != EINTR) Fail("the line can't be heard");
    if (wait[1].revents != 0) return;
    if ((wait[0].revents & POLLIN) == 0) continue;
    std::array<char, 256> bytes;
    const ssize_t count = read(line_.farEnd(), bytes.data(), bytes.size());
    if (count <= 0) Fail("the line broke");
    pending.append(bytes.data(), static_cast<size_t>(count));
    for (size_t end; (end = pending.find('\r')) != std::string::npos; pending.erase(0, end + 1)) {
      Answer(pending.substr(1, end - 1));
    }
  }
}

void InstantController::Answer(const std::string& text) {
  if (before_) before_(text);
  // A command's status frame names it; the reply to a query does not.
  const bool isCommand = text.size() >= 4 && text[1] == 'C';
  WriteBytes(line_.farEnd(), StatusFrame(isCommand ? text.substr(2, 2) : ""));
}

void WriteBytes(int descriptor, const std::string& bytes) {
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count = write(descriptor, bytes.data() + done, bytes.size() - done);
    if (count > 0) {
      done += static_cast<size_t>(count);
    } else if (count < 0 && errno == EAGAIN) {
      pollfd wait = {descriptor, POLLOUT, 0};
      poll(&wait, 1, -1);
    } else if (errno != EINTR) {
      Fail("the line takes nothing");
    }
  }
}

}  // namespace bench
