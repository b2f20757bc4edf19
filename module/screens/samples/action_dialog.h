// The base of dialogs that work on an instrument.
#pragma once

#include <QTimer>

#include "module/instrument/c_rvx.h"
#include "module/toolkit/modal_dialog.h"

namespace rvx {

// Cancels itself when the destruction of the instrument begins, since that waits for the dialog.
// GUI thread.
class CActionDialog : public CModalDialog {
 public:
  explicit CActionDialog(C_RVX& instrument, QWidget* parent = nullptr) : CModalDialog(parent) {
    constexpr int kLookInterval = 150;  // ms
    connect(&closingTimer_, &QTimer::timeout, this, [this, &instrument] {
      if (instrument.closingEvent().TryWait()) reject();
    });
    closingTimer_.start(kLookInterval);
  }

 private:
  QTimer closingTimer_;
};

}  // namespace rvx
