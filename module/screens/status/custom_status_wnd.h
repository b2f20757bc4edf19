// The live panel of an instrument, embedded in a window of the host.
#pragma once

#include <QTimer>
#include <memory>

#include "module/instrument/status_window.h"
#include "module/screens/status/status_display.h"
#include "module/toolkit/form_view.h"
#include "platform/lock.h"

namespace Ui {
class StatusWindow;
}

namespace rvx {

// Operation time, target and actual temperature, rotor speed and machine status. GUI thread.
class CCustomStatusWnd final : public CFormView {
 public:
  explicit CCustomStatusWnd(QWidget* parent);
  ~CCustomStatusWnd() override;

  // Shows the readings, and greys them when they are older than kStaleAfter.
  void Display(const StatusReadings& readings);

 private:
  void ApplyColours();
  void ShowReadings();

  std::unique_ptr<Ui::StatusWindow> form_;
  const StatusWindowTexts texts_;
  StatusReadings readings_;
  QTimer ageTimer_;
};

// Makes the panel and the link by which an instrument's threads send it readings.
std::unique_ptr<StatusWindow> MakeStatusWindow(WindowHandle* parent);

}  // namespace rvx
