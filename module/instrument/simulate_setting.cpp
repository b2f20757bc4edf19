#include "module/instrument/simulate_setting.h"

#include "platform/key_store.h"

namespace rvx {

int32_t IsSimulated() {
  static constexpr char kKey[] =
      "HKEY_LOCAL_MACHINE\\SOFTWARE\\HaldenInstrument\\TORVELL\\Instruments\\RVX";
  return static_cast<int32_t>(platform::ReadKeyValue(kKey, "Simulate").value_or(0));
}

}  // namespace rvx
