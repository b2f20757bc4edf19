#include "host/desktop/desktop.h"

#include <QApplication>
#include <QEventLoop>
#include <QIcon>
#include <QTimer>

#include "host/desktop/demo_folder.h"
#include "host/desktop/main_window.h"
#include "host/desktop/prompter.h"
#include "platform/interrupt.h"

namespace torvell {
namespace {

constexpr int kSignalPoll = 250;  // ms

std::string FolderOf(const DesktopOptions& options) {
  if (!options.dataFolder.empty()) return options.dataFolder;
  return options.simulate ? DefaultDemoFolder() : DefaultDataFolder();
}

bool IsDemo(const DesktopOptions& options) {
  return options.demo || (options.simulate && options.dataFolder.empty());
}

// The prompter is the process's; it goes before the window's thread does.
class PrompterInForce {
 public:
  explicit PrompterInForce(GuiThread& gui) : prompter_(gui) { platform::SetPrompter(&prompter_); }
  ~PrompterInForce() { platform::SetPrompter(nullptr); }
  WindowPrompter& prompter() { return prompter_; }

 private:
  WindowPrompter prompter_;
};

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
  PrompterInForce prompting(gui);
  HostOptions hostOptions;
  hostOptions.dataFolder = FolderOf(options);
  hostOptions.simulate = options.simulate;
  hostOptions.userName = options.userName;
  hostOptions.userInterface = &gui;
  std::unique_ptr<Host> host = Host::Open(hostOptions);

  auto window = std::make_unique<MainWindow>(*host, gui, prompting.prompter(),
                                             WindowOptions{IsDemo(options), options.lockMinutes});
  QEventLoop loop;
  QObject::connect(window.get(), &MainWindow::Closed, &loop, &QEventLoop::quit);
  // Ctrl+C in the terminal that started it is a wish to close, with the same question.
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
  loop.exec();

  RunAside(gui, "closing", window->TakeClosingWork());
  window.reset();
  RunAside(gui, "closing", [&host] { host.reset(); });
  return 0;
}

}  // namespace torvell
