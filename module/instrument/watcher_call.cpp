#include "module/instrument/watcher_call.h"

#include <memory>

#include "module/instrument/c_rvx.h"
#include "platform/log.h"

namespace rvx {

std::string TakeExceptionText(platform::CException* raised) {
  const std::unique_ptr<platform::CException> owned(raised);
  if (const auto* failure = dynamic_cast<const CViscoException*>(raised)) {
    if (!failure->GetRecord().message.empty()) return failure->GetRecord().message;
  }
  char text[256];
  return raised->GetErrorMessage(text, sizeof(text), nullptr) != 0 ? text : "it gives no reason";
}

void ReportWatcherFailure(C_RVX* instrument, const std::string& call, const std::string& reason) {
  const std::string message = "The host failed when it was told of " + call + " (" + reason +
                              "), probably by a fault in the host program. The instrument goes on. "
                              "Check that what the screen shows is up to date.";
  try {
    ActionErrorRecord record;
    if (instrument != nullptr) record = instrument->MakeErrorRecord();
    record.message = message;
    record.kind = 1;
    C_RVX::ReportError(record);
  } catch (platform::CException* raised) {
    platform::Log(platform::LogLevel::Error, message + " " + TakeExceptionText(raised));
  } catch (const std::exception& raised) {
    platform::Log(platform::LogLevel::Error, message + " " + raised.what());
  } catch (...) {
    platform::Log(platform::LogLevel::Error, message);
  }
}

}  // namespace rvx
