#include "module/toolkit/print_page.h"

#include <QFont>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <cmath>

#include "module/toolkit/gui_thread.h"
#include "module/toolkit/qt_prompter.h"

namespace rvx {
namespace {

constexpr double kUnitsPerInch = 100.0;

bool Draw(QPrinter& printer, const PageDrawer& draw) {
  printer.setFullPage(true);
  QPainter painter;
  if (!painter.begin(&printer)) return false;
  PrintPage page(printer, painter);
  draw(page);
  return painter.end() && printer.printerState() != QPrinter::Error;
}

int ToFlags(TextPlace place) {
  switch (place) {
    case TextPlace::Left:
      return Qt::AlignLeft;
    case TextPlace::Centre:
      return Qt::AlignHCenter;
    case TextPlace::Right:
      return Qt::AlignRight;
  }
  return 0;
}

}  // namespace

PrintPage::PrintPage(QPrinter& printer, QPainter& painter) : printer_(printer), painter_(painter) {}

double PrintPage::Scale() const { return printer_.resolution() / kUnitsPerInch; }

QRectF PrintPage::ToDevice(const QRect& rectangle) const {
  return {rectangle.x() * Scale(), rectangle.y() * Scale(), rectangle.width() * Scale(),
          rectangle.height() * Scale()};
}

QSize PrintPage::GetPhysicalSize() const {
  const QSizeF inches = printer_.pageLayout().fullRect(QPageLayout::Inch).size();
  return (inches * kUnitsPerInch).toSize();
}

QPoint PrintPage::GetPhysicalOffset() const {
  const QMarginsF inches = printer_.pageLayout().margins(QPageLayout::Inch);
  return {static_cast<int>(std::lround(inches.left() * kUnitsPerInch)),
          static_cast<int>(std::lround(inches.top() * kUnitsPerInch))};
}

void PrintPage::SetFont(int height, int weight) {
  QFont font(QStringLiteral("Arial"));
  font.setPixelSize(static_cast<int>(std::max(1L, std::lround(height * Scale()))));
  font.setWeight(static_cast<QFont::Weight>(weight));
  painter_.setFont(font);
}

int PrintPage::DrawText(const QRect& rectangle, TextPlace place, const std::string& text) {
  QRectF used;
  painter_.drawText(ToDevice(rectangle), ToFlags(place) | Qt::AlignTop | Qt::TextWordWrap,
                    QString::fromStdString(text), &used);
  return static_cast<int>(std::ceil(used.height() / Scale()));
}

void PrintPage::DrawLine(QPoint from, QPoint to, int width) {
  painter_.setPen(QPen(Qt::black, width * Scale()));
  painter_.drawLine(QPointF(from) * Scale(), QPointF(to) * Scale());
}

void PrintPage::DrawFrame(const QRect& rectangle, int width) {
  painter_.setPen(QPen(Qt::black, width * Scale()));
  painter_.drawRect(ToDevice(rectangle));
}

bool PrintPage::NewPage() { return printer_.newPage(); }

PrintResult PrintWithDialog(QWidget* parent, const std::string& title, const PageDrawer& draw) {
  AssertGuiThread("PrintWithDialog");
  QPrinter printer(QPrinter::HighResolution);
  printer.setDocName(QString::fromStdString(title));
  QPrintDialog dialog(&printer, parent);
  dialog.setWindowTitle(QString::fromStdString(title));
  if (dialog.exec() != QDialog::Accepted) return PrintResult::Cancelled;
  if (Draw(printer, draw)) return PrintResult::Printed;
  ShowFailure("\"" + title +
              "\" was not printed: the printer or the file can't be written to. Nothing else was "
              "changed. Check the printer, or choose another one, and print again.");
  return PrintResult::Failed;
}

bool PrintToPdf(const std::string& path, const std::string& title, const PageDrawer& draw) {
  AssertGuiThread("PrintToPdf");
  QPrinter printer(QPrinter::HighResolution);
  printer.setOutputFormat(QPrinter::PdfFormat);
  printer.setOutputFileName(QString::fromStdString(path));
  printer.setDocName(QString::fromStdString(title));
  return Draw(printer, draw);
}

}  // namespace rvx
