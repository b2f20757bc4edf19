#include "host/core/module_loader.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <filesystem>
#include <system_error>

#include "boundary/exceptions.h"
#include "platform/library.h"
#include "platform/thread.h"

namespace torvell {
namespace {

using CreateInstrumentsEntry = void (*)(rvx::ArrayOfInstruments**);

// The path of a library that lies beside this one.
std::string BesideThisLibrary(const std::string& fileName) {
  Dl_info info = {};
  if (dladdr(reinterpret_cast<const void*>(&FindInstruments), &info) == 0) return fileName;
  std::error_code error;
  const auto self = std::filesystem::canonical(info.dli_fname, error);
  return error ? fileName : (self.parent_path() / fileName).string();
}

platform::LibraryHandle LoadModule(const std::string& moduleName) {
  platform::LibraryHandle library = platform::LoadLibrary(moduleName);
  if (library != nullptr || moduleName.find('/') != std::string::npos) return library;
  return platform::LoadLibrary(BesideThisLibrary("librvx.so"));
}

std::string Search(const std::string& moduleName, rvx::ArrayOfInstruments& found) {
  const platform::LibraryHandle library = LoadModule(moduleName);
  if (library == nullptr) {
    return fmt::format("The instrument module {} can't be loaded ({}). Install it again.",
                       moduleName, platform::LastLibraryError());
  }
  const auto create =
      reinterpret_cast<CreateInstrumentsEntry>(platform::FindEntry(library, "CreateInstruments"));
  if (create == nullptr) {
    platform::FreeLibrary(library);
    return fmt::format("{} is no instrument module: it has no entry CreateInstruments.",
                       moduleName);
  }
  try {
    rvx::ArrayOfInstruments* array = &found;
    create(&array);
    return {};
  } catch (rvx::CViscoException* raised) {
    const std::string message = raised->GetRecord().message;
    delete raised;
    return fmt::format("The instrument module {} could not look for instruments: {}", moduleName,
                       message.empty() ? "it does not find this program's library." : message);
  }
}

}  // namespace

std::string FindInstruments(const std::string& moduleName, rvx::ArrayOfInstruments& found) {
  std::string failure;
  const auto thread =
      platform::StartThread("discovery", [&] { failure = Search(moduleName, found); });
  thread->Join();
  return failure;
}

}  // namespace torvell
