#include "host/desktop/desktop.h"

#include <QApplication>
#include <QEventLoop>
#include <QIcon>
#include <QTimer>

#include "host/desktop/abort_consent.h"
#include "host/desktop/demo_folder.h"
#include "host/desktop/main_window.h"
#include "platform/interrupt.h"

namespace torvell {
namespace {

constexpr int kSignalPoll = 250;  // ms between looks for a signal

std::string FolderOf(const DesktopOptions& options) {
  if (!options.dataFolder.empty()) return options.dataFolder;
  return options.simulate ? DefaultDemoFolder() : DefaultDataFolder();
}

bool IsDemo(const DesktopOptions& options) {
  return options.demo || (options.simulate && options.dataFolder.empty());
}

}  // namespace

void RunAside(GuiThread& gui, const std::string& name, std::function<void()> work) {
  QEventLoop loop;
  const auto thread = platform::StartThread(name, [&gui, &loop, work = std::move(work)] {
    work();
    gui.Post([&loop] { loop.quit(); });
  });
  loop.exec();
  thread->Join();
}

int RunDesktop(const DesktopOptions& options) {
  int argumentCount = 1;
  char programName[] = "torvell";
  char* arguments[] = {programName, nullptr};
  QApplication application(argumentCount, arguments);
  QApplication::setApplicationName(QStringLiteral("torvell"));
  QApplication::setDesktopFileName(QStringLiteral("org.torvell.Torvell"));
  QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("torvell")));
  QApplication::setQuitOnLastWindowClosed(false);
  ApplyTheme(application, options.theme == "dark"    ? ThemeKind::Dark
                          : options.theme == "light" ? ThemeKind::Light
                                                     : DesktopTheme());
  GuiThread gui;
  AbortConsent consent;
  HostOptions hostOptions;
  hostOptions.dataFolder = FolderOf(options);
  hostOptions.simulate = options.simulate;
  hostOptions.userInterface = &gui;
  std::unique_ptr<Host> host = Host::Open(hostOptions);
  if (options.whoActs) host->users().SetActingUser(options.whoActs(host->users()));

  auto window = std::make_unique<MainWindow>(*host, gui, consent,
                                             WindowOptions{IsDemo(options), options.lockMinutes});
  // exit also ends the loops of open dialogs; quit would ask the windows again.
  QObject::connect(window.get(), &MainWindow::Closed, [] { QCoreApplication::exit(0); });
  // Ctrl+C in the terminal is a request to close, with the same question.
  platform::InterruptWatch interrupts;
  QTimer signals_;
  int seen = 0;
  QObject::connect(&signals_, &QTimer::timeout, window.get(), [&] {
    if (interrupts.count() > seen) window->close();
    seen = interrupts.count();
  });
  signals_.start(kSignalPoll);
  window->show();
  window->Begin();
  QApplication::exec();

  RunAside(gui, "closing", window->TakeClosingWork());
  window.reset();
  RunAside(gui, "closing", [&host] { host.reset(); });
  return 0;
}

}  // namespace torvell
