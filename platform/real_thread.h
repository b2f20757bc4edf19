// Threads of the system, as StartThread makes them under the real and the paced base.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/real_base.h"
#include "platform/thread.h"
#include "platform/time_base.h"

namespace platform::detail {

std::shared_ptr<Thread> StartRealThread(const std::string& name, std::function<void()> body,
                                        ThreadPriority priority);

// Waits until all started threads have ended or the deadline has passed: the names of those that
// have not.
std::vector<std::string> AwaitRealThreads(const Deadline& deadline);

}  // namespace platform::detail
