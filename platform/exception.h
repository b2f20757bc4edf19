// Base of the exceptions that cross the boundary between host and module. They are raised as heap
// objects by pointer (`throw new X`), and whoever catches one deletes it.
#pragma once

#include <cstdint>

namespace platform {

class CException {
 public:
  virtual ~CException() = default;
  // Copies a text for people into a buffer of `size` bytes, terminator included: 1, or 0 if there
  // is nothing to copy or no room. `helpContext`, if not null, gets a help topic number.
  virtual int GetErrorMessage(char* buffer, uint32_t size, uint32_t* helpContext) = 0;
};

}  // namespace platform
