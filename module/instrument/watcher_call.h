// Calls of the host's watchers. What a watcher raises must neither end the run that it watches nor
// the program with it: an instrument would be left alone in the middle of a test.
#pragma once

#include <exception>
#include <string>

#include "boundary/exceptions.h"

namespace rvx {

class C_RVX;

// Reports a watcher's failure to the host's user. `instrument` may be null. Raises nothing.
void ReportWatcherFailure(C_RVX* instrument, const std::string& call, const std::string& reason);
// What a caught exception says for people; deletes it.
std::string TakeExceptionText(platform::CException* raised);

// Calls `call`, which calls the watcher's operation of the name `name`; raises nothing. Any thread,
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
