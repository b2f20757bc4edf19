// How an instrument reacts to the frames that its conversation sends and receives.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "module/instrument/configuration_record.h"
#include "module/instrument/conversation.h"
#include "module/instrument/count_conversion.h"
#include "module/instrument/error_clients.h"
#include "module/instrument/instrument_line.h"
#include "module/instrument/status_history.h"
#include "module/instrument/status_window_holder.h"

namespace rvx {

class C_RVX;

// The instrument's side of the conversation: keeps the contents of the frames, and reacts to them.
// The threads are those of ConversationPeer.
class InstrumentPeer : public ConversationPeer {
 public:
  // The parts of the instrument that frames change. Not owned; all must outlive the peer.
  struct Parts {
    ConfigurationRecord& configuration;
    InstrumentLine& line;
    StatusHistory& status;
    CountConversion& conversion;
    ErrorClients& errorClients;
    StatusWindowHolder& statusWindow;
  };
  InstrumentPeer(C_RVX& instrument, const Parts& parts) : instrument_(instrument), parts_(parts) {}

  // Puts model, options, firmware and serial number of an identification text into the
  // configuration. Any thread.
  void TakeIdentification(const std::string& identification);

  void SendFrame(std::span<const uint8_t> frame) override;
  void PurgePort() override;
  platform::Milliseconds GetStatusPeriod() override;
  void InstrumentNotResponding() override;
  std::optional<StatusRecord> KeepStatus(std::span<const uint8_t> data) override;
  void FollowStatus(const StatusRecord& record) override;
  void KeepIdentity(std::span<const uint8_t> frame) override;
  void KeepSelfTest(uint16_t word) override;
  void FrameProcessed() override;

 private:
  // Reports steppers that have lost their position, once for each loss.
  void CheckMachineStatus(uint8_t machineStatus);
  // Passes an error code to the clients, and to the host if no client handles it.
  void ReportInstrumentError(uint8_t code);

  C_RVX& instrument_;
  const Parts parts_;
  bool isFirstStatus_ = true;  // only the thread that hands over received bytes
};

}  // namespace rvx
