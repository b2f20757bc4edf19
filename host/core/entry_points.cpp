// The entries that the module looks up by name.
#include <atomic>

#include "boundary/host.h"
#include "host/core/current_host.h"
#include "host/core/host.h"

namespace rvx {

// The host has no analysis manager; the module only passes this pointer on.
class AnalysisManager {};

}  // namespace rvx

namespace torvell {
namespace {

std::atomic<Host*> currentHost{nullptr};
rvx::AnalysisManager analysisManager;

// Returns the open host. Throws the exception that the module also gets when this library is
// missing.
Host& CurrentHost() {
  Host* host = currentHost.load();
  if (host != nullptr) return *host;
  rvx::ActionErrorRecord record;
  record.message = "No host is open.";
  throw new rvx::InvalidException(record);
}

}  // namespace

bool RegisterHost(Host* host) {
  Host* none = nullptr;
  return currentHost.compare_exchange_strong(none, host);
}

void UnregisterHost(Host* host) { currentHost.compare_exchange_strong(host, nullptr); }

}  // namespace torvell

using torvell::CurrentHost;

rvx::FrameWindow* ExecutePerformCreation(rvx::UserInterfaceClient* client) {
  rvx::FrameWindow* frame = nullptr;
  CurrentHost().userInterface().Run([&] { frame = client->PerformCreation(); });
  return frame;
}

int32_t ExecuteLoadResources(rvx::UserInterfaceClient* client) {
  int32_t result = 0;
  CurrentHost().userInterface().Run([&] { result = client->LoadResources(); });
  return result;
}

rvx::AnalysisArchive* GetAnalysisArchive() { return &CurrentHost().analysisTexts(); }
rvx::AnalysisManager* GetAnalysisManager() { return &torvell::analysisManager; }
rvx::ArchiveManager* GetArchiveManager() { return &CurrentHost().files(); }
rvx::ErrorArchive* GetErrorArchive() { return &CurrentHost().errors(); }
rvx::InstrumentArchive* GetInstrumentArchive() { return &CurrentHost().instrumentTexts(); }
rvx::InstrumentManager* GetInstrumentManager() { return &CurrentHost().instruments(); }
rvx::PortManager* GetPortManager() { return &CurrentHost().ports(); }
rvx::SampleArchive* GetSampleArchive() { return &CurrentHost().samples(); }
rvx::SecurityManager* GetSecurityManager() { return &CurrentHost().users(); }
