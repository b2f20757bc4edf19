// The one window of the host.
#pragma once

#include <QMainWindow>
#include <QPointer>
#include <memory>
#include <vector>

#include "host/core/host.h"
#include "host/desktop/desktop_services.h"
#include "host/desktop/gui_thread.h"
#include "host/desktop/help_window.h"
#include "host/desktop/message_list.h"
#include "host/desktop/screens.h"
#include "host/desktop/worker.h"
#include "platform/help.h"

class QLabel;
class QMessageBox;
class QTabWidget;

namespace torvell {

class AbortConsent;
class Banner;
class HostEvents;
class IdleWatch;
class InstrumentPanel;
class InstrumentSession;
class MessagesPage;
class Plot;
class SamplesPage;
class TrayPage;
struct TimedReadings;

struct WindowOptions {
  bool demo = false;     // the folder is a demonstration or is made one
  int lockMinutes = 10;  // minutes without input until the window locks; 0: never
};

// Shows the instruments, the tray, the samples and the messages, and follows who acts. The window's
// thread only.
class MainWindow : public QMainWindow, private platform::HelpViewer {
  Q_OBJECT

 public:
  // `consent` is installed after instruments were looked for; it outlives the window.
  MainWindow(Host& host, GuiThread& gui, AbortConsent& consent, const WindowOptions& options);
  ~MainWindow() override;

  // Looks for instruments, and then shows the log-in or welcome dialog.
  void Begin();
  // Returns work that ends everything that may block, to run on another thread. The window must not
  // be used afterwards.
  std::function<void()> TakeClosingWork();

  TrayPage& trayPage() { return *tray_; }
  SamplesPage& samplesPage() { return *samples_; }
  MessageList& messages() { return messages_; }
  const Screens& screens() const { return *screens_; }
  const std::vector<std::unique_ptr<InstrumentSession>>& sessions() const { return sessions_; }
  InstrumentSession* selected() const { return selected_; }
  // The acting user, as last read by the window.
  const QString& user() const { return user_; }
  // Reads who acts and updates the offers when the answer is there; called when the user may have
  // changed.
  void RefreshActor();
  void Lock();
  void ShowHelp(const QString& topic);
  // Shows one line that disappears by itself.
  void ShowNotice(const QString& text);
  void ShowFailure(const QString& text);

 Q_SIGNALS:
  // Instruments were looked for and the demonstration folder is filled.
  void Ready();
  // The user has closed the window; nothing runs any more.
  void Closed();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  // What must be known of the archive and the instruments before the user is greeted.
  struct Start;

  // platform::HelpViewer, for the module's screens.
  void ShowTopic(const std::string& path) override { ShowHelp(QString::fromStdString(path)); }

  void BuildLayout();
  void BuildMenus();
  QWidget* BuildPages(QWidget* parent);
  QWidget* BuildSide();
  void ConnectMessages();
  void ConnectHost();
  // Called by jobs of the worker only.
  void FindInstruments(Start& start);
  void TakeInstruments();
  void Connect(InstrumentSession& session);
  void Select(InstrumentSession* session);
  void RefreshBanner();
  void AcknowledgeNewest();
  void RefreshMenus();
  void RefreshAwake();
  // Exports the results of the shown run to a file.
  void ExportRun();
  void AddToPlot(const std::vector<TimedReadings>& readings);
  void BeginCurve();
  void Greet(const Start& start);
  void OfferInterrupted();
  void ApplyActor(const QString& name, int32_t level, bool isUser);
  void LogIn();
  void LogOut();
  void ShowAbout();
  bool AnyRunning() const;
  // Returns whether the window may close; asks the user if that would break something off.
  bool MayClose();
  void BeginClosing();

  Host& host_;
  GuiThread& gui_;
  AbortConsent& consent_;
  const WindowOptions options_;
  int32_t level_ = 0;
  QString user_;
  bool closing_ = false;
  bool askingToClose_ = false;
  QPointer<QMessageBox> failures_;
  std::vector<InterruptedTray> interrupted_;  // kept until a user acts who may decide

  // For the archive and the users; instruments have their own.
  std::unique_ptr<Worker> worker_;
  std::unique_ptr<HostEvents> events_;
  std::vector<std::unique_ptr<InstrumentSession>> sessions_;
  InstrumentSession* selected_ = nullptr;
  MessageList messages_;
  std::unique_ptr<Screens> screens_;
  AwakeKeeper awake_;

  InstrumentPanel* panel_ = nullptr;
  TrayPage* tray_ = nullptr;
  SamplesPage* samples_ = nullptr;
  MessagesPage* messagesPage_ = nullptr;
  QTabWidget* tabs_ = nullptr;
  Plot* plot_ = nullptr;
  double curveStart_ = -1.0;  // s of the time base; below 0: begins with the next reading
  Banner* simulation_ = nullptr;
  Banner* message_ = nullptr;
  QLabel* actor_ = nullptr;
  QPointer<HelpWindow> help_;
  IdleWatch* idle_ = nullptr;
  QMenu *settingsMenu_ = nullptr, *serviceMenu_ = nullptr;
  QAction *logIn_ = nullptr, *logOut_ = nullptr, *lock_ = nullptr;
};

}  // namespace torvell
