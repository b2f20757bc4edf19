// What tests of windows share: waiting for a state while events are handled, and an instrument for
// the windows.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QLocale>
#include <QTest>
#include <QTimer>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "module/toolkit/gui_thread.h"
#include "platform/prompt.h"
#include "platform/thread.h"
#include "platform/time_base.h"

// So that a failed comparison can be read.
inline void PrintTo(const QString& text, std::ostream* out) {
  *out << '"' << text.toStdString() << '"';
}

namespace rvx {

// Handles events until the state is reached. Returns false after a time so long that something must
// hang.
inline bool PumpUntil(const std::function<bool()>& reached) {
  return QTest::qWaitFor(reached, 60000);
}

// Runs a job on another thread and handles events until it has ended.
inline void RunBeside(const std::function<void()>& job) {
  const auto thread = platform::StartThread("beside the windows", job);
  EXPECT_TRUE(PumpUntil([&] { return thread->HasEnded(); }));
  thread->Join();
}

// Calls `act` as soon as a window of this class is shown; for dialogs that wait inside a call.
template <class Window>
void WhenShown(const std::function<void(Window&)>& act) {
  QTimer::singleShot(0, qApp, [act] {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* window = dynamic_cast<Window*>(widget);
      if (window != nullptr && window->isVisible()) {
        act(*window);
        return;
      }
    }
    WhenShown<Window>(act);
  });
}

// Threads of an instrument run in paced time beside the event loop, which runs in real time.
inline void InPacedTime(const std::function<void()>& body) {
  platform::TimeBaseOptions options;
  options.kind = platform::TimeBaseKind::Paced;
  options.pace = 20;
  platform::RunUnderTimeBase(options, [&] {
    body();
    return 0;
  });
}

// Counts beeps and keeps the texts of messages, so that no message box waits for a person.
class BeepCounter : public platform::Prompter {
 public:
  BeepCounter() { platform::SetPrompter(this); }
  ~BeepCounter() override { platform::SetPrompter(nullptr); }
  platform::MessageAnswer ShowMessage(const std::string& text, platform::MessageButtons,
                                      platform::MessageIcon) override {
    messages.push_back(text);
    return platform::MessageAnswer::Ok;
  }
  std::optional<int> Choose(const std::string&, const std::vector<std::string>&, int) override {
    return std::nullopt;
  }
  void Beep() override { ++beeps; }

  // Beeps since the last call.
  int TakeBeeps() { return std::exchange(beeps, 0); }

  int beeps = 0;
  std::vector<std::string> messages;
};

// Another locale for what is shown and typed, for a scope.
class LocaleScope {
 public:
  explicit LocaleScope(const QLocale& locale) { QLocale::setDefault(locale); }
  ~LocaleScope() { QLocale::setDefault(before_); }
  LocaleScope(const LocaleScope&) = delete;
  LocaleScope& operator=(const LocaleScope&) = delete;

 private:
  const QLocale before_ = QLocale();
};

}  // namespace rvx
