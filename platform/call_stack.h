// Where in the program a thread is, for reports of a run that is given up.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace platform::detail {

// Return addresses, the innermost first.
using CallStack = std::vector<const void*>;

// The frame of the calling function; it and those above it can be walked while the function has not
// returned, also from another thread.
#define PLATFORM_THIS_FRAME __builtin_frame_address(0)

// The calls that lead to a frame. Empty or cut short where the chain of frames is broken, which
// happens in libraries that are built without frame pointers.
CallStack WalkFrames(const void* frame);

// For each stack the innermost calls outside of the platform and the standard library, as lines of
// text for people: the function, its file and its line if the program has debug information and the
// system has addr2line, else the library and the offset. It starts a process, so it is for a
// program that is about to end.
std::vector<std::vector<std::string>> DescribeCalls(std::span<const CallStack> stacks);

}  // namespace platform::detail
