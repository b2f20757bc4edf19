// Draws the module's dialogs and its status window into files.
#include <QDir>
#include <QListWidget>
#include <QMessageBox>

#include "module/calibration/standards_map.h"
#include "module/resources/string_ids.h"
#include "module/resources/string_table.h"
#include "module/screens/calibration/cell_cals_vw.h"
#include "module/screens/common/make_screen.h"
#include "module/screens/samples/check_visc_list.h"
#include "module/screens/samples/sample_tests_editor.h"
#include "module/screens/status/custom_status_wnd.h"
#include "module/toolkit/controls.h"
#include "module/toolkit/editlist/edit_list.h"
#include "module/toolkit/pause_tray_query.h"
#include "module/toolkit/qt_prompter.h"
#include "tests/module/screens/samples/editor_bench.h"
#include "tests/screenshots/shoot.h"

namespace rvx {
namespace {

CICEditList& List(QDialog& dialog) { return *FindControl<CICEditList>(dialog, 1063); }

void ShowAndShoot(Camera& camera, QDialog& dialog, const QString& name) {
  dialog.show();
  dialog.activateWindow();
  camera.Shoot(dialog, name);
}

void ShootEditors(Camera& camera, EditorBench& test) {
  test.Calibrate({-5.0, -10.0, -20.0, -25.0, -30.0});
  test.Measure().SetTestPoint(0, "-20", "0", 60);
  test.Measure().SetTestPoint(1, "-25", "0", 90);
  {
    CMeasureViscEditor dialog(test.Measure());
    ShowAndShoot(camera, dialog, "measure-editor");
    List(dialog).table().SetCurrent(1, 1);
    List(dialog).EditCell(1, 1);
    camera.Shoot(dialog, "measure-editor-rotor-time");
    List(dialog).EditCell(2, 0);
    camera.Shoot(dialog, "measure-editor-temperature");
    List(dialog).EndEdit();
  }
  {
    test.SetLevel(10);
    CMeasureViscEditor dialog(test.Measure());
    ShowAndShoot(camera, dialog, "measure-editor-operator");
    test.SetLevel(100);
  }
  for (int i = 0; i < kMaxTests; ++i) test.Check().SetTestPoint(i, "-30", "12345.67", 60);
  CCheckViscEditor dialog(test.Check());
  ShowAndShoot(camera, dialog, "check-editor-full");
  List(dialog).EditCell(2, 1);
  camera.Shoot(dialog, "check-editor-viscosity");
}

void ShootStandards(Camera& camera, EditorBench& test) {
  {
    CCheckViscList dialog(test.Check());
    ShowAndShoot(camera, dialog, "pick-standard-none");
  }
  std::string text;
  for (const char* name : {"CL-20", "CL-25", "CL-30 with a long name that a laboratory gave it"}) {
    for (const char* temperature : {"-10", "-20", "-30"}) {
      text += MakeStandardRow(name, temperature, "5400", "lot 1");
    }
  }
  test.SetStandards(text);
  CCheckViscList dialog(test.Check());
  auto* list = FindControl<QListWidget>(dialog, 1066);
  dialog.show();
  list->setFocus();
  QTest::keyClick(list, Qt::Key_Down);
  QTest::keyClick(list, Qt::Key_Down);
  camera.Shoot(dialog, "pick-standard");
}

void ShootQuestions(Camera& camera) {
  QtPrompter prompter;
  WhenShown<CPauseTrayQuery>([&](CPauseTrayQuery& dialog) {
    camera.Shoot(dialog, "pause-tray");
    dialog.reject();
  });
  prompter.Choose("Pause Tray", {"Now", "After sample is complete"}, 0);
  const auto shoot = [&](const char* name) {
    WhenShown<QMessageBox>([&camera, name](QMessageBox& box) {
      camera.Shoot(box, name);
      box.reject();
    });
  };
  shoot("question-stop");
  prompter.ShowMessage(LoadResourceString(kTextStopRunningSamples), platform::MessageButtons::YesNo,
                       platform::MessageIcon::Question);
  shoot("prompt-injection");
  prompter.ShowMessage(LoadResourceString(kTextInjectionPrompt), platform::MessageButtons::Ok,
                       platform::MessageIcon::Information);
}

// A screen as its action opens it, closed again.
void ShootScreen(Camera& camera, EditorBench& test, ActionIndex index, const QString& name) {
  const std::unique_ptr<Action> action(test.bench.instrument->CreateActionByIndex(index));
  action->Start(nullptr, "0,0");
  CChildFrame* frame = nullptr;
  PumpUntil([&] {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* each = dynamic_cast<CChildFrame*>(widget);
      if (each != nullptr && each->isVisible()) frame = each;
    }
    return frame != nullptr;
  });
  frame->activateWindow();
  camera.Shoot(*frame, name);
  frame->close();
  PumpUntil([&] { return action->IsRunning() == 0; });
}

void ShootCellConstants(Camera& camera, EditorBench& test) {
  SetScreenMaker(kCurrentCellCalsAction, MakeScreen<CCellCalsVw>);
  ShootScreen(camera, test, kCurrentCellCalsAction, "cell-constants-none");
  {
    C_RVX& instrument = *test.bench.instrument;
    const ConfigurationGuard guard(instrument.configuration());
    ConfigurationFields& configuration = instrument.configuration().fields;
    configuration.modelCode = '4';
    configuration.optionByte = 0x02;
    for (size_t slot = 0; slot < kCalibrationTemperatures.size(); ++slot) {
      configuration.b0[slot] = 1234567.8 + static_cast<double>(slot);
      configuration.b1[slot] = -12345.6;
      configuration.b2[slot] = 123.4;
      configuration.calibrationDates[slot] = platform::Date(2026, 11, 30, 23, 59, 59);
    }
  }
  test.bench.instrument->SetInstrumentId("Cell 7");
  ShootScreen(camera, test, kCurrentCellCalsAction, "cell-constants");
}

void ShootStatusWindow(Camera& camera) {
  StatusReadings readings;
  readings.received = true;
  readings.time = platform::MonotonicTime();
  readings.temperature = -19.98;
  readings.targetTemperature = -20.0;
  readings.speed = 1.2345;
  readings.seconds = 42;
  readings.countsDown = true;
  readings.machineStatusText = "Ready";
  QWidget parent;
  parent.resize(10, 10);
  CCustomStatusWnd window(&parent);
  parent.resize(window.size());
  parent.show();
  camera.Shoot(parent, "status-window-none");
  window.Display(readings);
  camera.Shoot(parent, "status-window");
  readings.machineStatusText = "Not Ready, Init Steppers,";
  readings.targetTemperature = kTemperatureOff;
  readings.time -= 12s;
  window.Display(readings);
  camera.Shoot(parent, "status-window-old");
}

}  // namespace
}  // namespace rvx

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  const QStringList arguments = QApplication::arguments();
  if (arguments.size() != 4 || !QDir().mkpath(arguments[1])) {
    qFatal("use: dialog_screenshots FOLDER light|dark LOCALE");
  }
  rvx::Camera camera(arguments[1], arguments[2] == "dark", QLocale(arguments[3]));
  rvx::InPacedTime([&] {
    rvx::EditorBench test;
    rvx::ShootCellConstants(camera, test);
    rvx::ShootEditors(camera, test);
    rvx::ShootStandards(camera, test);
    rvx::ShootQuestions(camera);
    rvx::ShootStatusWindow(camera);
  });
  return 0;
}
