// The least that a program can do to keep a line polled: one thread, one poll/write/read for each
// period. The cost of an idle instrument is compared with it. Runs until it is killed. Usage:
// bare_poll DEVICE PERIOD_MS
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <string>

#include "bench/measure.h"
#include "bench/pty_line.h"
#include "host/core/serial_device.h"

int main(int argc, char** argv) {
  if (argc < 3) bench::Fail("usage: bare_poll DEVICE PERIOD_MS");
  const double period = std::stoi(argv[2]) / 1000.0;
  std::string failure;
  torvell::FileHandle device = torvell::OpenSerialDevice(argv[1], 9600, failure);
  if (!device.IsOpen()) bench::Fail(failure);
  double next = bench::Now();
  for (;;) {
    const double rest = next - bench::Now();
    if (rest <= 0) {
      bench::WriteBytes(device.get(), "/0QST\r");
      next += period;
      continue;
    }
    pollfd wait = {device.get(), POLLIN, 0};
    if (poll(&wait, 1, static_cast<int>(std::ceil(rest * 1000))) <= 0) continue;
    std::array<char, 256> bytes;
    if (read(device.get(), bytes.data(), bytes.size()) <= 0) bench::Fail("the line broke");
  }
}
