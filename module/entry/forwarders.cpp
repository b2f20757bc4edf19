// The host library, reached by name and entry point only. Each call loads it anew (one more count
// for each) and looks the entry up, so that the module can be loaded before the host is complete.
#include <memory>
#include <string>

#include "boundary/host.h"
#include "platform/library.h"

namespace rvx {
namespace {

constexpr char kHostLibrary[] = "TORVCORE.DLL";

// Returns the entry `name` as a function of the type of `forwarder`. Throws InvalidException if the
// library or the entry is missing.
template <class Function>
Function* FindHostEntry(const char* name) {
  platform::LibraryHandle library = platform::LoadLibrary(kHostLibrary);
  if (library == nullptr) {
    ActionErrorRecord record;
    record.message = std::string("The host library TORVCORE could not be loaded: ") +
                     platform::LastLibraryError();
    throw new InvalidException(std::move(record));
  }
  void* entry = platform::FindEntry(library, name);
  if (entry == nullptr) {
    platform::FreeLibrary(library);
    ActionErrorRecord record;
    record.message = std::string("The host library TORVCORE has no entry ") + name + ".";
    throw new InvalidException(std::move(record));
  }
  return reinterpret_cast<Function*>(entry);
}

}  // namespace
}  // namespace rvx

extern "C" {

rvx::FrameWindow* ExecutePerformCreation(rvx::UserInterfaceClient* client) {
  return rvx::FindHostEntry<decltype(ExecutePerformCreation)>("ExecutePerformCreation")(client);
}

int32_t ExecuteLoadResources(rvx::UserInterfaceClient* client) {
  return rvx::FindHostEntry<decltype(ExecuteLoadResources)>("ExecuteLoadResources")(client);
}

rvx::AnalysisArchive* GetAnalysisArchive() {
  return rvx::FindHostEntry<decltype(GetAnalysisArchive)>("GetAnalysisArchive")();
}

rvx::AnalysisManager* GetAnalysisManager() {
  return rvx::FindHostEntry<decltype(GetAnalysisManager)>("GetAnalysisManager")();
}

rvx::ArchiveManager* GetArchiveManager() {
  return rvx::FindHostEntry<decltype(GetArchiveManager)>("GetArchiveManager")();
}

rvx::ErrorArchive* GetErrorArchive() {
  return rvx::FindHostEntry<decltype(GetErrorArchive)>("GetErrorArchive")();
}

rvx::InstrumentArchive* GetInstrumentArchive() {
  return rvx::FindHostEntry<decltype(GetInstrumentArchive)>("GetInstrumentArchive")();
}

rvx::InstrumentManager* GetInstrumentManager() {
  return rvx::FindHostEntry<decltype(GetInstrumentManager)>("GetInstrumentManager")();
}

rvx::PortManager* GetPortManager() {
  return rvx::FindHostEntry<decltype(GetPortManager)>("GetPortManager")();
}

rvx::SampleArchive* GetSampleArchive() {
  return rvx::FindHostEntry<decltype(GetSampleArchive)>("GetSampleArchive")();
}

rvx::SecurityManager* GetSecurityManager() {
  return rvx::FindHostEntry<decltype(GetSecurityManager)>("GetSecurityManager")();
}

}  // extern "C"
