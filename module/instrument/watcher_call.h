// Calls of the host's watchers. An exception of a watcher must end neither the run that it watches
// nor the program: the instrument would be left without supervision in the middle of a test.
#pragma once

#include <exception>
#include <string>

#include "boundary/exceptions.h"

namespace rvx {

class C_RVX;

// Reports a watcher's failure to the host's user. `instrument` may be null. Throws nothing.
void ReportWatcherFailure(C_RVX* instrument, const std::string& call, const std::string& reason);
// Returns the message of a caught exception, for people; deletes the exception.
std::string TakeExceptionText(platform::CException* raised);

// Calls `call`, which calls the watcher's operation of the name `name`; throws nothing. Any thread,
// with the locks that its watcher's calls are made under.
template <class Call>
void CallWatcher(C_RVX* instrument, const char* name, const Call& call) {
  std::string reason = "it gives no reason";
  try {
    call();
    return;
  } catch (platform::CException* raised) {
    reason = TakeExceptionText(raised);
  } catch (const std::exception& raised) {
    reason = raised.what();
  } catch (...) {
  }
  ReportWatcherFailure(instrument, name, reason);
}

}  // namespace rvx
