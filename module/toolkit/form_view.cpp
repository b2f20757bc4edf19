#include "module/toolkit/form_view.h"

#include <QKeyEvent>

#include "module/toolkit/gui_thread.h"
#include "module/toolkit/help.h"

namespace rvx {

CFormView::CFormView(QWidget* parent) : QWidget(parent) { AssertGuiThread("CFormView"); }

void CFormView::keyPressEvent(QKeyEvent* event) {
  const std::string topic = GetHelpTopic();
  if (topic.empty() || !event->matches(QKeySequence::HelpContents)) {
    QWidget::keyPressEvent(event);
    return;
  }
  ShowHelp(topic);
}

}  // namespace rvx
