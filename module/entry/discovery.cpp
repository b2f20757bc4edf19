#include "module/entry/discovery.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "boundary/host.h"
#include "module/entry/rvx_listener.h"
#include "module/execution/action_classes.h"
#include "module/instrument/simulate_setting.h"
#include "module/protocol/frames.h"
#include "module/scripting/scriptable_instrument.h"

namespace rvx {
namespace {

constexpr std::array<const char*, 4> kPortNames = {"COM1", "COM2", "COM3", "COM4"};
constexpr uint8_t kAddresses = 16;
constexpr platform::Milliseconds kBeforeOpening{1000};
constexpr platform::Milliseconds kReplyWait{200};
// In a port's settings text: "1" where the port is set aside for an instrument.
constexpr size_t kInUseCharacter = 9;

// One entry for each port and address: whether an instrument was found there. The instruments are
// the host's, and nothing clears an entry.
std::array<bool, kPortNames.size() * kAddresses> instrumentTable{};

bool SaysNotInUse(const std::string& settings) {
  return settings.size() > kInUseCharacter && settings[kInUseCharacter] == '0';
}

// A port in use is not opened unless its settings reserve it for instruments.
bool MayOpen(PortManager& ports, const std::string& name) {
  if (ports.IsPortInUse(name) == 0) return true;
  std::string settings;
  ports.GetPortSettings(name, settings);
  return !settings.empty() && !SaysNotInUse(settings);
}

void SetInUse(PortManager& ports, const std::string& name) {
  std::string settings;
  ports.GetPortSettings(name, settings);
  if (!SaysNotInUse(settings)) return;
  settings[kInUseCharacter] = '1';
  ports.SetPortSettings(name, settings);
}

// Queries one address; returns the identification text of the instrument there, or nothing.
std::optional<std::string> Probe(Port& port, RVXListener& listener, uint8_t address) {
  listener.Try(address);
  port.Write(MakeFrame(IdentityQuery(address)));
  platform::Sleep(kReplyWait);
  port.Purge();
  return listener.Found();
}

// Tries the addresses of an open port until one has an instrument: at most one for each port. Once
// an instrument was found on any port, only the first address of every further port is tried.
void TryAddresses(PortManager& ports, size_t portIndex, Port& port, RVXListener& listener,
                  ArrayOfInstruments& instruments, int& count) {
  const std::string name = kPortNames[portIndex];
  for (uint8_t address = 0; address < kAddresses; ++address) {
    bool& entry = instrumentTable[portIndex * kAddresses + address];
    if (!entry) {
      const std::optional<std::string> reply = Probe(port, listener, address);
      // A simulated instrument does not reply to a probe: it gets the first address without a
      // reply.
      if (reply || (IsSimulated() != 0 && count < 1)) {
        SetInUse(ports, name);
        instruments.push_back(new ScriptableInstrument(name, address, reply.value_or(std::string()),
                                                       GetActionTable()));
        entry = true;
        ++count;
      }
    }
    if (count > 0) return;
  }
}

}  // namespace

void DiscoverInstruments(ArrayOfInstruments& instruments) {
  PortManager& ports = *GetPortManager();
  if (std::find(instrumentTable.begin(), instrumentTable.end(), true) != instrumentTable.end()) {
    return;
  }
  int count = 0;
  for (size_t index = 0; index < kPortNames.size(); ++index) {
    const std::string name = kPortNames[index];
    RVXListener listener;
    if (!MayOpen(ports, name)) continue;
    platform::Sleep(kBeforeOpening);
    if (Port* port = ports.OpenPort(name, &listener)) {
      TryAddresses(ports, index, *port, listener, instruments, count);
    }
    ports.ClosePort(name, &listener);
  }
}

void ForgetDiscoveredInstruments() { instrumentTable.fill(false); }

}  // namespace rvx
