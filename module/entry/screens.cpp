#include "module/entry/screens.h"

#include <QApplication>

#include "boundary/action_keys.h"
#include "module/execution/sample_action_editor.h"
#include "module/execution/screen_maker.h"
#include "module/printing/pdf_renderer.h"
#include "module/screens/calibration/cell_cals_vw.h"
#include "module/screens/common/make_screen.h"
#include "module/screens/samples/sample_editor.h"
#include "module/screens/status/custom_status_wnd.h"
#include "module/toolkit/pdf.h"
#include "module/toolkit/qt_prompter.h"
#include "platform/prompt.h"

namespace rvx {

void InstallScreens() {
  SetPdfRenderer(RenderPdf);
  if (dynamic_cast<QApplication*>(QCoreApplication::instance()) == nullptr) return;
  // What is set here is never destroyed, because threads may use it while the process ends.
  if (!platform::HasPrompter()) {
    auto* prompter = new QtPrompter;
    platform::SetPrompter(prompter);
    // After the end of the event loop a thread that asks would wait for ever.
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, [prompter] { prompter->Close(); });
  }
  static SampleEditor* const editor = new SampleEditor;
  SetSampleActionEditor(editor);
  SetStatusWindowMaker(MakeStatusWindow);
  SetScreenMaker(kCurrentCellCalsAction, MakeScreen<CCellCalsVw>);
}

}  // namespace rvx
