#include "platform/library.h"

#include <dlfcn.h>

#include "platform/text.h"
#include "platform/thread_record.h"

namespace platform {
namespace {

// "TORVCORE.DLL" to "libtorvcore.so"; a path stays.
std::string FileNameOf(const std::string& name) {
  if (name.find('/') != std::string::npos) return name;
  std::string base;
  for (const char c : name) {
    base += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  constexpr std::string_view kEnding = ".dll";
  if (base.size() <= kEnding.size() || !base.ends_with(kEnding)) return base;
  return "lib" + base.substr(0, base.size() - kEnding.size()) + ".so";
}

// Keeps what the loader said: its own text lasts only until the next call.
void KeepError() {
  const char* text = dlerror();
  detail::CurrentRecord().libraryError = text != nullptr ? text : "unknown error of the loader";
}

}  // namespace

LibraryHandle LoadLibrary(const std::string& name) {
  LibraryHandle library = dlopen(FileNameOf(name).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) KeepError();
  return library;
}

void* FindEntry(LibraryHandle library, const char* entry) {
  if (library == nullptr) {
    detail::CurrentRecord().libraryError = std::string("no library to find ") + entry + " in";
    return nullptr;
  }
  void* address = dlsym(library, entry);
  if (address == nullptr) KeepError();
  return address;
}

void FreeLibrary(LibraryHandle library) {
  if (library != nullptr && dlclose(library) != 0) KeepError();
}

std::string LastLibraryError() { return detail::CurrentRecord().libraryError; }

}  // namespace platform
