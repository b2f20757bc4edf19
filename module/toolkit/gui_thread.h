// The thread that windows belong to: the one of the QApplication, which is also the host's
// user-interface thread.
#pragma once

#include <functional>

namespace rvx {

// False without a QApplication: then there are no windows. Any thread.
bool IsGuiThread();

// Stops debug builds when window code runs on another thread. `where` names the caller.
void AssertGuiThread(const char* where);

// Runs the job on the GUI thread and returns when it is done; at once if the caller is that thread.
// Other threads wait for the event loop, so the caller holds no lock that a window may take. The
// job must not throw.
void RunOnGuiThread(const std::function<void()>& job);

// Runs the job later on the GUI thread, in the order of posting. Any thread, under any lock.
void PostToGuiThread(std::function<void()> job);

}  // namespace rvx
