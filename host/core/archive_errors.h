// Failures of the archives as the module hears of them.
#pragma once

#include <string>
#include <utility>

#include "boundary/exceptions.h"
#include "host/core/database.h"

namespace torvell {

// Throws an ArchiveException; the catcher deletes it. `message` is complete text for people.
[[noreturn]] inline void RaiseArchiveException(const std::string& message) {
  rvx::ActionErrorRecord record;
  record.message = message;
  throw new rvx::ArchiveException(record);
}

// Runs `work` and returns its result; turns a HostError into an ArchiveException with the same
// message.
template <class Work>
auto AsArchiveErrors(Work&& work) {
  try {
    return std::forward<Work>(work)();
  } catch (const HostError& error) {
    RaiseArchiveException(error.what());
  }
}

// The same, and also turns failures of the database into messages, see WithDatabaseErrors.
template <class Work>
auto WithArchiveErrors(const std::string& what, Work&& work) {
  return AsArchiveErrors([&] { return WithDatabaseErrors(what, std::forward<Work>(work)); });
}

}  // namespace torvell
