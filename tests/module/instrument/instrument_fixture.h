// An instrument on a fake port with a controller whose state a test sets by hand.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "module/instrument/c_rvx.h"
#include "platform/key_store.h"
#include "tests/support/fake_controller.h"
#include "tests/support/fake_host.h"
#include "tests/support/virtual_run.h"

namespace rvx {

using namespace std::chrono_literals;

// An action that does nothing but keep its texts. Its class key is that of its row in the table.
class PlainAction : public Action {
 public:
  explicit PlainAction(std::string classKey) : classKey_(std::move(classKey)) {}
  void Stop() override {}
  void Start(ActionWatcher* watcher, const std::string& context) override {
    if (watcher == nullptr) return;
    watcher->ActionStarted(context);
    watcher->ActionFinished(context);
  }
  int32_t IsConfigured() override { return 1; }
  int32_t HasRun() override { return 0; }
  int32_t Edit() override { return 1; }
  std::string GetLabel() override { return classKey_; }
  std::string GetClassName() override { return classKey_; }
  std::string GetSampleId() override { return state_; }
  std::string GetStateText() override { return state_; }
  void Lock() override {}
  int32_t IsRunning() override { return 0; }
  void SetSampleId(const std::string& text) override { state_ = text; }
  void SetStateText(const std::string& text) override { state_ = text; }
  int32_t GetRunResult() override { return -1; }
  void Unlock() override {}

 private:
  std::string classKey_;
  std::string state_;
};

template <int kIndex>
std::unique_ptr<Action> MakePlainAction(C_RVX&) {
  return std::make_unique<PlainAction>(kIndex == 0 ? std::string(kNullActionClassKey)
                                                   : "Plain Action " + std::to_string(kIndex));
}

template <int... kIndex>
ActionTable MakePlainTable(std::integer_sequence<int, kIndex...>) {
  ActionTable table;
  (table.push_back(
       {kIndex == 0 ? std::string(kNullActionClassKey) : "Plain Action " + std::to_string(kIndex),
        MakePlainAction<kIndex>}),
   ...);
  return table;
}

// A table of PlainActions with as many rows as the real one.
inline const ActionTable& PlainActions() {
  static const ActionTable table = MakePlainTable(std::make_integer_sequence<int, kActionCount>());
  return table;
}

// The identification of an RVX-D TX, as discovery's listener returns it.
inline constexpr char kModelFour[] = "0QMTRVX 4 02.17SN-1      ";

// A host, a port with a controller at -20 degrees C, and an instrument with PlainActions.
struct InstrumentBench {
  explicit InstrumentBench(const std::string& identification = kModelFour, uint8_t address = 0)
      : port(host.ports.Add("COM1")), controller(port, address) {
    controller.SetWord(2, 44349);   // -20 degrees C
    controller.SetWord(4, 0xFFFF);  // control off
    controller.SetWord(6, 0xE000);  // 15 V
    controller.SetWord(8, 0x2000);  // -15 V
    instrument = std::make_unique<C_RVX>("COM1", address, identification, PlainActions());
  }

  // Waits until the instrument has received this many status frames; false if none comes for 60 s.
  bool WaitForStatus(uint64_t sequence) {
    platform::Event event("test: status");
    instrument->AddStatusEvent(&event);
    bool reached = instrument->GetStatusSequence() >= sequence;
    while (!reached && event.Wait(60s)) reached = instrument->GetStatusSequence() >= sequence;
    instrument->RemoveStatusEvent(&event);
    return reached;
  }

  FakeHost host;
  FakePort& port;
  FakeController controller;
  std::unique_ptr<C_RVX> instrument;
};

// Records the tags of its replies. Any thread may call it.
class TagClient : public CommandClient {
 public:
  explicit TagClient(C_RVX* instrument) : CommandClient(instrument) {}
  ~TagClient() override { Detach(); }
  void CommandReply(const std::string& tag) override {
    {
      platform::PlainGuard guard(lock_);
      tags_.push_back(tag);
    }
    if (onReply) onReply();
    replied_.Set();
  }
  std::vector<std::string> tags() {
    platform::PlainGuard guard(lock_);
    return tags_;
  }
  bool WaitForReplies(size_t count) {
    while (tags().size() < count) {
      if (!replied_.Wait(600s)) return false;
    }
    return true;
  }
  std::function<void()> onReply;

 private:
  platform::PlainLock lock_{"tag client", platform::kLeafRank};
  std::vector<std::string> tags_ GUARDED_BY(lock_);
  platform::Event replied_{"tag client: reply"};
};

}  // namespace rvx
