#include "module/instrument/service_access.h"

#include "module/instrument/c_rvx.h"
#include "module/instrument/problems.h"

namespace rvx {

ScriptingResult FindServiceRefusal(C_RVX& instrument) {
  if (ScriptingResult problem = CheckLevel(kLevelOperator, "A service command")) return problem;
  if (instrument.IsTrayRunning() == 0) return std::nullopt;
  return Unable(Code::TrayRunning, "A tray is running or paused.",
                "Nothing was sent. Wait for the end of the tray.");
}

}  // namespace rvx
