#include "host/core/serial_device.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace torvell {
namespace {

speed_t SpeedOf(int rate) {
  switch (rate) {
    case 1200:
      return B1200;
    case 2400:
      return B2400;
    case 4800:
      return B4800;
    case 19200:
      return B19200;
    case 38400:
      return B38400;
    case 57600:
      return B57600;
    case 115200:
      return B115200;
    default:
      return B9600;
  }
}

std::string OwningGroup(const std::string& device) {
  struct stat status = {};
  if (stat(device.c_str(), &status) != 0) return {};
  std::array<char, 4096> buffer{};
  struct group entry = {};
  struct group* found = nullptr;
  if (getgrgid_r(status.st_gid, &entry, buffer.data(), buffer.size(), &found) != 0 ||
      found == nullptr) {
    return fmt::format("{}", status.st_gid);
  }
  return found->gr_name;
}

std::string DescribeOpenFailure(const std::string& device, int reason) {
  switch (reason) {
    case ENOENT:
      return fmt::format(
          "The device {} does not exist: check that the cable or adapter is plugged in and that "
          "the name is right.",
          device);
    case EACCES:
    case EPERM:
      return fmt::format(
          "This user has no right to open {}: it belongs to the group \"{}\"; become a member of "
          "it and log in again.",
          device, OwningGroup(device));
    case EBUSY:
    case EWOULDBLOCK:
      return fmt::format("The device {} is held by another program: end that program.", device);
    case ENODEV:
    case ENXIO:
    case EIO:
      return fmt::format("The device {} does not answer: check that it is plugged in ({}).", device,
                         std::strerror(reason));
    default:
      return fmt::format("The device {} can't be opened: {}.", device, std::strerror(reason));
  }
}

bool MakeRaw(int descriptor, int rate) {
  struct termios settings = {};
  if (tcgetattr(descriptor, &settings) != 0) return false;
  cfmakeraw(&settings);
  settings.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | CSTOPB | CRTSCTS | HUPCL);
  settings.c_cflag |= CS8 | CLOCAL | CREAD;
  settings.c_cc[VMIN] = 1;
  settings.c_cc[VTIME] = 0;
  cfsetispeed(&settings, SpeedOf(rate));
  cfsetospeed(&settings, SpeedOf(rate));
  return tcsetattr(descriptor, TCSANOW, &settings) == 0;
}

}  // namespace

FileHandle OpenSerialDevice(const std::string& device, int rate, std::string& failure) {
  FileHandle handle(open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  if (!handle.IsOpen()) {
    failure = DescribeOpenFailure(device, errno);
    return {};
  }
  if (isatty(handle.get()) == 0) {
    failure = fmt::format("{} is no serial device: name the device of the line.", device);
    return {};
  }
  // Both locks are needed: a privileged program opens a device in spite of TIOCEXCL, and a program
  // that takes no file lock is only kept out by TIOCEXCL.
  if (flock(handle.get(), LOCK_EX | LOCK_NB) != 0 || ioctl(handle.get(), TIOCEXCL) != 0) {
    failure = DescribeOpenFailure(device, errno);
    return {};
  }
  if (!MakeRaw(handle.get(), rate)) {
    failure = fmt::format("The device {} does not take the settings of the line: {}.", device,
                          std::strerror(errno));
    CloseSerialDevice(handle);
    return {};
  }
  tcflush(handle.get(), TCIOFLUSH);
  return handle;
}

void CloseSerialDevice(FileHandle& device) {
  if (!device.IsOpen()) return;
  // A pseudo-terminal outlives its handles and would stay exclusive.
  ioctl(device.get(), TIOCNXCL);
  device.Close();
}

}  // namespace torvell
