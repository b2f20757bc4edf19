// What an instrument consists of. Only for the files of C_RVX itself.
#pragma once

#include <atomic>
#include <memory>

#include "module/instrument/c_rvx.h"
#include "module/instrument/conversation.h"
#include "module/instrument/count_conversion.h"
#include "module/instrument/error_clients.h"
#include "module/instrument/instrument_line.h"
#include "module/instrument/instrument_peer.h"
#include "module/instrument/instrument_texts.h"
#include "module/instrument/instrument_users.h"
#include "module/instrument/last_reply_client.h"
#include "module/instrument/lock_ranks.h"
#include "module/instrument/operation_clock.h"
#include "module/instrument/posted_jobs.h"
#include "module/instrument/standards_in_use.h"
#include "module/instrument/status_history.h"
#include "module/instrument/status_window_holder.h"
#include "module/instrument/tray_controller.h"

namespace rvx {

// Each part has its own lock and needs only parts above it, or the instrument's operations.
struct C_RVX::Parts {
  Parts(C_RVX& instrument, const ActionTable& actionTable);

  const ActionTable& actions;
  InstrumentTexts texts;  // constant after Open
  StatusHistory status;
  CountConversion conversion;
  OperationClock operationClock;
  StandardsInUse standards;
  InstrumentUsers users;
  ErrorClients errorClients;
  StatusWindowHolder statusWindow;
  TrayOfSampleActions tray{kTrayLockRank};
  TrayController trayController;
  InstrumentLine line;
  InstrumentPeer peer;
  std::unique_ptr<Conversation> conversation;     // from Open on
  std::unique_ptr<LastReplyClient> lastReply;     // until the destructor
  std::unique_ptr<PostedJobs> userInterfaceJobs;  // until Close
  platform::Event closing{"instrument closes", platform::Event::Mode::ManualReset};
  std::atomic<bool> settingsTaken{false};  // by the last LoadSettingsText
  bool isOpen = false;                     // constructor and destructor alone
};

}  // namespace rvx
