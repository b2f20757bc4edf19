// A second host library: the entry points over the host in memory, and nothing else.
#include <memory>

#include "tests/support/fake_host.h"

namespace {
std::unique_ptr<rvx::FakeHost> host;
}

// Makes the host behind the entry points; the test takes it away again with null state left.
extern "C" rvx::FakeHost* OpenTinyHost() {
  host = std::make_unique<rvx::FakeHost>();
  return host.get();
}

extern "C" void CloseTinyHost() { host.reset(); }
