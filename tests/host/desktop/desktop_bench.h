// The host's window on a simulated instrument, in a temporary folder. A process can have only one:
// the module gives out its instruments once, so a second window would have none.
#pragma once

#include <QApplication>
#include <QTest>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "host/core/host.h"
#include "host/desktop/abort_consent.h"
#include "host/desktop/demo_folder.h"
#include "host/desktop/desktop.h"
#include "host/desktop/instrument_session.h"
#include "host/desktop/main_window.h"
#include "host/desktop/samples_page.h"
#include "host/desktop/tray_page.h"
#include "host/desktop/tray_view.h"
#include "host/desktop/user_dialogs.h"
#include "host/desktop/welcome_dialog.h"
#include "tests/host/core/temp_folder.h"

namespace torvell {

// Limit of every wait, far longer than any state needs on a busy machine.
inline constexpr int kPatience = 120 * 1000;  // ms

// Makes the host and the window, and ends both with the scope. Used on the thread of the
// application.
class DesktopBench {
 public:
  explicit DesktopBench(bool demo = true) {
    HostOptions options;
    options.dataFolder = folder_.path() + "/data";
    options.simulate = true;
    options.userInterface = &gui_;
    host_ = Host::Open(options);
    window_ = std::make_unique<MainWindow>(*host_, gui_, consent_, WindowOptions{demo, 0});
  }
  ~DesktopBench() {
    RunAside(gui_, "closing", window_->TakeClosingWork());
    window_.reset();
    RunAside(gui_, "closing", [this] { host_.reset(); });
  }

  // Shows the window and waits until the instrument is there and its tray is read.
  void Open() {
    bool ready = false;
    QObject::connect(window_.get(), &MainWindow::Ready, window_.get(), [&ready] { ready = true; });
    window_->show();
    window_->Begin();
    Demand("a window with an instrument",
           [&] { return ready && !window_->sessions().empty() && session().traySize() > 0; });
    QObject::connect(&session(), &InstrumentSession::Failed, [](const QString& text) {
      std::fprintf(stderr, "refused: %s\n", qPrintable(text));
    });
    BePatient();
  }

  // Runs the event loop until `isSo` holds; false after kPatience.
  static bool Until(const std::function<bool()>& isSo) { return QTest::qWaitFor(isSo, kPatience); }
  // The same for a state that the test needs: ends the process if it is not reached.
  static void Demand(const char* what, const std::function<bool()>& isSo) {
    if (Until(isSo)) return;
    std::fprintf(stderr, "waited in vain for %s\n", what);
    std::exit(EXIT_FAILURE);
  }
  // Waits for a visible window of this class; null after kPatience.
  template <class Window>
  static Window* WaitForWindow() {
    Window* found = nullptr;
    Until([&] {
      for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* each = qobject_cast<Window*>(widget);
        if (each != nullptr && each->isVisible()) found = each;
      }
      return found != nullptr;
    });
    return found;
  }

  // Runs `act` on the next window of this class that shows, from inside the event loop that shows
  // it: a dialog that a job shows blocks its caller until it is closed.
  template <class Window>
  void WhenWindow(std::function<void(Window&)> act) {
    auto* look = new QTimer(window_.get());
    QObject::connect(look, &QTimer::timeout, window_.get(), [look, act = std::move(act)] {
      for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* found = qobject_cast<Window*>(widget);
        if (found == nullptr || !found->isVisible()) continue;
        look->stop();
        look->deleteLater();
        act(*found);
        return;
      }
    });
    look->start(10);
  }

  // Acts as this user of the demonstration.
  void ActAs(const char* name) {
    if (auto* welcome = window_->findChild<WelcomeDialog*>()) welcome->close();
    host_->users().SetActingUser(name);
    window_->RefreshActor();
    const QString shown = QString::fromLatin1(name);
    Demand("the user", [&] { return window_->user() == shown; });
  }
  void LoadTray(const std::string& csv) {
    const std::string path = folder_.path() + "/tray.csv";
    WriteWholeFile(path, csv);
    session().LoadFile(QString::fromStdString(path));
    Demand("the tray",
           [&] { return session().Situation().filled > 0 && !session().Situation().busy; });
  }
  void PrepareInstrument() {
    Demand("readings", [&] { return session().Situation().silence.has_value(); });
    session().Prepare();
    Demand("an instrument that is prepared", [&] {
      const InstrumentSituation situation = session().Situation();
      return !situation.preparing && NotReadyText(situation).isEmpty();
    });
  }

  GuiThread& gui() { return gui_; }
  Host& host() { return *host_; }
  MainWindow& window() { return *window_; }
  InstrumentSession& session() { return *window_->sessions().front(); }
  const std::string& folder() const { return folder_.path(); }

 private:
  // Sets a long response time-out: the clock is fast and the machine may be busy.
  void BePatient() {
    RunAside(gui_, "patience", [this] {
      host_->users().SetActingUser("sara");
      const auto refused =
          session().entry().scripting->SetSettings({{"response-timeout", "60000"}});
      if (refused) std::fprintf(stderr, "refused: %s\n", refused->Sentences().c_str());
      host_->users().SetActingUser("");
    });
  }

  TempFolder folder_;
  GuiThread gui_;
  AbortConsent consent_;
  std::unique_ptr<Host> host_;
  std::unique_ptr<MainWindow> window_;
};

}  // namespace torvell
