#include "platform/fatal.h"

#include <cstdio>
#include <cstdlib>

#include "platform/end_program.h"
#include "platform/virtual_base.h"

namespace platform::detail {
namespace {

void WriteToStandardError(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fputc('\n', stderr);
  std::fflush(stderr);
}

}  // namespace

void Fatal(const std::string& message) {
  std::string text = "platform: " + message;
  if (const VirtualBase* base = VirtualBase::Current()) {
    text += "\n" + base->DescribeRun();
    text.pop_back();
  }
  WriteToStandardError(text);
  std::abort();
}

}  // namespace platform::detail

void platform::EndProgram(const std::string& message) { detail::Fatal(message); }

namespace platform::detail {

void AbandonRun(const std::string& report) {
  WriteToStandardError(report);
  std::_Exit(kAbandonedRunExitCode);
}

}  // namespace platform::detail
