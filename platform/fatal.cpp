#include "platform/fatal.h"

#include <cstdio>
#include <cstdlib>

namespace platform::detail {
namespace {

void WriteToStandardError(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fputc('\n', stderr);
  std::fflush(stderr);
}

}  // namespace

void Fatal(const std::string& message) {
  WriteToStandardError("platform: " + message);
  std::abort();
}

void AbandonRun(const std::string& report) {
  WriteToStandardError(report);
  std::_Exit(kAbandonedRunExitCode);
}

}  // namespace platform::detail
