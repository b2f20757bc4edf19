#include "module/execution/context.h"

#include "module/instrument/c_rvx.h"
#include "platform/text.h"

namespace rvx {

std::optional<ActionPlace> ParseContext(const std::string& context) {
  const size_t comma = context.find(',');
  if (comma == std::string::npos) return std::nullopt;
  return ActionPlace{platform::ParseLeadingInt(context.substr(0, comma)),
                     platform::ParseLeadingInt(context.substr(comma + 1))};
}

bool IsTrayPlace(C_RVX& instrument, const ActionPlace& place) {
  instrument.Lock();
  const int32_t positions = instrument.configuration().fields.trayPositions;
  instrument.Unlock();
  return place.tray == 0 && place.position >= 0 && place.position < positions;
}

}  // namespace rvx
