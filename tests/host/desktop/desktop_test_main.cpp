// Runs the tests under an application without a display and a clock that is fast enough for runs.
#include <gmock/gmock.h>

#include <QApplication>

#include "platform/time_base.h"

int main(int argc, char** argv) {
  // Nobody has to set anything before running the tests.
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  testing::InitGoogleMock(&argc, argv);
  platform::TimeBaseOptions base;
  base.kind = platform::TimeBaseKind::Paced;
  base.pace = 40;
  return platform::RunUnderTimeBase(base, [] { return RUN_ALL_TESTS(); });
}
