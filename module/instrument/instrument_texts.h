// The texts that an instrument needs on threads that can't load texts.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "module/protocol/status_record.h"

namespace rvx {

// Loaded once; afterwards any thread may read.
class InstrumentTexts {
 public:
  // Waits for the user-interface thread, which loads them.
  void Load();

  // Empty for an id that is not loaded.
  const std::string& Get(int stringId) const;
  // "A check standard is due ..." with the number of samples.
  std::string FormatCheckStandardDue(int32_t samples) const;
  // The port's address with the digit, as "RVX 0h".
  std::string FormatPortAddress(uint8_t address) const;
  // Of operations, errors and machine status.
  const StatusTexts& status() const { return status_; }

 private:
  std::map<int, std::string> texts_;
  StatusTexts status_;
};

}  // namespace rvx
