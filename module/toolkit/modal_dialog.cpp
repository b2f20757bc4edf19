#include "module/toolkit/modal_dialog.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeyEvent>
#include <QPointer>

#include "module/toolkit/controls.h"
#include "module/toolkit/help.h"
#include "platform/prompt.h"

namespace rvx {

CModalDialog::CModalDialog(QWidget* parent)
    : QDialog(parent != nullptr ? parent : QApplication::activeWindow(),
              Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint) {
  AssertGuiThread("CModalDialog");
}

void CModalDialog::BindButtons() {
  if (auto* ok = FindControl<QAbstractButton>(*this, kOkId)) {
    connect(ok, &QAbstractButton::clicked, this, [this] {
      const QPointer<CModalDialog> self = this;
      if (OnOk() && !self.isNull()) accept();
    });
  }
  if (auto* cancel = FindControl<QAbstractButton>(*this, kCancelId)) {
    connect(cancel, &QAbstractButton::clicked, this, [this] { reject(); });
  }
}

void CModalDialog::RefuseAt(QWidget& control) {
  platform::GetPrompter().Beep();
  control.setFocus();
}

void CModalDialog::keyPressEvent(QKeyEvent* event) {
  const std::string topic = GetHelpTopic();
  if (!topic.empty() && event->matches(QKeySequence::HelpContents)) {
    ShowHelp(topic);
    return;
  }
  QDialog::keyPressEvent(event);
}

}  // namespace rvx
