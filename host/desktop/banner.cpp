#include "host/desktop/banner.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

#include "host/desktop/theme.h"

namespace torvell {
namespace {

constexpr int kIconSide = 16;

}  // namespace

Banner::Banner(Tone tone, QWidget* parent)
    : QFrame(parent), icon_(new QLabel(this)), label_(new QLabel(this)) {
  layout_ = new QHBoxLayout(this);
  layout_->setContentsMargins(kGap, kSmallGap, kGap, kSmallGap);
  layout_->setSpacing(kGap);
  layout_->addWidget(icon_, 0, Qt::AlignVCenter);
  layout_->addWidget(label_, 1);
  label_->setTextFormat(Qt::PlainText);
  label_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  label_->setMinimumWidth(120);
  label_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  setAutoFillBackground(true);
  const bool loud = tone == Tone::Loud;
  QPalette colors = palette();
  colors.setColor(QPalette::Window, loud ? Colors().warning : Colors().base);
  colors.setColor(QPalette::WindowText, loud ? Colors().warningText : Colors().text);
  setPalette(colors);
  setFrameShape(QFrame::NoFrame);
}

void Banner::SetText(const QIcon& icon, const QString& text, const QString& more) {
  icon_->setPixmap(icon.pixmap(QSize(kIconSide, kIconSide), devicePixelRatioF()));
  text_ = text;
  label_->setToolTip(more.isEmpty() ? text : text + QLatin1Char('\n') + more);
  setAccessibleName(text);
  setAccessibleDescription(more);
  Fit();
}

void Banner::Fit() {
  // Two lines at most; the tooltip and the message list show the rest.
  const QFontMetrics metrics(label_->font());
  const int width = std::max(120, label_->width());
  const QString line = QString(text_).replace(QLatin1Char('\n'), QLatin1Char(' '));
  label_->setWordWrap(true);
  label_->setText(metrics.elidedText(line, Qt::ElideRight, width * 2 - width / 6));
}

void Banner::resizeEvent(QResizeEvent* event) {
  QFrame::resizeEvent(event);
  Fit();
}

QPushButton* Banner::AddButton(const QString& label) {
  auto* button = new QPushButton(label, this);
  layout_->addWidget(button, 0, Qt::AlignVCenter);
  return button;
}

}  // namespace torvell
