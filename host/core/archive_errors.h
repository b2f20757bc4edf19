// Failures of the archives as the module hears of them.
#pragma once

#include <string>
#include <utility>

#include "boundary/exceptions.h"
#include "host/core/database.h"

namespace torvell {

// `message` is complete, for people.
[[noreturn]] inline void RaiseArchiveException(const std::string& message) {
  rvx::ActionErrorRecord record;
  record.message = message;
  throw new rvx::ArchiveException(record);
}

// Runs `work` and gives its result; a HostError leaves it as an ArchiveException of the same words.
template <class Work>
auto AsArchiveErrors(Work&& work) {
  try {
    return std::forward<Work>(work)();
  } catch (const HostError& error) {
    RaiseArchiveException(error.what());
  }
}

// The same, and failures of the database as WithDatabaseErrors words them.
template <class Work>
auto WithArchiveErrors(const std::string& what, Work&& work) {
  return AsArchiveErrors([&] { return WithDatabaseErrors(what, std::forward<Work>(work)); });
}

}  // namespace torvell
