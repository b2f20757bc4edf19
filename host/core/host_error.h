// Failures of the host that a person has to hear about.
#pragma once

#include <stdexcept>
#include <string>

namespace torvell {

enum class HostErrorKind {
  BadInput,       // something typed or given is not acceptable
  NotAllowed,     // the acting user's level is too low
  DataFolder,     // the data folder can't be made, read or written
  Database,       // the database can't be opened, read or written
  NewerVersion,   // the data folder belongs to a newer version of this program
  ModuleMissing,  // the instrument module can't be loaded
  OtherModule,    // it is of another version, so nothing of it was called
  Tray            // the instrument would not start its tray
};

// Raised by value. what() is complete text for people: what happened, the likely cause, what was
// done and what to do.
class HostError : public std::runtime_error {
 public:
  HostError(HostErrorKind kind, const std::string& message)
      : std::runtime_error(message), kind_(kind) {}
  HostErrorKind kind() const { return kind_; }

 private:
  HostErrorKind kind_;
};

}  // namespace torvell
