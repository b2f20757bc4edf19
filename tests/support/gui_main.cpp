#include <gmock/gmock.h>

#include <QApplication>
#include <QLocale>

int main(int argc, char** argv) {
  // Also when it is started by hand: no test opens a window on a person's screen.
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  // The same texts wherever it runs; a test of another locale sets its own.
  QLocale::setDefault(QLocale::c());
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
