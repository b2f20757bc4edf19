#include "host/core/module_loader.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <filesystem>
#include <system_error>

#include "boundary/exceptions.h"
#include "boundary/version.h"
#include "platform/library.h"
#include "platform/thread.h"

namespace torvell {
namespace {

using CreateInstrumentsEntry = void (*)(rvx::ArrayOfInstruments**);

// Returns the path of a library in the folder of this one.
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

// Returns the version that the module was built for, read without calling into it; nothing if the
// module does not say.
std::optional<int32_t> VersionOf(platform::LibraryHandle library) {
  const void* version = platform::FindEntry(library, rvx::kBoundaryVersionEntry);
  if (version == nullptr) return std::nullopt;
  return *static_cast<const int32_t*>(version);
}

std::string DescribeOtherVersion(const std::string& moduleName, std::optional<int32_t> version) {
  return fmt::format(
      "The instrument module {} does not belong to this program: it {}, and this program works "
      "with "
      "version {}. Probably only one of the two was updated. The module was not used, no port was "
      "opened and nothing was stored. Install program and module of the same release.",
      moduleName,
      version ? fmt::format("was built for version {} of the boundary between the two", *version)
              : std::string("does not say for which version of the boundary it was built"),
      rvx::kBoundaryVersion);
}

std::optional<HostError> Search(const std::string& moduleName, rvx::ArrayOfInstruments& found) {
  const auto failure = [](const std::string& text) {
    return HostError(HostErrorKind::ModuleMissing, text);
  };
  const platform::LibraryHandle library = LoadModule(moduleName);
  if (library == nullptr) {
    return failure(fmt::format("The instrument module {} can't be loaded ({}). Install it again.",
                               moduleName, platform::LastLibraryError()));
  }
  const auto create =
      reinterpret_cast<CreateInstrumentsEntry>(platform::FindEntry(library, "CreateInstruments"));
  if (create == nullptr) {
    platform::FreeLibrary(library);
    return failure(
        fmt::format("{} is no instrument module: it has no entry CreateInstruments.", moduleName));
  }
  const std::optional<int32_t> version = VersionOf(library);
  if (version != rvx::kBoundaryVersion) {
    platform::FreeLibrary(library);
    return HostError(HostErrorKind::OtherModule, DescribeOtherVersion(moduleName, version));
  }
  try {
    rvx::ArrayOfInstruments* array = &found;
    create(&array);
    return std::nullopt;
  } catch (rvx::CViscoException* raised) {
    const std::string message = raised->GetRecord().message;
    delete raised;
    return failure(
        fmt::format("The instrument module {} could not look for instruments: {}", moduleName,
                    message.empty() ? "it does not find this program's library." : message));
  }
}

}  // namespace

std::optional<HostError> FindInstruments(const std::string& moduleName,
                                         rvx::ArrayOfInstruments& found) {
  std::optional<HostError> failure;
  const auto thread =
      platform::StartThread("discovery", [&] { failure = Search(moduleName, found); });
  thread->Join();
  return failure;
}

}  // namespace torvell
