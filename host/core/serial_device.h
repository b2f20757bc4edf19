// A serial device of the operating system, opened for one line.
#pragma once

#include <string>

#include "host/core/file_handle.h"

namespace torvell {

// Opens a terminal device for this program alone: raw, `rate` in baud, 8 data bits, no parity, 1
// stop bit, no flow control, non-blocking. The handle is not open on failure; `failure` then says
// why and what helps, as a whole sentence.
FileHandle OpenSerialDevice(const std::string& device, int rate, std::string& failure);

// Allows other programs to open the device again, then closes it.
void CloseSerialDevice(FileHandle& device);

}  // namespace torvell
