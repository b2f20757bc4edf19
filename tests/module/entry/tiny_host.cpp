// A second host library, with nothing but the entry points over the host in memory.
#include <memory>

#include "tests/support/fake_host.h"

namespace {
std::unique_ptr<rvx::FakeHost> host;
}

// Makes the host that the entry points serve. CloseTinyHost deletes it.
extern "C" rvx::FakeHost* OpenTinyHost() {
  host = std::make_unique<rvx::FakeHost>();
  return host.get();
}

extern "C" void CloseTinyHost() { host.reset(); }
