#include "module/execution/screen_failure.h"

#include <exception>

#include "module/instrument/c_rvx.h"
#include "module/instrument/watcher_call.h"
#include "platform/log.h"

namespace rvx {

std::string DescribeRaised() {
  try {
    throw;
  } catch (platform::CException* raised) {
    return TakeExceptionText(raised);
  } catch (const std::exception& raised) {
    return raised.what();
  } catch (...) {
    return "it gives no reason";
  }
}

void ReportScreenFailure(C_RVX* instrument, const std::string& label, const std::string& reason) {
  const std::string message =
      "\"" + label + "\" was closed because it failed (" + reason +
      "), probably by a fault in the program. Whatever it had set moving was stopped, and what it "
      "had stored is kept. Open it again and check what it shows; if it fails again, keep this "
      "message for the service.";
  try {
    ActionErrorRecord record;
    if (instrument != nullptr) record = instrument->MakeErrorRecord();
    record.message = message;
    record.kind = 1;
    C_RVX::ReportError(record);
  } catch (...) {
    platform::Log(platform::LogLevel::Error, message + " " + DescribeRaised());
  }
}

}  // namespace rvx
