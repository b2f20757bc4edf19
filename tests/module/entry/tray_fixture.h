// A tray on an instrument with the real actions and a scripted controller.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "module/execution/action_classes.h"
#include "module/execution/visc_action.h"
#include "module/instrument/c_rvx.h"
#include "platform/prompt.h"
#include "platform/text.h"
#include "tests/support/fake_host.h"
#include "tests/support/scripted_controller.h"
#include "tests/support/virtual_run.h"

namespace rvx {

using namespace std::chrono_literals;

// Records the tray's calls, one line for each, and lets a test wait for a line or react to it. Any
// thread may call it.
class TrayLog : public TrayWatcher {
 public:
  void TrayStarted(int32_t) override { Add("tray started"); }
  void TrayFinished(int32_t) override { Add("tray finished"); }
  void TrayPauseChanged(int32_t, int32_t paused) override { Add(paused ? "paused" : "resumed"); }
  void SampleStarted(int32_t, int32_t position) override {
    Add("started " + std::to_string(position));
  }
  void SampleStatus(int32_t, int32_t position, std::string text) override {
    Add("status " + std::to_string(position) + " " + text);
  }
  void SampleFinished(int32_t, int32_t position) override {
    Add("finished " + std::to_string(position));
  }

  // The recorded lines without the status lines.
  std::vector<std::string> events() {
    platform::PlainGuard guard(lock_);
    std::vector<std::string> events;
    std::copy_if(lines_.begin(), lines_.end(), std::back_inserter(events),
                 [](const std::string& line) { return line.rfind("status", 0) != 0; });
    return events;
  }
  int Count(const std::string& line) {
    platform::PlainGuard guard(lock_);
    return static_cast<int>(std::count(lines_.begin(), lines_.end(), line));
  }
  // Waits until a line has come `count` times; false after a day.
  bool WaitFor(const std::string& line, int count = 1) {
    while (Count(line) < count) {
      if (!added_.Wait(24h)) return false;
    }
    return true;
  }
  // Called with each line after it is recorded, on the thread that calls the watcher.
  std::function<void(const std::string&)> onLine;

 private:
  void Add(const std::string& line) {
    {
      platform::PlainGuard guard(lock_);
      lines_.push_back(line);
    }
    // Set after what the test does in the call, even if that throws.
    const std::shared_ptr<platform::Event> added(&added_,
                                                 [](platform::Event* event) { event->Set(); });
    if (onLine) onLine(line);
  }

  platform::PlainLock lock_{"tray log", platform::kLeafRank};
  std::vector<std::string> lines_ GUARDED_BY(lock_);
  platform::Event added_{"tray log"};
};

// Gives the answers that the test sets, and records the questions.
class TestPrompter : public platform::Prompter {
 public:
  TestPrompter() { platform::SetPrompter(this); }
  ~TestPrompter() override { platform::SetPrompter(nullptr); }
  platform::MessageAnswer ShowMessage(const std::string& text, platform::MessageButtons buttons,
                                      platform::MessageIcon) override {
    messages.push_back(text);
    return buttons == platform::MessageButtons::Ok ? platform::MessageAnswer::Ok : answer;
  }
  std::optional<int> Choose(const std::string&, const std::vector<std::string>&, int) override {
    ++choices;
    return choice;
  }
  void Beep() override {}

  std::vector<std::string> messages;
  platform::MessageAnswer answer = platform::MessageAnswer::Yes;
  std::optional<int> choice = 0;
  int choices = 0;
};

// A host, an instrument with the real actions and its controller at -20 degrees C, with short test
// times and constants at -20.
struct TrayBench {
  TrayBench() : controller(host.ports.Add("COM1")) {
    controller.SetTemperature(-20.0);
    instrument = std::make_unique<C_RVX>("COM1", 0, controller.identification(), GetActionTable());
    ConfigurationRecord& record = instrument->configuration();
    record.Lock();
    record.fields.b0[4] = 1000.0;
    record.fields.b1[4] = 10.0;
    record.fields.testRecord.injectionTime = 4;
    record.fields.testRecord.coolDownTime = 4;
    record.fields.testRecord.rotorOnTimes[0] = 30;
    record.Unlock();
    WaitForStatus();
  }

  void WaitForStatus() {
    platform::Event event("tray bench: status");
    instrument->AddStatusEvent(&event);
    const uint64_t begin = instrument->GetStatusSequence();
    while (instrument->GetStatusSequence() < begin + 2) event.Wait();
    instrument->RemoveStatusEvent(&event);
  }

  // Puts measuring actions into these positions (from 0).
  void Fill(const std::vector<int>& positions) {
    for (const int position : positions) Put(position, instrument->CreateActionByIndex(1));
  }
  void Put(int position, Action* action) {
    std::shared_ptr<Action> owned(action);
    owned->SetSampleId("oil " + std::to_string(position));
    TrayOfSampleActions* tray = instrument->GetTray(0);
    std::shared_ptr<Action> removed;
    TrayGuard guard(*tray);
    removed = tray->Replace(position, std::move(owned));
  }
  bool TrayIsEmpty() {
    TrayOfSampleActions* tray = instrument->GetTray(0);
    TrayGuard guard(*tray);
    for (int32_t p = 0; p < tray->GetSize(); ++p) {
      if (tray->GetAt(p)->GetClassName() != kNullActionClassKey) return false;
    }
    return true;
  }
  std::vector<int> StoredPositions() {
    std::vector<int> positions;
    for (const Sample& sample : host.samples.samples()) positions.push_back(sample.position);
    return positions;
  }
  std::vector<std::string> ErrorTexts() {
    std::vector<std::string> texts;
    for (const ActionErrorRecord& error : host.instruments.errors()) texts.push_back(error.message);
    return texts;
  }

  FakeHost host;
  TestPrompter prompter;
  TrayLog log;
  ScriptedController controller;
  std::unique_ptr<C_RVX> instrument;
};

}  // namespace rvx
