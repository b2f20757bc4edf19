// Loading of shared libraries by the names that the system uses for them.
#pragma once

#include <string>

namespace platform {

// Handle of a loaded library; null when there is none.
using LibraryHandle = void*;

// Loads "TORVCORE.DLL" as libtorvcore.so, "rvx.dll" as librvx.so, and so on; a name with a "/" is
// taken as a path. Looks where the system's loader looks. Null if it can't be loaded. Each success
// counts: the library is unloaded when FreeLibrary has been called as often.
LibraryHandle LoadLibrary(const std::string& name);

// Address of an entry, or null.
void* FindEntry(LibraryHandle library, const char* entry);

void FreeLibrary(LibraryHandle library);

// What the loader said about the last failure on this thread, for messages.
std::string LastLibraryError();

}  // namespace platform
