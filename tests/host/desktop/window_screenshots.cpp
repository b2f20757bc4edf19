// Draws the host's window in its states into files: FOLDER light|dark LOCALE.
#include <QAbstractButton>
#include <QDir>
#include <QLocale>
#include <QMessageBox>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>
#include <cstdio>

#include "host/desktop/help_window.h"
#include "host/desktop/theme.h"
#include "platform/time_base.h"
#include "tests/host/desktop/desktop_bench.h"

namespace torvell {
namespace {

// Virtual seconds per second: a run passes in seconds, and the window still keeps up.
constexpr int kPace = 60;

constexpr char kTray[] =
    "position,action,sample id,temperature,rotor on time,known viscosity,injection time,cool-down "
    "time\n"
    "1,measure,10W-30 batch 4711,-20,30,,20,10\n"
    "1,measure,,-25,30,,20,10\n"
    "2,measure,5W-40 batch 4712,-25,30,,20,10\n"
    "3,verify,CRM-25,-25,30,5400,20,10\n"
    "5,measure,0W-20 a name that is longer than any column is wide,-30,30,,20,10\n"
    "6,measure,15W-40 batch 4714,-15,30,,20,10\n";

class Photographer {
 public:
  Photographer(QString folder, QString suffix)
      : folder_(std::move(folder)), suffix_(std::move(suffix)) {}

  void Shoot(QWidget& widget, const char* name) const {
    // The layout and what was posted must be done before the picture.
    if (!QTest::qWaitForWindowExposed(&widget, kPatience)) {
      std::fprintf(stderr, "%s: never shown\n", name);
    }
    QApplication::processEvents();
    const QString file = folder_ + QLatin1Char('/') + QString::fromLatin1(name) + QLatin1Char('-') +
                         suffix_ + QStringLiteral(".png");
    if (!widget.grab().save(file)) std::fprintf(stderr, "%s: not written\n", qPrintable(file));
  }

  // Draws the dialog that `open` runs, and closes it.
  template <class Dialog>
  void ShootModal(const char* name, const std::function<void()>& open) const {
    QTimer::singleShot(0, qApp, [this, name] {
      if (auto* dialog = DesktopBench::WaitForWindow<Dialog>()) {
        Shoot(*dialog, name);
        dialog->close();
      }
    });
    open();
  }

 private:
  const QString folder_;
  const QString suffix_;
};

void ShootDialogs(DesktopBench& bench, const Photographer& photographer) {
  GuiThread gui;
  Worker worker(gui, "pictures");
  LoginDialog login(bench.host().users(), worker, QString(), QString(), &bench.window());
  login.show();
  photographer.Shoot(login, "window-login");
  FirstUserDialog first(bench.host().users(), worker, &bench.window());
  first.show();
  photographer.Shoot(first, "window-first-user");
  bench.window().ShowHelp(QStringLiteral("RVX.chm::/RVX/Sample_action_options.htm"));
  auto* help = bench.window().findChild<HelpWindow*>();
  photographer.Shoot(*help, "window-help");
  help->close();
}

void ShootEditing(DesktopBench& bench, const Photographer& photographer) {
  MainWindow& window = bench.window();
  if (auto* welcome = DesktopBench::WaitForWindow<WelcomeDialog>()) {
    photographer.Shoot(*welcome, "window-welcome");
  }
  bench.ActAs("martin");
  DesktopBench::Until([&] { return bench.session().Situation().silence.has_value(); });
  photographer.Shoot(window, "window-empty");
  bench.LoadTray(kTray);
  TrayView& view = *window.trayPage().view();
  view.selectRow(3);
  view.edit(view.model()->index(2, 1));
  photographer.Shoot(window, "window-editing");
  if (qApp->focusWidget() != nullptr) QTest::keyClick(qApp->focusWidget(), Qt::Key_Escape);
}

void ShootRun(DesktopBench& bench, const Photographer& photographer) {
  MainWindow& window = bench.window();
  InstrumentSession& session = bench.session();
  bench.PrepareInstrument();
  session.Start();
  DesktopBench::Until([&] {
    const RunState* run = session.run();
    return run != nullptr && run->samples() >= 2 && run->Current() != nullptr;
  });
  photographer.Shoot(window, "window-running");
  photographer.ShootModal<QMessageBox>("window-abort", [&] { window.trayPage().AskAbort(); });
  session.PauseNow();
  DesktopBench::Until([&] { return session.Situation().paused; });
  photographer.Shoot(window, "window-paused");
  ErrorReport report;
  report.time = platform::LocalNow();
  report.kind = 1;
  report.source = "port COM1";
  report.message =
      "The line of COM1 broke: the device is gone. The tray that was running there is paused. Plug "
      "the device in again; the line then opens by itself, and the tray goes on when you resume "
      "it.";
  bench.host().errors().Report(report);
  bench.host().errors().Report(report);
  DesktopBench::Until([&] { return window.messages().at(0).count == 2; });
  auto* tabs = window.findChild<QTabWidget*>();
  tabs->setCurrentIndex(1);
  // The instrument's own message, with its advice below.
  tabs->widget(1)->findChild<QTableView*>()->selectRow(1);
  photographer.Shoot(window, "window-error");
  window.messages().AcknowledgeAll();
  tabs->setCurrentIndex(0);
  session.Resume();
  DesktopBench::Until([&] { return session.summary().has_value(); });
  photographer.Shoot(window, "window-finished");
}

int TakePictures(const QStringList& arguments) {
  const QString theme = arguments.value(2);
  const QString locale = arguments.value(3);
  QLocale::setDefault(QLocale(locale));
  ApplyTheme(*qApp, theme == QLatin1String("dark") ? ThemeKind::Dark : ThemeKind::Light);
  QDir().mkpath(arguments.value(1));
  const Photographer photographer(
      arguments.value(1),
      QStringLiteral("%1-%2-x%3").arg(theme, locale).arg(qApp->devicePixelRatio()));
  DesktopBench bench;
  bench.Open();
  ShootEditing(bench, photographer);
  ShootDialogs(bench, photographer);
  ShootRun(bench, photographer);
  return 0;
}

}  // namespace
}  // namespace torvell

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  platform::TimeBaseOptions base;
  base.kind = platform::TimeBaseKind::Paced;
  base.pace = torvell::kPace;
  return platform::RunUnderTimeBase(
      base, [] { return torvell::TakePictures(QApplication::arguments()); });
}
