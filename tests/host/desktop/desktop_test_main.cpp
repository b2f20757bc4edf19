// Runs the tests with an application without a display and with a clock that is fast enough for
// whole runs.
#include <gmock/gmock.h>

#include <QApplication>

#include "platform/time_base.h"

int main(int argc, char** argv) {
  // So that the tests can be run without setting an environment.
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  testing::InitGoogleMock(&argc, argv);
  platform::TimeBaseOptions base;
  base.kind = platform::TimeBaseKind::Paced;
  base.pace = 40;
  return platform::RunUnderTimeBase(base, [] { return RUN_ALL_TESTS(); });
}
